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
//   V <hex>                           the volume name as the Joliet descriptor holds it (32
//                                     bytes of UCS-2, big-endian, padded with spaces)
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
    char kind = 'F';   // D, F, L, S or V as in the listing
    std::string path;  // V: the volume name's hex
    int64_t size = 0;
    std::string hash;    // F: sha256 in lower-case hex
    std::string target;  // L
    std::vector<TreeSample> samples;
};

// Reads the listing at path; reports the check name, failed when the listing cannot be read
// or is empty (and then answers nothing).
std::vector<TreeEntry> ReadTreeListing(Report& report, const std::string& name,
                                       const std::string& path);

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

// Compares the folder root (a mounted Joliet view) with the listing, links left out. Joliet as
// the program writes it keeps a name that has at most 103 UTF-16 units (the long form readers
// accept; a file's name not counting the dot before its extension, characters beyond the
// 16-bit plane counting twice), no control character, none of * / : ; ? \ and no trailing dot
// (the kernel drops those). Those names must be there as they are; others must appear shortened
// to at most 103 units, keeping their first 32 bytes when cut for length, each name unique
// within its folder, the content unchanged.
TreeComparison CompareJoliet(const std::vector<TreeEntry>& expected, const std::string& root);

// For each drive whose listing is in data: mounts it read-only, compares both views and reports
// one check per first-level name and view ("sr0.rock.tief").
void CheckMountedTrees(Report& report, const std::string& data);

}  // namespace plattmix::testbed
