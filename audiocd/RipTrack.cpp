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
#include "WavFile.h"

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

    WavFile file(filePath, false);
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
