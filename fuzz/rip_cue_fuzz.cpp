// Rip.cue as the ripper writes it for any disc it can meet (track numbers with gaps where tracks
// were left out, pregaps, ISRCs, a catalog number, any CD-Text), read back through the image
// drive's CUE parser with BIN files of the tracks' sizes: every track comes back with its number,
// texts and ISRC.
//
// Input parts: catalog flag, CD-Text flag, album title, album performer, then per track: its
// numbering step, sectors (two bytes), pregap (two bytes), ISRC flag, extension choice, title,
// performer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "RipCue.h"
#include "imagedrive/CueSheet.h"
#include "imagedrive/DiscImage.h"

namespace {

using namespace plattmix;

// A CD-Text string as the ripper has it: ISO 8859-1 bytes (no NUL) as UTF-8.
std::string CdTextString(std::span<const uint8_t> bytes) {
    std::string out;
    for (const uint8_t byte : bytes) {
        if (byte == 0)
            continue;
        if (byte < 0x80) {
            out.push_back(static_cast<char>(byte));
        } else {
            out.push_back(static_cast<char>(0xC0u | (byte >> 6)));
            out.push_back(static_cast<char>(0x80u | (byte & 0x3Fu)));
        }
    }
    return out;
}

std::string Digits(uint32_t seed, size_t count, bool letters) {
    static constexpr char kChars[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text.push_back(kChars[seed % (letters ? 36 : 10)]);
        seed = seed * 1103515245u + 12345u;
    }
    return text;
}

uint32_t Number(std::span<const uint8_t> part) {
    uint32_t value = 0;
    for (const uint8_t byte : part.first(std::min<size_t>(part.size(), 4)))
        value = (value << 8) | byte;
    return value;
}

// A text as the sheet holds it: double quotes made single, control characters blanks.
std::string Quoted(std::string text) {
    std::replace(text.begin(), text.end(), '"', '\'');
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return text;
}

// The image drive plays BIN files only: the sheet with its FILE lines' types made BINARY, the
// rest as written.
std::string AsBinarySheet(const std::string& text) {
    std::string out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        out +=
            (line.starts_with("FILE ") ? line.substr(0, line.rfind(' ')) + " BINARY" : line) + "\n";
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Parts parts(data, size);
    audiocd::RipCue cue;
    if (const uint8_t flag = parts.NextByte(); flag & 1)
        cue.catalog = Digits(flag, 13, false);
    if (parts.NextByte() & 1) {
        cue.cdText = audiocd::CdText{};
        cue.cdText->albumTitle = CdTextString(parts.Next());
        cue.cdText->albumPerformer = CdTextString(parts.Next());
    }
    static const char* const kExtensions[] = {".wav", ".flac", ".mp3", ".aiff", ".m4a", ""};
    int number = 0;
    for (auto step = parts.Next(); !step.empty() && cue.tracks.size() < 99; step = parts.Next()) {
        number += 1 + (step[0] & 3);
        if (number > 99)
            break;
        audiocd::RipCueTrack track;
        track.number = number;
        track.sectors = static_cast<int32_t>(Number(parts.Next()) & 0xFFFF) + 1;
        // A pregap in the previous track's file (INDEX 00 before the FILE line) makes a track
        // span two files, which the image drive does not play; the other pregaps are PREGAP lines.
        const bool previousInFile = !cue.tracks.empty() && cue.tracks.back().number == number - 1;
        const int32_t pregap = static_cast<int32_t>(Number(parts.Next()) & 0xFFFF);
        track.pregapSectors = previousInFile ? 0 : pregap;
        const uint32_t isrcFlag = Number(parts.Next());
        if (isrcFlag & 1)
            track.isrc = Digits(isrcFlag, 12, true);
        track.fileName = "Track" + std::to_string(number) + kExtensions[parts.NextByte() % 6];
        if (cue.cdText) {
            cue.cdText->titles[number] = CdTextString(parts.Next());
            cue.cdText->performers[number] = CdTextString(parts.Next());
        }
        cue.tracks.push_back(std::move(track));
    }

    const std::string text = audiocd::FormatRipCue(cue);
    const auto sheet = scsi::imagedrive::ParseCueSheet(AsBinarySheet(text), "/rip/", "Rip.cue");
    if (!sheet.ok()) {
        if (cue.tracks.empty())
            return 0;  // a sheet without tracks is no disc
        std::fprintf(stderr, "%s\n%s\n", text.c_str(), sheet.Error().c_str());
        std::abort();
    }
    std::vector<const scsi::imagedrive::CueTrack*> tracks;
    for (const auto& file : sheet.Value().files) {
        for (const auto& track : file.tracks)
            tracks.push_back(&track);
    }
    std::vector<int64_t> sizes;
    for (const auto& track : cue.tracks)
        sizes.push_back(int64_t{track.sectors} * 2352);
    if (tracks.size() != cue.tracks.size() || sizes.size() != sheet.Value().files.size())
        std::abort();
    for (size_t i = 0; i < tracks.size(); ++i) {
        const audiocd::RipCueTrack& written = cue.tracks[i];
        if (tracks[i]->number != written.number || tracks[i]->isrc != written.isrc)
            std::abort();
        if (cue.cdText && (tracks[i]->title != Quoted(cue.cdText->titles[written.number]) ||
                           tracks[i]->performer != Quoted(cue.cdText->performers[written.number])))
            std::abort();
    }
    if (cue.cdText && sheet.Value().title != Quoted(cue.cdText->albumTitle))
        std::abort();
    if (sheet.Value().catalog != cue.catalog)
        std::abort();
    const auto disc = scsi::imagedrive::LayoutDisc(sheet.Value(), sizes, "Rip.cue");
    if (!disc.ok() || disc.Value().tracks.size() != cue.tracks.size())
        std::abort();
    return 0;
}
