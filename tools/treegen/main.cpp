// plattmix-mktree FIXTURE FOLDER [BYTES]: writes one tree fixture into FOLDER and lists what it
// made (folders, files and links, one per line), then the byte total.
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "LargeTrees.h"
#include "QuirkTrees.h"

using namespace plattmix::treegen;
namespace fs = std::filesystem;

namespace {

using Maker = std::function<MadeTree(const fs::path&, int64_t)>;

const std::map<std::string, Maker>& Makers() {
    static const std::map<std::string, Maker> makers = {
        {"deep", [](const fs::path& r, int64_t) { return MakeDeepFolders(r); }},
        {"nonascii", [](const fs::path& r, int64_t) { return MakeNonAsciiNames(r); }},
        {"empty", [](const fs::path& r, int64_t) { return MakeEmptyFolders(r); }},
        {"long", [](const fs::path& r, int64_t) { return MakeLongNames(r); }},
        {"links", [](const fs::path& r, int64_t) { return MakeSymbolicLinks(r); }},
        {"quirks", [](const fs::path& r, int64_t) { return MakeAllQuirks(r); }},
        {"sparse", [](const fs::path& r, int64_t b) { return MakeSparseLargeFile(r, b); }},
        {"large", [](const fs::path& r, int64_t b) { return MakeLargeTree(r, b); }},
    };
    return makers;
}

int Usage() {
    std::cerr << "Aufruf: plattmix-mktree FIXTURE ORDNER [BYTES]\nFIXTURE:";
    for (const auto& [name, maker] : Makers())
        std::cerr << ' ' << name;
    std::cerr << "\nBYTES gilt für sparse (Vorgabe 5 GiB) und large (Vorgabe 1 GiB).\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4 || !Makers().contains(argv[1]))
        return Usage();
    const std::string fixture = argv[1];
    int64_t bytes = fixture == "sparse" ? kFiveGiB : int64_t{1} << 30;
    if (argc == 4) {
        char* end = nullptr;
        bytes = std::strtoll(argv[3], &end, 10);
        if (*end != '\0' || bytes < 0)
            return Usage();
    }
    try {
        const MadeTree made = Makers().at(fixture)(argv[2], bytes);
        for (const auto& path : made.folders)
            std::cout << "ordner " << path << '\n';
        for (const auto& path : made.files)
            std::cout << "datei " << path << '\n';
        for (const auto& path : made.links)
            std::cout << "link " << path << '\n';
        std::cout << "bytes " << made.bytes << '\n';
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
