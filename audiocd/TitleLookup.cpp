#include "TitleLookup.h"

#include "DiscId.h"

namespace plattmix::audiocd {
namespace {

std::string AlbumLine(const DiscTitles& titles) {
    std::string line = titles.album;
    if (!titles.albumArtist.empty())
        line += " – " + titles.albumArtist;
    return line;
}

std::string ReleaseLine(size_t number, const DiscTitles& titles) {
    std::string details = titles.date;
    details += (details.empty() ? "" : ", ") + titles.releaseId;
    return std::to_string(number) + ": " + AlbumLine(titles) + " (" + details + ")";
}

}  // namespace

TitleLookup LookUpDiscTitles(MusicBrainzClient* client, const TrackList& list,
                             const std::optional<CdText>& cdText, size_t release) {
    TitleLookup lookup;
    lookup.titles = TitlesFromCdText(cdText);
    const auto toc = DiscIdTocOf(list);
    if (client == nullptr || !toc)
        return lookup;
    MusicBrainzAnswer answer = client->LookUp(MusicBrainzDiscId(*toc));
    lookup.releaseCount = answer.releases.size();
    if (answer.releases.empty()) {
        lookup.status = answer.failure;
        if (cdText)
            lookup.status += " Titel aus dem CD-Text.";
        return lookup;
    }
    const size_t chosen = release >= 1 && release <= answer.releases.size() ? release - 1 : 0;
    for (size_t i = 0; i < answer.releases.size(); ++i) {
        if (i != chosen)
            lookup.otherReleases.push_back(ReleaseLine(i + 1, answer.releases[i]));
    }
    lookup.titles = std::move(answer.releases[chosen]);
    lookup.status = "MusicBrainz: " + AlbumLine(*lookup.titles);
    return lookup;
}

}  // namespace plattmix::audiocd
