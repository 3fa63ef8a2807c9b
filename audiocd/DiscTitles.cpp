#include "DiscTitles.h"

namespace plattmix::audiocd {

std::string DiscTitles::TitleOf(int track) const {
    const auto it = tracks.find(track);
    return it == tracks.end() ? std::string() : it->second.title;
}

std::string DiscTitles::ArtistOf(int track) const {
    const auto it = tracks.find(track);
    return it == tracks.end() || it->second.artist.empty() ? albumArtist : it->second.artist;
}

DiscTitles TitlesFromCdText(const CdText& cdText) {
    DiscTitles titles;
    titles.album = cdText.albumTitle;
    titles.albumArtist = cdText.albumPerformer;
    for (const auto& [track, title] : cdText.titles)
        titles.tracks[track].title = title;
    for (const auto& [track, performer] : cdText.performers)
        titles.tracks[track].artist = performer;
    return titles;
}

std::optional<DiscTitles> TitlesFromCdText(const std::optional<CdText>& cdText) {
    if (!cdText)
        return std::nullopt;
    return TitlesFromCdText(*cdText);
}

}  // namespace plattmix::audiocd
