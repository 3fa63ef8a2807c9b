// plattmix-mkdisc FIXTURE OUTDIR [--minutes N] [--offset N] [--no-c2]
//                 [--flaky FIRST,COUNT,P,SEED]...: writes a test disc, with the image drive's
// quirks in a sidecar when asked for, and prints its track table.
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "DemoDisc.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "TrackTable.h"

namespace {

using namespace plattmix::discgen;

struct Arguments {
    std::string fixture;
    std::string folder;
    int minutes = kDefaultLargeMinutes;
    DriveSpec drive;
};

int Usage() {
    std::fprintf(stderr,
                 "Aufruf: plattmix-mkdisc FIXTURE ZIELORDNER [--minutes N] [--offset N] "
                 "[--no-c2] [--flaky ERSTER,ANZAHL,P,STARTWERT]...\nFixtures:");
    for (const Fixture f : AllFixtures()) {
        std::fprintf(stderr, " %s", std::string(FixtureName(f)).c_str());
    }
    std::fprintf(stderr, " Demo ReadsLate FlakySectors CatalogAndIsrc\n");
    return 2;
}

template <typename Number>
bool ParseNumber(std::string_view text, Number& value) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc{} && end == text.data() + text.size();
}

// "FIRST,COUNT,P,SEED"
bool ParseFlaky(std::string_view text, DriveSpec& drive) {
    std::string_view parts[4];
    for (auto& part : parts) {
        const size_t comma = text.find(',');
        part = text.substr(0, comma);
        text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
    }
    FlakySpec flaky;
    if (!text.empty() || !ParseNumber(parts[0], flaky.firstLba) ||
        !ParseNumber(parts[1], flaky.count) || !ParseNumber(parts[2], flaky.probability) ||
        !ParseNumber(parts[3], flaky.seed)) {
        return false;
    }
    drive.flaky.push_back(flaky);
    return true;
}

bool Parse(int argc, char** argv, Arguments& args) {
    int positional = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--minutes" && i + 1 < argc) {
            if (!ParseNumber(std::string_view(argv[++i]), args.minutes)) {
                return false;
            }
        } else if (arg == "--offset" && i + 1 < argc) {
            if (!ParseNumber(std::string_view(argv[++i]), args.drive.readOffsetSamples)) {
                return false;
            }
        } else if (arg == "--flaky" && i + 1 < argc) {
            if (!ParseFlaky(argv[++i], args.drive)) {
                return false;
            }
        } else if (arg == "--no-c2") {
            args.drive.c2Pointers = false;
        } else if (!arg.starts_with("-") && positional < 2) {
            (positional++ == 0 ? args.fixture : args.folder) = std::string(arg);
        } else {
            return false;
        }
    }
    return positional == 2;
}

std::optional<DiscSpec> SpecFor(const Arguments& args) {
    if (args.fixture == "Demo") {
        return DemoDiscSpec();
    }
    if (args.fixture == "ReadsLate") {
        return ReadsLate();
    }
    if (args.fixture == "FlakySectors") {
        return FlakySectors();
    }
    if (args.fixture == "CatalogAndIsrc") {
        return CatalogAndIsrc();
    }
    const std::optional<Fixture> fixture = FixtureByName(args.fixture);
    if (!fixture) {
        return std::nullopt;
    }
    return FixtureSpec(*fixture, args.minutes);
}

}  // namespace

int main(int argc, char** argv) {
    Arguments args;
    if (!Parse(argc, argv, args)) {
        return Usage();
    }
    std::optional<DiscSpec> spec = SpecFor(args);
    if (!spec) {
        std::fprintf(stderr, "Unbekannte Fixture: %s\n", args.fixture.c_str());
        return Usage();
    }
    if (!args.drive.Plain()) {
        spec->drive = args.drive;
    }
    const Result<DiscDescription> disc = WriteDisc(*spec, args.folder);
    if (!disc.ok()) {
        std::fprintf(stderr, "Fehler: %s\n", disc.error.c_str());
        return 1;
    }
    std::fputs(TrackTableText(*disc.value).c_str(), stdout);
    return 0;
}
