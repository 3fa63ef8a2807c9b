// A compilation list file, read as the burn page loads it; and lines written as a list file
// read back unchanged.
//
// Input parts: the file's bytes, then lines (separated by NUL) to write and read back.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "CompilationList.h"
#include "FuzzInput.h"

namespace {

// The lines a list file can carry: valid UTF-8 (the writer's input), no CR LF, not empty; here
// printable ASCII.
std::vector<std::string> ListLines(std::string_view text) {
    std::vector<std::string> lines;
    std::istringstream in{std::string(text)};
    for (std::string line; std::getline(in, line, '\0');) {
        if (!line.empty() &&
            std::all_of(line.begin(), line.end(), [](char c) { return c >= 0x20 && c < 0x7F; }))
            lines.push_back(line);
    }
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix;
    fuzz::Parts parts(data, size);
    const std::string path = fuzz::ScratchFile("list.txt", fuzz::AsText(parts.Next()));
    authoring::ReadListFileLines(path);
    authoring::ReadListFile(path);

    const std::vector<std::string> lines = ListLines(fuzz::AsText(parts.Next()));
    if (!authoring::UnicodeFile_Write_WithBOM(path, authoring::ListFileText(lines)))
        std::abort();
    if (authoring::ReadListFileLines(path) != lines)
        std::abort();
    return 0;
}
