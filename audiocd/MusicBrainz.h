// The disc's titles from MusicBrainz: one GET of the disc ID's releases, the reply read as JSON.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DiscTitles.h"
#include "HttpGet.h"

namespace plattmix::audiocd {

inline constexpr const char* kMusicBrainzServer = "https://musicbrainz.org/ws/2/";
inline constexpr const char* kTextDiscUnknown = "MusicBrainz kennt diese Disk nicht.";

// "Plattmix/<version> ( … )", as the service asks every client to name itself.
std::string MusicBrainzUserAgent();

// The releases of a disc-ID reply that hold the disc, in the reply's order, each with the
// medium that holds it (its tracks, its position among the release's media). Nothing when the
// reply is not the JSON the service sends.
std::optional<std::vector<DiscTitles>> ParseDiscIdReply(std::string_view json,
                                                        const std::string& discId);

struct MusicBrainzAnswer {
    std::vector<DiscTitles> releases;  // empty when the service does not know the disc
    std::string failure;               // German; empty when the service answered
};

// Asks one server, never more often than once a second, each request given a few seconds.
class MusicBrainzClient {
  public:
    // server ends in "/", e.g. kMusicBrainzServer.
    MusicBrainzClient(HttpGetFn get, std::string server);

    MusicBrainzAnswer LookUp(const std::string& discId);

  private:
    HttpGetFn get_;
    std::string server_;
    std::optional<std::chrono::steady_clock::time_point> lastRequest_;
};

}  // namespace plattmix::audiocd
