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

#include "ScsiStatus.h"
#include "TrackBounds.h"
#include "WavHeader.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

constexpr size_t kSectorBytes = static_cast<size_t>(modMSF::kAudioFrameBytes);
constexpr size_t kBlockBytes = static_cast<size_t>(kRipBlockSectors) * kSectorBytes;

// The table of contents with LBA addresses and its sessions, and the bounds of the track in
// them. The user is told when the table cannot be read; bounds that cannot be worked out end
// the job quietly, as nothing has been written yet.
std::optional<TrackBounds> ReadBounds(scsi::ISCSI& transport, std::string& handle, int16_t track,
                                      const JobHooks& hooks) {
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    if (modMMC::ReadTOC(transport, handle, false, reply) != scsi::kStatusGood) {
        hooks.Warn(kTextTocFailed);
        return std::nullopt;
    }
    const auto toc = modMMC::ParseTOC(reply);
    if (!toc)
        return std::nullopt;
    auto sessions = SessionTocFromToc(*toc, false);
    if (sessions)
        ReadSessions(transport, handle, *sessions);
    return ComputeTrackBounds(*toc, track, sessions ? &*sessions : nullptr);
}

int ProgressPercent(int32_t current, const TrackBounds& bounds) {
    const double done = static_cast<double>(current) - bounds.firstLba;
    const double total = static_cast<double>(bounds.lastLba) - bounds.firstLba;
    return static_cast<int>(std::lround(done / total * 100.0));
}

// How the block loop ended.
enum class ReadOutcome { Complete, BlockFailed, RemainderFailed, SinkFailed };

struct ReadEnd {
    ReadOutcome outcome = ReadOutcome::Complete;
    int32_t from = 0;  // the failed request's first sector
    int32_t to = 0;    // and the sector after its last
};

// READ CD from the first sector up to the one before lastLba: 27 sectors at a time with the
// progress and a yield after each, then whatever is left in one request.
ReadEnd ReadTrackBlocks(scsi::ISCSI& transport, std::string& handle, const TrackBounds& bounds,
                        const JobHooks& hooks, const BlockSink& sink) {
    std::vector<uint8_t> buffer(kBlockBytes);
    int32_t current = bounds.firstLba;
    while (static_cast<int64_t>(current) + kRipBlockSectors <= bounds.lastLba) {
        if (modMMC::ReadCD(transport, handle, static_cast<uint32_t>(current), kRipBlockSectors,
                           buffer, kReadCdAllFields) != scsi::kStatusGood)
            return {ReadOutcome::BlockFailed, current, current + kRipBlockSectors};
        if (!sink(buffer))
            return {ReadOutcome::SinkFailed, current, current + kRipBlockSectors};
        current += kRipBlockSectors;
        hooks.Progress(ProgressPercent(current, bounds));
        hooks.Yield();
    }
    const int32_t rest = bounds.lastLba - current;
    if (rest <= 0)
        return {};
    buffer.resize(static_cast<size_t>(rest) * kSectorBytes);
    if (modMMC::ReadCD(transport, handle, static_cast<uint32_t>(current),
                       static_cast<uint32_t>(rest), buffer, kReadCdAllFields) != scsi::kStatusGood)
        return {ReadOutcome::RemainderFailed, current, current + rest};
    if (!sink(buffer))
        return {ReadOutcome::SinkFailed, current, current + rest};
    return {};
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

// What every extraction does first: progress 0 and a yield, the track's bounds from the table
// of contents (the user is told when it cannot be read), and the WAV header for its size.
struct TrackStart {
    TrackBounds bounds;
    WavHeaderBytes header;
};
std::optional<TrackStart> StartTrack(scsi::ISCSI& transport, std::string& handle, int16_t track,
                                     const JobHooks& hooks) {
    hooks.Progress(0);
    hooks.Yield();
    const auto bounds = ReadBounds(transport, handle, track, hooks);
    if (!bounds)
        return std::nullopt;
    const auto header = WavHeader(bounds->audioBytes);
    if (!header)
        return std::nullopt;
    return TrackStart{*bounds, *header};
}

}  // namespace

std::string ReadErrorText(int32_t from, int32_t to) {
    return "Lesefehler in Range " + std::to_string(from) + " - " + std::to_string(to) + ".";
}

// A file that cannot be opened or written ends the track like a read error in a full block:
// the user is told which file failed and why, the row's "Ergebnis" stays as it is.
std::optional<std::string> RipTrackWav(scsi::ISCSI& transport, std::string handle, int16_t track,
                                       const std::string& filePath, const std::string& fileName,
                                       const JobHooks& hooks) {
    const auto start = StartTrack(transport, handle, track, hooks);
    if (!start)
        return std::nullopt;

    WavFile file(filePath);
    if (!file.IsOpen() || !file.Append(start->header)) {
        hooks.Warn(file.Error());
        return std::nullopt;
    }
    const ReadEnd end =
        ReadTrackBlocks(transport, handle, start->bounds, hooks,
                        [&file](std::span<const uint8_t> block) { return file.Append(block); });
    const bool closed = file.Close();
    if (end.outcome == ReadOutcome::BlockFailed) {
        hooks.Warn(ReadErrorText(end.from, end.to));
        return std::nullopt;
    }
    if (end.outcome == ReadOutcome::SinkFailed || !closed) {
        hooks.Warn(file.Error());
        return std::nullopt;
    }
    if (end.outcome == ReadOutcome::RemainderFailed)
        return std::string(kTextTrackFailed);
    return fileName + ".wav" + kTextDone;
}

StreamEnd RipTrackToSink(scsi::ISCSI& transport, std::string handle, int16_t track,
                         const JobHooks& hooks, const BlockSink& sink) {
    const auto start = StartTrack(transport, handle, track, hooks);
    if (!start)
        return StreamEnd::NotStarted;
    if (!sink(start->header))
        return StreamEnd::SinkStopped;
    const ReadEnd end = ReadTrackBlocks(transport, handle, start->bounds, hooks, sink);
    if (end.outcome == ReadOutcome::SinkFailed)
        return StreamEnd::SinkStopped;
    if (end.outcome != ReadOutcome::Complete) {
        hooks.Warn(ReadErrorText(end.from, end.to));
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
