#include "TrackTable.h"

#include <cinttypes>
#include <cstdio>

namespace plattmix::discgen {
namespace {

std::string TrackLine(const TrackInfo& t) {
    char line[160];
    std::snprintf(line, sizeof line, "%4d %8d  %-10s %8d %9d  %08" PRIx32 "  ", t.number, t.session,
                  t.mode == TrackMode::Audio ? "AUDIO" : "MODE1/2048", t.startLba, t.lengthSectors,
                  t.crc32);
    return line + t.title + "\n";
}

std::string FileLine(const FileInfo& f) {
    char line[64];
    std::snprintf(line, sizeof line, "  %12" PRId64 " Bytes  %08" PRIx32 "  ", f.bytes, f.crc32);
    return line + f.path.string() + "\n";
}

}  // namespace

std::string TrackTableText(const DiscDescription& disc) {
    std::string out = disc.name + ": " + disc.cuePath.string() + "\n";
    out += "Titel: " + disc.title + " / Interpret: " + disc.performer + "\n";
    out += "Spur  Sitzung  Modus         Start  Sektoren  CRC-32    Titel\n";
    for (const TrackInfo& t : disc.tracks) {
        out += TrackLine(t);
    }
    out += "Lead-out: " + std::to_string(disc.leadOutLba) + "\nDateien:\n";
    for (const FileInfo& f : disc.files) {
        out += FileLine(f);
    }
    if (!disc.drivePath.empty()) {
        out += "Laufwerk: " + disc.drivePath.string() + "\n";
    }
    return out;
}

}  // namespace plattmix::discgen
