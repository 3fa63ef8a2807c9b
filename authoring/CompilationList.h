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

// Writes FF FE and then text as UTF-16LE (text is UTF-8; characters beyond the BMP become
// surrogate pairs) into fileName itself, nothing after it. True when the whole text was
// written; on false the file may hold only part of it, and the caller has to say so.
bool UnicodeFile_Write_WithBOM(const std::string& fileName, const std::string& text);

// The lines of a list file, in order, read with UnicodeFile_Read (a file without the mark
// loses its first character) and split at CR LF; a last line without CR LF counts, empty
// pieces are left out. A file that cannot be read gives no lines.
std::vector<std::string> ReadListFileLines(const std::string& fileName);

// The lines of the list file that name something that exists.
std::vector<std::string> ReadListFile(const std::string& fileName);

// The sum the disc has to hold: every entry's bytes. A row that could not be read adds its -1,
// as the sum shown is that of the sizes the rows show.
int64_t CompilationBytes(const std::vector<CompilationEntry>& entries);

}  // namespace plattmix::authoring
