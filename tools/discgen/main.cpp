// plattmix-mkdisc FIXTURE OUTDIR [--minutes N]: writes a test disc and prints its track table.
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
};

int Usage() {
    std::fprintf(stderr, "Aufruf: plattmix-mkdisc FIXTURE ZIELORDNER [--minutes N]\nFixtures:");
    for (const Fixture f : AllFixtures()) {
        std::fprintf(stderr, " %s", std::string(FixtureName(f)).c_str());
    }
    std::fprintf(stderr, " Demo\n");
    return 2;
}

bool ParseMinutes(std::string_view text, int& minutes) {
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), minutes);
    return ec == std::errc{} && end == text.data() + text.size();
}

bool Parse(int argc, char** argv, Arguments& args) {
    int positional = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--minutes" && i + 1 < argc) {
            if (!ParseMinutes(argv[++i], args.minutes)) {
                return false;
            }
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
    const std::optional<DiscSpec> spec = SpecFor(args);
    if (!spec) {
        std::fprintf(stderr, "Unbekannte Fixture: %s\n", args.fixture.c_str());
        return Usage();
    }
    const Result<DiscDescription> disc = WriteDisc(*spec, args.folder);
    if (!disc.ok()) {
        std::fprintf(stderr, "Fehler: %s\n", disc.error.c_str());
        return 1;
    }
    std::fputs(TrackTableText(*disc.value).c_str(), stdout);
    return 0;
}
