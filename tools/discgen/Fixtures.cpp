#include "Fixtures.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

namespace plattmix::discgen {
namespace {

constexpr int32_t kSecond = kSectorsPerSecond;
constexpr int32_t kBlock = 27;  // sectors per read in the ripper's usual request size
constexpr int kMinutesPerLargeTrack = 4;

const std::array<std::pair<Fixture, std::string_view>, 8> kNames = {{
    {Fixture::AudioThreeTracks, "AudioThreeTracks"},
    {Fixture::ExactBlockMultiple, "ExactBlockMultiple"},
    {Fixture::Pregap, "Pregap"},
    {Fixture::MultiFile, "MultiFile"},
    {Fixture::DataTrackFirst, "DataTrackFirst"},
    {Fixture::Enhanced, "Enhanced"},
    {Fixture::TinyTracks, "TinyTracks"},
    {Fixture::Large, "Large"},
}};

std::string TwoDigits(size_t n) {
    char text[24];
    std::snprintf(text, sizeof text, "%02zu", n);
    return text;
}

TrackSpec Audio(int32_t sectors, std::string title, int file = 0) {
    TrackSpec t;
    t.sectors = sectors;
    t.file = file;
    t.title = std::move(title);
    t.performer = "Plattmix Testchor";
    return t;
}

// A disc with one audio file holding tracks of the given lengths.
DiscSpec OneFileAudio(std::string_view name, std::string title,
                      std::initializer_list<int32_t> lengths) {
    DiscSpec d;
    d.name = std::string(name);
    d.title = std::move(title);
    d.performer = "Plattmix Testchor";
    d.files = {d.name + ".bin"};
    for (const int32_t sectors : lengths) {
        d.tracks.push_back(Audio(sectors, "Spur " + TwoDigits(d.tracks.size() + 1)));
    }
    return d;
}

}  // namespace

std::string_view FixtureName(Fixture fixture) {
    for (const auto& [f, name] : kNames) {
        if (f == fixture) {
            return name;
        }
    }
    return "";
}

std::optional<Fixture> FixtureByName(std::string_view name) {
    for (const auto& [f, n] : kNames) {
        if (n == name) {
            return f;
        }
    }
    return std::nullopt;
}

const std::vector<Fixture>& AllFixtures() {
    static const std::vector<Fixture> all = [] {
        std::vector<Fixture> v;
        for (const auto& entry : kNames) {
            v.push_back(entry.first);
        }
        return v;
    }();
    return all;
}

DiscSpec FixtureSpec(Fixture fixture, int minutes) {
    switch (fixture) {
        case Fixture::AudioThreeTracks:
            return AudioThreeTracks();
        case Fixture::ExactBlockMultiple:
            return ExactBlockMultiple();
        case Fixture::Pregap:
            return Pregap();
        case Fixture::MultiFile:
            return MultiFile();
        case Fixture::DataTrackFirst:
            return DataTrackFirst();
        case Fixture::Enhanced:
            return Enhanced();
        case Fixture::TinyTracks:
            return TinyTracks();
        case Fixture::Large:
            return Large(minutes);
    }
    return AudioThreeTracks();
}

DiscSpec AudioThreeTracks() {
    return OneFileAudio("AudioThreeTracks", "Drei Spuren", {4 * kSecond, 3 * kSecond, 5 * kSecond});
}

DiscSpec ExactBlockMultiple() {
    return OneFileAudio("ExactBlockMultiple", "Glatte Bloecke",
                        {10 * kBlock, 11 * kBlock, 12 * kBlock + 1});
}

DiscSpec Pregap() {
    DiscSpec d = OneFileAudio("Pregap", "Luecken", {4 * kSecond, 3 * kSecond, 4 * kSecond});
    d.tracks[1].indexZeroSectors = 2 * kSecond;  // in the file, before INDEX 01
    d.tracks[2].pregapSectors = 2 * kSecond;     // silence the drive makes up
    return d;
}

DiscSpec MultiFile() {
    DiscSpec d =
        OneFileAudio("MultiFile", "Viele Dateien", {3 * kSecond, 4 * kSecond, 2 * kSecond});
    d.files.clear();
    for (size_t i = 0; i < d.tracks.size(); ++i) {
        d.files.push_back(d.name + "-" + TwoDigits(i + 1) + ".bin");
        d.tracks[i].file = static_cast<int>(i);
    }
    return d;
}

DiscSpec DataTrackFirst() {
    DiscSpec d = OneFileAudio("DataTrackFirst", "Gemischt", {3 * kSecond, 4 * kSecond});
    d.files = {d.name + "-data.bin", d.name + "-audio.bin"};
    TrackSpec data = Audio(4 * kSecond, "Daten");
    data.mode = TrackMode::Mode1;
    for (TrackSpec& t : d.tracks) {
        t.file = 1;
    }
    d.tracks.insert(d.tracks.begin(), data);
    for (size_t i = 1; i < d.tracks.size(); ++i) {
        d.tracks[i].title = "Spur " + TwoDigits(i + 1);
    }
    return d;
}

DiscSpec Enhanced() {
    DiscSpec d = OneFileAudio("Enhanced", "Erweitert", {4 * kSecond, 3 * kSecond});
    d.files = {d.name + "-audio.bin", d.name + "-data.bin"};
    TrackSpec data = Audio(4 * kSecond, "Daten", 1);
    data.mode = TrackMode::Mode1;
    data.session = 2;
    d.tracks.push_back(data);
    return d;
}

DiscSpec ReadsLate(int32_t samples) {
    DiscSpec d = AudioThreeTracks();
    d.name = "ReadsLate";
    d.drive.readOffsetSamples = samples;
    return d;
}

DiscSpec FlakySectors() {
    DiscSpec d = AudioThreeTracks();
    d.name = "FlakySectors";
    const int32_t middle = d.tracks[0].sectors + d.tracks[1].sectors / 2;
    d.drive.flaky.push_back(FlakySpec{middle - 5, 10, 0.5, 16});
    return d;
}

DiscSpec CatalogAndIsrc() {
    DiscSpec d = Pregap();
    d.name = "CatalogAndIsrc";
    d.files = {d.name + ".bin"};
    d.catalog = "4006381333931";
    d.tracks[0].isrc = "DEA123400001";
    d.tracks[1].isrc = "DEA123400002";
    return d;
}

DiscSpec TinyTracks() {
    return OneFileAudio("TinyTracks", "Winzig", {1, 2, 3, 4});
}

DiscSpec Large(int minutes) {
    DiscSpec d = OneFileAudio("Large", "Lange Platte", {});
    minutes = minutes > 1000 ? 1000 : minutes;  // keeps the product in range; validation refuses
    const int32_t total = minutes * 60 * kSecond;
    const int32_t perTrack = kMinutesPerLargeTrack * 60 * kSecond;
    for (int32_t done = 0; done < total; done += perTrack) {
        const int32_t sectors = total - done < perTrack ? total - done : perTrack;
        d.tracks.push_back(Audio(sectors, "Spur " + TwoDigits(d.tracks.size() + 1)));
    }
    return d;
}

}  // namespace plattmix::discgen
