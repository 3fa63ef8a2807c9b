#include "RipEncoder.h"

#include "ConvertAudioStream.h"
#include "OutputFormats.h"
#include "RipTrack.h"

namespace plattmix::encode {

using audiocd::CdText;
using audiocd::EncodeFn;
using audiocd::JobHooks;
using audiocd::RipJobParams;

namespace {

std::string Lookup(const std::map<int, std::string>& texts, int track) {
    const auto it = texts.find(track);
    return it == texts.end() ? std::string() : it->second;
}

AudioTags TagsFor(const RipJobParams& params, const std::optional<CdText>& cdText, size_t row) {
    AudioTags tags;
    tags.track = params.rows[row].trackNumber;
    tags.trackCount = static_cast<int>(params.rows.size());
    if (cdText) {
        tags.album = cdText->albumTitle;
        tags.albumArtist = cdText->albumPerformer;
        tags.title = Lookup(cdText->titles, tags.track);
        tags.artist = Lookup(cdText->performers, tags.track);
        if (tags.artist.empty())
            tags.artist = cdText->albumPerformer;
    }
    return tags;
}

}  // namespace

EncodeFn MakeRipEncoder(const RipJobParams& params, const std::optional<CdText>& cdText,
                        const JobHooks& hooks) {
    return [params, cdText, hooks](const std::vector<uint8_t>& wav, const std::string& basePath,
                                   const std::string& fileName, size_t row) {
        ConvertHooks convert;
        convert.yield = hooks.yield;
        convert.aborted = hooks.aborted;
        convert.progress = hooks.progress;
        const bool done = ConvertAudioStream(wav, "audio/wav", basePath, params.formatIndex,
                                             TagsFor(params, cdText, row), convert);
        // A conversion stopped by the user is an abort, not a failure.
        if (!done)
            return std::string(hooks.Aborted() ? audiocd::kTextAborted : audiocd::kTextTrackFailed);
        return fileName + std::string(FormatAt(params.formatIndex).extension) + audiocd::kTextDone;
    };
}

}  // namespace plattmix::encode
