// Disc-ID replies as the MusicBrainz service sends them, for the title look-up's tests.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace plattmix::test {

struct FakeRelease {
    std::string id;
    std::string title;
    std::string artist;
    std::string date;
    std::vector<std::string> tracks;  // titles of the medium that holds the disc
    int mediaCount = 1;               // the disc is on the last medium
};

// The reply for discId: every release's last medium holds it, each track with a recording ID
// "rec-<release id>-<n>"; a release's second track is credited to "Gast" joined to the artist.
inline std::string MusicBrainzReply(const std::string& discId,
                                    const std::vector<FakeRelease>& releases) {
    using nlohmann::json;
    json list = json::array();
    for (const auto& release : releases) {
        json media = json::array();
        for (int position = 1; position <= release.mediaCount; ++position) {
            json medium = {{"position", position}, {"format", "CD"}, {"discs", json::array()}};
            json tracks = json::array();
            if (position == release.mediaCount) {
                medium["discs"].push_back({{"id", discId}, {"sectors", 95462}});
                for (size_t i = 0; i < release.tracks.size(); ++i) {
                    const int n = static_cast<int>(i + 1);
                    json credit = json::array({{{"name", release.artist}, {"joinphrase", ""}}});
                    if (n == 2) {
                        credit[0]["joinphrase"] = " feat. ";
                        credit.push_back({{"name", "Gast"}, {"joinphrase", ""}});
                    }
                    tracks.push_back({{"position", n},
                                      {"number", std::to_string(n)},
                                      {"title", release.tracks[i]},
                                      {"artist-credit", credit},
                                      {"recording",
                                       {{"id", "rec-" + release.id + "-" + std::to_string(n)},
                                        {"title", release.tracks[i]}}}});
                }
            } else {
                medium["discs"].push_back({{"id", "another-disc"}});
            }
            medium["tracks"] = tracks;
            medium["track-count"] = tracks.size();
            media.push_back(medium);
        }
        list.push_back({{"id", release.id},
                        {"title", release.title},
                        {"date", release.date},
                        {"artist-credit", json::array({{{"name", release.artist}}})},
                        {"media", media}});
    }
    return json{{"id", discId}, {"releases", list}}.dump();
}

// The path a look-up of discId asks for.
inline std::string MusicBrainzPath(const std::string& discId) {
    return "/discid/" + discId + "?inc=artist-credits+recordings&fmt=json";
}

}  // namespace plattmix::test
