#include "MusicBrainz.h"

#include <nlohmann/json.hpp>
#include <thread>

#include "ProgramVersion.h"

namespace plattmix::audiocd {
namespace {

using nlohmann::json;

constexpr auto kRequestSpacing = std::chrono::seconds(1);
constexpr auto kRequestTimeout = std::chrono::seconds(5);
constexpr size_t kMaxReplyBytes = 4 * 1024 * 1024;

std::string Text(const json& object, const char* key) {
    const auto it = object.find(key);
    return it != object.end() && it->is_string() ? it->get<std::string>() : std::string();
}

int Number(const json& object, const char* key) {
    const auto it = object.find(key);
    return it != object.end() && it->is_number_integer() ? it->get<int>() : 0;
}

// The credited names with their join phrases: "A feat. B".
std::string ArtistCredit(const json& object) {
    std::string names;
    const auto credit = object.find("artist-credit");
    if (credit == object.end() || !credit->is_array())
        return names;
    for (const json& part : *credit)
        names += Text(part, "name") + Text(part, "joinphrase");
    return names;
}

bool HoldsDisc(const json& medium, const std::string& discId) {
    const auto discs = medium.find("discs");
    if (discs == medium.end() || !discs->is_array())
        return false;
    for (const json& disc : *discs) {
        if (Text(disc, "id") == discId)
            return true;
    }
    return false;
}

DiscTitles ReleaseTitles(const json& release, const json& medium, size_t mediaCount) {
    DiscTitles titles;
    titles.album = Text(release, "title");
    titles.albumArtist = ArtistCredit(release);
    titles.date = Text(release, "date");
    titles.releaseId = Text(release, "id");
    titles.discNumber = Number(medium, "position");
    titles.discCount = static_cast<int>(mediaCount);
    const auto tracks = medium.find("tracks");
    if (tracks == medium.end() || !tracks->is_array())
        return titles;
    for (const json& track : *tracks) {
        TrackTitles& entry = titles.tracks[Number(track, "position")];
        entry.title = Text(track, "title");
        entry.artist = ArtistCredit(track);
        if (const auto recording = track.find("recording"); recording != track.end()) {
            entry.recordingId = Text(*recording, "id");
            if (entry.title.empty())
                entry.title = Text(*recording, "title");
            if (entry.artist.empty())
                entry.artist = ArtistCredit(*recording);
        }
    }
    return titles;
}

}  // namespace

std::string MusicBrainzUserAgent() {
    return ProgramUserAgent() + " ( Trovalis Plattmix CD ripper )";
}

std::optional<std::vector<DiscTitles>> ParseDiscIdReply(std::string_view text,
                                                        const std::string& discId) {
    const json reply = json::parse(text, nullptr, false);
    if (reply.is_discarded() || !reply.is_object())
        return std::nullopt;
    std::vector<DiscTitles> found;
    const auto releases = reply.find("releases");
    if (releases == reply.end())
        return found;
    if (!releases->is_array())
        return std::nullopt;
    for (const json& release : *releases) {
        const auto media = release.find("media");
        if (!release.is_object() || media == release.end() || !media->is_array())
            continue;
        for (const json& medium : *media) {
            if (medium.is_object() && HoldsDisc(medium, discId)) {
                found.push_back(ReleaseTitles(release, medium, media->size()));
                break;  // a release that holds the disc twice counts once
            }
        }
    }
    return found;
}

MusicBrainzClient::MusicBrainzClient(HttpGetFn get, std::string server)
    : get_(std::move(get)), server_(std::move(server)) {}

MusicBrainzAnswer MusicBrainzClient::LookUp(const std::string& discId) {
    if (lastRequest_)
        std::this_thread::sleep_until(*lastRequest_ + kRequestSpacing);
    lastRequest_ = std::chrono::steady_clock::now();

    HttpRequest request(server_ + "discid/" + discId + "?inc=artist-credits+recordings&fmt=json",
                        MusicBrainzUserAgent());
    request.timeout = kRequestTimeout;
    request.maxBytes = kMaxReplyBytes;
    const HttpReply reply = get_(request);

    MusicBrainzAnswer answer;
    const std::string failed = "Titelsuche bei MusicBrainz fehlgeschlagen: ";
    if (!reply.error.empty()) {
        answer.failure = failed + reply.error;
    } else if (reply.status == 404) {
        answer.failure = kTextDiscUnknown;
    } else if (reply.status != 200) {
        answer.failure = failed + "Antwort " + std::to_string(reply.status) + " des Servers.";
    } else if (auto releases = ParseDiscIdReply(reply.body, discId)) {
        answer.releases = std::move(*releases);
        if (answer.releases.empty())
            answer.failure = kTextDiscUnknown;
    } else {
        answer.failure = failed + "Die Antwort des Servers ist beschädigt.";
    }
    return answer;
}

}  // namespace plattmix::audiocd
