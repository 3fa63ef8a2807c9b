// A second, deliberately simple reading of a generated disc for the tests: parses the CUE
// sheet on its own, lays the sectors out one by one and checksums each track with a byte-wise
// CRC-32, sharing no code with the generator.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace plattmix::discgen::test {

struct RefTrack {
    int number = 0;
    bool audio = true;
    int session = 1;
    int64_t startLba = 0;
    int64_t length = 0;
    uint32_t crc = 0;
    std::string title;
    std::string performer;
    size_t file = 0;
    int64_t pregap = 0;
    int64_t index0 = -1;
    int64_t index1 = -1;
};

struct RefDisc {
    std::string title;
    std::string performer;
    std::vector<RefTrack> tracks;
    std::vector<int64_t> sessionLeadOuts;
};

inline uint32_t RefCrc(uint32_t crc, const std::string& bytes) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            t[i] = i;
            for (int k = 0; k < 8; ++k) {
                t[i] = (t[i] & 1u) ? (t[i] >> 1) ^ 0xEDB88320u : t[i] >> 1;
            }
        }
        return t;
    }();
    crc = ~crc;
    for (const char ch : bytes) {
        crc = table[(crc ^ static_cast<uint8_t>(ch)) & 0xFFu] ^ (crc >> 8);
    }
    return ~crc;
}

inline std::string RefFileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

inline int64_t RefSectors(std::istringstream& in) {
    std::string msf;
    in >> msf;
    return std::stoll(msf.substr(0, 2)) * 4500 + std::stoll(msf.substr(3, 2)) * 75 +
           std::stoll(msf.substr(6, 2));
}

inline std::string RefQuoted(std::istringstream& in) {
    std::string rest;
    std::getline(in, rest);
    const auto first = rest.find('"');
    return first == std::string::npos ? rest : rest.substr(first + 1, rest.rfind('"') - first - 1);
}

// Lays the sheet's files out on the disc (a new session 11400 sectors after the previous
// lead-out) and checksums every track from INDEX 01 to the next track or the lead-out.
inline RefDisc ReadBack(const std::filesystem::path& cue) {
    RefDisc disc;
    std::vector<std::string> files;  // their bytes
    std::ifstream in(cue);
    int session = 1;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        RefTrack* track = disc.tracks.empty() ? nullptr : &disc.tracks.back();
        if (word == "REM") {
            words >> word >> session;
        } else if (word == "FILE") {
            files.push_back(RefFileBytes(cue.parent_path() / RefQuoted(words)));
        } else if (word == "TRACK") {
            RefTrack& t = disc.tracks.emplace_back();
            words >> t.number >> word;
            t.audio = word == "AUDIO";
            t.session = session;
            t.file = files.size() - 1;
        } else if (word == "TITLE") {
            (track != nullptr ? track->title : disc.title) = RefQuoted(words);
        } else if (word == "PERFORMER") {
            (track != nullptr ? track->performer : disc.performer) = RefQuoted(words);
        } else if (word == "PREGAP") {
            track->pregap = RefSectors(words);
        } else if (word == "INDEX") {
            int index = 0;
            words >> index;
            (index == 0 ? track->index0 : track->index1) = RefSectors(words);
        }
    }
    std::vector<std::string> sectors;  // the disc, one entry per address
    for (size_t i = 0; i < disc.tracks.size(); ++i) {
        RefTrack& t = disc.tracks[i];
        const size_t bytes = t.audio ? 2352 : 2048;
        if (i > 0 && t.session != disc.tracks[i - 1].session) {
            disc.sessionLeadOuts.push_back(static_cast<int64_t>(sectors.size()));
            sectors.resize(sectors.size() + 11400);
        }
        sectors.resize(sectors.size() + static_cast<size_t>(t.pregap), std::string(bytes, '\0'));
        const std::string& file = files[t.file];
        const int64_t from = t.index0 >= 0 ? t.index0 : t.index1;
        int64_t to = static_cast<int64_t>(file.size() / bytes);
        if (i + 1 < disc.tracks.size() && disc.tracks[i + 1].file == t.file) {
            const RefTrack& next = disc.tracks[i + 1];
            to = next.index0 >= 0 ? next.index0 : next.index1;
        }
        t.startLba = static_cast<int64_t>(sectors.size()) + t.index1 - from;
        for (int64_t s = from; s < to; ++s) {
            sectors.push_back(file.substr(static_cast<size_t>(s) * bytes, bytes));
        }
    }
    disc.sessionLeadOuts.push_back(static_cast<int64_t>(sectors.size()));
    for (size_t i = 0; i < disc.tracks.size(); ++i) {
        RefTrack& t = disc.tracks[i];
        const bool last = i + 1 == disc.tracks.size() || disc.tracks[i + 1].session != t.session;
        const int64_t end = last ? disc.sessionLeadOuts[static_cast<size_t>(t.session - 1)]
                                 : disc.tracks[i + 1].startLba;
        t.length = end - t.startLba;
        for (int64_t s = t.startLba; s < end; ++s) {
            t.crc = RefCrc(t.crc, sectors[static_cast<size_t>(s)]);
        }
    }
    return disc;
}

}  // namespace plattmix::discgen::test
