// A compilation of files and folders for a data disc, and its list file: UTF-16LE with a
// byte-order mark, one path per line ending in CR LF, nothing else (sizes are measured anew).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ScanHooks.h"

namespace plattmix::authoring {

inline constexpr const char* kListFileDefaultName = "Diskolo.txt";
inline constexpr const char* kTextNothingToSave = "Keine Daten zum Speichern vorhanden?";

// One row of the compilation.
struct CompilationEntry {
    std::string path;   // as chosen, or as stored in the list file
    int64_t bytes = 0;  // a folder's recursive sum; a file's size, -1 when it cannot be read
    bool folder = false;
};

// Measures path: a folder with OrdnerGroesse (0 when Escape stopped it, the part found so far
// when it cannot be read completely), anything else with DateiGroesse.
CompilationEntry MeasureEntry(const std::string& path, const ScanHooks& hooks);

// The list file's text: every path followed by CR LF.
std::string ListFileText(const std::vector<std::string>& paths);

// Writes FF FE and then text as UTF-16LE (text is UTF-8). True when the text was written.
bool UnicodeFile_Write_WithBOM(const std::string& fileName, const std::string& text);

// The paths of a list file, in order: the text is split at CR LF, empty pieces and paths that
// do not exist are left out. A file that cannot be read gives no paths.
std::vector<std::string> ReadListFile(const std::string& fileName);

// The sum the disc has to hold: every entry's bytes.
int64_t CompilationBytes(const std::vector<CompilationEntry>& entries);

}  // namespace plattmix::authoring
