#include "SidecarText.h"

#include <charconv>

namespace plattmix::discgen {

namespace {

// The shortest text that reads back as the same value.
std::string Shortest(double value) {
    char text[32];
    const auto [end, ec] = std::to_chars(text, text + sizeof text, value);
    return ec == std::errc{} ? std::string(text, end) : std::string("0");
}

}  // namespace

std::string SidecarText(const DriveSpec& drive) {
    std::string text;
    if (drive.readOffsetSamples != 0) {
        text += "OFFSET " + std::string(drive.readOffsetSamples > 0 ? "+" : "") +
                std::to_string(drive.readOffsetSamples) + "\n";
    }
    if (!drive.c2Pointers)
        text += "C2 OFF\n";
    for (const FlakySpec& f : drive.flaky) {
        text += "FLAKY " + std::to_string(f.firstLba) + " " + std::to_string(f.count) + " " +
                Shortest(f.probability) + " " + std::to_string(f.seed) + "\n";
    }
    return text;
}

}  // namespace plattmix::discgen
