#include "RipTrack.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <functional>
#include <span>
#include <system_error>

#include "TrackReader.h"

namespace plattmix::audiocd {
namespace {

// How the block loop ended.
enum class ReadOutcome { Complete, BlockFailed, RemainderFailed, SinkFailed };

// Every block of the track into sink, with the progress and a yield after each full one.
ReadOutcome ReadTrackBlocks(TrackReader& reader, const JobHooks& hooks, const BlockSink& sink) {
    for (;;) {
        switch (reader.Next()) {
            case TrackReader::Step::Done:
                return ReadOutcome::Complete;
            case TrackReader::Step::BlockFailed:
                return ReadOutcome::BlockFailed;
            case TrackReader::Step::RemainderFailed:
                return ReadOutcome::RemainderFailed;
            case TrackReader::Step::Remainder:
                return sink(reader.Bytes()) ? ReadOutcome::Complete : ReadOutcome::SinkFailed;
            case TrackReader::Step::Block:
                if (!sink(reader.Bytes()))
                    return ReadOutcome::SinkFailed;
                hooks.Progress(reader.Percent());
                hooks.Yield();
                break;
        }
    }
}

std::string SystemError(int error) {
    return std::generic_category().message(error);
}

// The target file, opened for reading and writing without cutting off what lies beyond the
// bytes written now. Any failure is kept as a German text naming the file and the reason.
class WavFile {
  public:
    explicit WavFile(std::string path) : path_(std::move(path)) {
        fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (fd_ < 0)
            error_ = "Die Datei " + path_ + " kann nicht geöffnet werden: " + SystemError(errno);
    }
    WavFile(const WavFile&) = delete;
    WavFile& operator=(const WavFile&) = delete;
    ~WavFile() { Close(); }

    bool IsOpen() const { return fd_ >= 0; }
    const std::string& Error() const { return error_; }

    // Appends at the current position (the start, right after opening).
    bool Append(std::span<const uint8_t> bytes) {
        while (!bytes.empty()) {
            const ssize_t written = ::write(fd_, bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0) {
                Failed(written < 0 ? errno : ENOSPC);
                return false;
            }
            bytes = bytes.subspan(static_cast<size_t>(written));
        }
        return true;
    }

    bool Close() {
        if (fd_ < 0)
            return error_.empty();
        const int result = ::close(fd_);
        fd_ = -1;
        if (result != 0 && error_.empty())
            Failed(errno);
        return error_.empty();
    }

  private:
    void Failed(int error) {
        error_ = "Fehler beim Schreiben der Datei " + path_ + ": " + SystemError(error);
    }

    std::string path_;
    int fd_ = -1;
    std::string error_;
};

// What every extraction does first: progress 0 and a yield, then the track's reader.
std::optional<TrackReader> StartTrack(scsi::ISCSI& transport, std::string handle, int16_t track,
                                      const JobHooks& hooks) {
    hooks.Progress(0);
    hooks.Yield();
    return TrackReader::Open(transport, std::move(handle), track, hooks);
}

}  // namespace

// A file that cannot be opened or written ends the track like a read error in a full block:
// the user is told which file failed and why, the row's "Ergebnis" stays as it is.
std::optional<std::string> RipTrackWav(scsi::ISCSI& transport, std::string handle, int16_t track,
                                       const std::string& filePath, const std::string& fileName,
                                       const JobHooks& hooks) {
    auto reader = StartTrack(transport, std::move(handle), track, hooks);
    if (!reader)
        return std::nullopt;

    WavFile file(filePath);
    if (!file.IsOpen() || !file.Append(reader->Header())) {
        hooks.Warn(file.Error());
        return std::nullopt;
    }
    const ReadOutcome end = ReadTrackBlocks(
        *reader, hooks, [&file](std::span<const uint8_t> block) { return file.Append(block); });
    const bool closed = file.Close();
    if (end == ReadOutcome::BlockFailed) {
        hooks.Warn(reader->FailureText());
        return std::nullopt;
    }
    if (end == ReadOutcome::SinkFailed || !closed) {
        hooks.Warn(file.Error());
        return std::nullopt;
    }
    if (end == ReadOutcome::RemainderFailed)
        return std::string(kTextTrackFailed);
    return fileName + ".wav" + kTextDone;
}

StreamEnd RipTrackToSink(scsi::ISCSI& transport, std::string handle, int16_t track,
                         const JobHooks& hooks, const BlockSink& sink) {
    auto reader = StartTrack(transport, std::move(handle), track, hooks);
    if (!reader)
        return StreamEnd::NotStarted;
    if (!sink(reader->Header()))
        return StreamEnd::SinkStopped;
    const ReadOutcome end = ReadTrackBlocks(*reader, hooks, sink);
    if (end == ReadOutcome::SinkFailed)
        return StreamEnd::SinkStopped;
    if (end != ReadOutcome::Complete) {
        hooks.Warn(reader->FailureText());
        return StreamEnd::ReadFailed;
    }
    return StreamEnd::Complete;
}

std::optional<std::vector<uint8_t>> RipTrackToMemory(scsi::ISCSI& transport, std::string handle,
                                                     int16_t track, const JobHooks& hooks) {
    std::vector<uint8_t> image;
    const auto append = [&image](std::span<const uint8_t> bytes) {
        image.insert(image.end(), bytes.begin(), bytes.end());
        return true;
    };
    if (RipTrackToSink(transport, std::move(handle), track, hooks, append) != StreamEnd::Complete)
        return std::nullopt;
    return image;
}

}  // namespace plattmix::audiocd
