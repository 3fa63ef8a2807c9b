// Small source trees, each carrying one quirk an ISO image has to keep. Every function writes
// below root (creating it), always the same names and bytes, and returns what it made.
#pragma once

#include <filesystem>
#include <string>

#include "MadeTree.h"

namespace plattmix::treegen {

// A chain of depth folders (more than the 8 levels plain ISO 9660 allows) with a file in each;
// the deepest file's path is longer than 255 characters.
MadeTree MakeDeepFolders(const std::filesystem::path& root, int depth = 12);

// Names with German umlauts and ß, Cyrillic letters and emoji, for folders and files.
MadeTree MakeNonAsciiNames(const std::filesystem::path& root);

// Empty folders at the top, inside a filled folder and nested; one file at the top.
MadeTree MakeEmptyFolders(const std::filesystem::path& root);

// The file and folder names MakeLongNames uses, by their length in characters (all ASCII).
struct LongNames {
    std::string len64, len65, len103, len104, len150;
    std::string twin80a, twin80b;    // 80 characters, the first 64 the same
    std::string twin120a, twin120b;  // 120 characters, the first 110 the same
    std::string folder120;           // a folder, with the file "inhalt.txt" in it
};
LongNames LongNameSet();

// Files and a folder named as in LongNameSet().
MadeTree MakeLongNames(const std::filesystem::path& root);

// Links to a file, to a folder, to a link, out of a sub-folder ("../"), by absolute path, and
// one pointing nowhere, next to the file "ziel.txt" and the folder "ordner" they point at.
MadeTree MakeSymbolicLinks(const std::filesystem::path& root);

// Every quirk tree above in its own sub-folder: tief, umlaute, leer, lang, links.
MadeTree MakeAllQuirks(const std::filesystem::path& root);

}  // namespace plattmix::treegen
