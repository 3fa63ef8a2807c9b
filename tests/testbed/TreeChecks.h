// Images made by plattmix-cli, mounted by the guest's kernel: the tree the kernel shows, with
// Rock Ridge and through Joliet, against a listing of the source tree written on the host.
//
// The listing (one per drive, "tree-sr0.manifest" in the data folder) has one entry a line,
// fields separated by tabs, paths relative to the tree's root with "/" between names:
//   D <path>                          a folder (empty ones too)
//   F <path> <size> <sha256>          a file
//   L <path> <target>                 a symbolic link and its target text
//   S <path> <size> <offset>:<hex>,…  a file too large to hash: its size and the bytes found at
//                                     some offsets (hex), read with pread
// Lines starting with "#" are comments.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ProbeChannel.h"

namespace plattmix::testbed {

struct TreeSample {
    int64_t offset = 0;
    std::string bytes;
};

struct TreeEntry {
    char kind = 'F';  // D, F, L or S as in the listing
    std::string path;
    int64_t size = 0;
    std::string hash;    // F: sha256 in lower-case hex
    std::string target;  // L
    std::vector<TreeSample> samples;
};

// Parses a listing; an unreadable line makes error non-empty.
std::vector<TreeEntry> ParseTreeListing(std::string_view text, std::string& error);

// Joliet as the program writes it keeps a name as it is when it has at most this many UTF-16
// units (the long form readers accept; strict Joliet stops at 64), a file's name not counting
// the dot before its extension; when it has no control character and none of * / : ; ? \;
// and when it does not end in a dot (the kernel drops trailing dots when it reads Joliet
// names). Characters beyond the 16-bit plane count twice and are kept.
inline constexpr int kJolietNameUnits = 103;
// A name's length as the limit counts it.
int JolietNameUnits(std::string_view name, bool folder);
bool JolietKeepsName(std::string_view name, bool folder);
int Utf16Units(std::string_view utf8);

// One problem found while comparing, filed under the first name of its path.
struct TreeProblem {
    std::string group;
    std::string text;
};

struct TreeComparison {
    std::vector<std::string> groups;  // every first-level name met, in order
    std::vector<TreeProblem> problems;
};

// Compares the folder root (a mounted Rock Ridge view) with the listing: every entry there with
// the same name, kind, size, content and link target, and nothing else.
TreeComparison CompareRockRidge(const std::vector<TreeEntry>& expected, const std::string& root);

// Compares the folder root (a mounted Joliet view) with the listing, links left out: names that
// Joliet keeps must be there as they are; others must appear shortened to at most
// kJolietNameUnits units, each name unique within its folder, the content unchanged.
TreeComparison CompareJoliet(const std::vector<TreeEntry>& expected, const std::string& root);

// For each drive whose listing is in data: mounts it read-only, compares both views and reports
// one check per first-level name and view ("sr0.rock.tief").
void CheckMountedTrees(Report& report, const std::string& data);

}  // namespace plattmix::testbed
