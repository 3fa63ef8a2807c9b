#include "TreeChecks.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>

#include "CommandLineChecks.h"

namespace plattmix::testbed {

namespace {

constexpr int kJolietNameUnits = 103;
constexpr int kCutNameKeeps = 32;  // bytes a name cut for Joliet keeps at least from its start

// What the kernel shows for one name below the mount point.
struct Node {
    char kind = 'F';  // D, F, L, or O for anything else
    std::string name;
    std::string path;  // relative to the mount point
    int64_t size = 0;
    std::string target;
};

// The names the kernel shows in each folder (by its path relative to the mount point, "" for
// the mount point itself).
using Folders = std::map<std::string, std::vector<Node>>;

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (;;) {
        const size_t end = text.find(separator, start);
        parts.emplace_back(text.substr(start, end - start));
        if (end == std::string_view::npos)
            return parts;
        start = end + 1;
    }
}

bool ParseNumber(const std::string& text, int64_t& value) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    value = std::stoll(text);
    return true;
}

std::string FromHex(const std::string& hex, bool& ok) {
    std::string bytes;
    ok =
        hex.size() % 2 == 0 && hex.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    for (size_t i = 0; ok && i < hex.size(); i += 2)
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string BaseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

std::string Parent(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// A sampled file is a file on the disc.
char KindOf(const TreeEntry& entry) {
    return entry.kind == 'S' ? 'F' : entry.kind;
}

std::string KindName(char kind) {
    return kind == 'D' ? "folder" : kind == 'L' ? "link" : kind == 'O' ? "special file" : "file";
}

int Utf16Units(std::string_view utf8) {
    int units = 0;
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        units += (byte & 0xC0) != 0x80;
        units += (byte & 0xF8) == 0xF0;  // four bytes: a surrogate pair
    }
    return units;
}

int JolietNameUnits(std::string_view name, bool folder) {
    const bool extension = !folder && name.find('.') != std::string_view::npos;
    return Utf16Units(name) - (extension ? 1 : 0);
}

bool JolietKeepsName(std::string_view name, bool folder) {
    if (name.empty() || name.back() == '.' || JolietNameUnits(name, folder) > kJolietNameUnits)
        return false;
    return std::none_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || std::strchr("*/:;?\\", c) != nullptr;
    });
}

int CommonPrefix(const std::string& a, const std::string& b) {
    return static_cast<int>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                            a.begin());
}

// Every name below root, folder by folder, sorted; links are not followed.
void Walk(const std::string& root, const std::string& relative, Folders& folders) {
    DIR* dir = ::opendir((relative.empty() ? root : root + "/" + relative).c_str());
    if (dir == nullptr)
        return;
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    for (const auto& name : names) {
        Node node{'O', name, relative.empty() ? name : relative + "/" + name, 0, ""};
        const std::string full = root + "/" + node.path;
        struct stat info {};
        if (::lstat(full.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
            node.kind = 'D';
        } else if (S_ISLNK(info.st_mode)) {
            node.kind = 'L';
            std::array<char, 4096> target{};
            const ssize_t n = ::readlink(full.c_str(), target.data(), target.size());
            node.target.assign(target.data(), static_cast<size_t>(std::max<ssize_t>(n, 0)));
        } else if (S_ISREG(info.st_mode)) {
            node.kind = 'F';
            node.size = info.st_size;
        }
        folders[relative].push_back(node);
        if (node.kind == 'D')
            Walk(root, node.path, folders);
    }
}

// The sha256sum program's digest of a file; empty when it could not be run.
std::string Sha256Of(const std::string& path) {
    std::string quoted = "'";
    for (const char c : path)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    const CommandOutput out = RunInGuest("sha256sum < " + quoted + "'");
    return out.code == 0 && !out.lines.empty() ? out.lines[0].substr(0, 64) : "";
}

// Matches the listed tree with the mounted one folder by folder. With Joliet, links are left
// out and names Joliet cannot keep are matched with the shortened names left over.
class Comparer {
  public:
    Comparer(const std::vector<TreeEntry>& expected, const std::string& root, bool joliet)
        : root_(root), joliet_(joliet) {
        for (const auto& entry : expected) {
            if (entry.kind != 'V' && (!joliet || entry.kind != 'L'))
                listed_[Parent(entry.path)].push_back(&entry);
        }
        Walk(root, "", shown_);
    }

    TreeComparison Run() {
        Folder("", "", "");
        return std::move(result_);
    }

  private:
    void Group(const std::string& group) {
        if (std::find(result_.groups.begin(), result_.groups.end(), group) == result_.groups.end())
            result_.groups.push_back(group);
    }

    void Problem(const std::string& group, std::string text) {
        Group(group);
        result_.problems.push_back({group, std::move(text)});
    }

    // The digest of a file below the mount point, computed once.
    const std::string& Hash(const std::string& path) {
        auto at = hashes_.find(path);
        if (at == hashes_.end())
            at = hashes_.emplace(path, Sha256Of(root_ + "/" + path)).first;
        return at->second;
    }

    // The listed folder expected against the shown folder actual; group is the first-level
    // name above them, empty at the top.
    void Folder(const std::string& expected, const std::string& actual, const std::string& group) {
        const auto& listed = listed_[expected];
        const auto& shown = shown_[actual];
        const auto in = [&](const std::string& name) { return group.empty() ? name : group; };
        std::map<std::string, int> seen;
        for (const Node& node : shown) {
            if (++seen[node.name] == 2)
                Problem(in(node.name), node.path + ": the name appears twice in its folder");
        }
        std::vector<bool> used(shown.size(), false);
        std::vector<const TreeEntry*> renamed;
        for (const TreeEntry* entry : listed) {
            const std::string name = BaseName(entry->path);
            if (joliet_ && !JolietKeepsName(name, entry->kind == 'D')) {
                renamed.push_back(entry);
                continue;
            }
            const auto at = std::find_if(shown.begin(), shown.end(),
                                         [&](const Node& node) { return node.name == name; });
            if (at == shown.end()) {
                Problem(in(name), "missing " + KindName(KindOf(*entry)) + " " + entry->path);
                continue;
            }
            used[static_cast<size_t>(at - shown.begin())] = true;
            Pair(*entry, *at, in(name));
        }
        for (const TreeEntry* entry : renamed)
            Renamed(*entry, shown, used, in(BaseName(entry->path)));
        for (size_t i = 0; i < shown.size(); ++i) {
            if (!used[i])
                Problem(in(shown[i].name),
                        "extra " + KindName(shown[i].kind) + " " + shown[i].path);
        }
    }

    // A name Joliet cannot keep: its counterpart is a name left over of the same kind,
    // preferably of the same content, then with the longest common beginning (names cut to the
    // same length and then made unique differ only at their end).
    void Renamed(const TreeEntry& entry, const std::vector<Node>& shown, std::vector<bool>& used,
                 const std::string& group) {
        const std::string name = BaseName(entry.path);
        const bool folder = entry.kind == 'D';
        int best = -1;
        int bestScore = -1;
        for (size_t i = 0; i < shown.size(); ++i) {
            if (used[i] || shown[i].kind != KindOf(entry))
                continue;
            int score = CommonPrefix(shown[i].name, name);
            if (!folder && shown[i].size == entry.size)
                score +=
                    10000 + (entry.kind == 'F' && Hash(shown[i].path) == entry.hash ? 10000 : 0);
            if (score > bestScore) {
                best = static_cast<int>(i);
                bestScore = score;
            }
        }
        if (best < 0) {
            Problem(group, "missing " + KindName(KindOf(entry)) + " " + entry.path +
                               " (no shortened name for it)");
            return;
        }
        const Node& node = shown[static_cast<size_t>(best)];
        used[static_cast<size_t>(best)] = true;
        const int units = JolietNameUnits(node.name, node.kind == 'D');
        if (units > kJolietNameUnits)
            Problem(group, entry.path + " appears as " + node.path + ", " + std::to_string(units) +
                               " characters long");
        // A name cut for its length keeps its beginning, so the user still recognises it.
        if (JolietNameUnits(name, folder) > kJolietNameUnits &&
            CommonPrefix(node.name, name) < kCutNameKeeps)
            Problem(group, entry.path + " appears as " + node.path);
        Pair(entry, node, group);
    }

    // Kind, link target, size and content of the listed entry against what the kernel shows.
    void Pair(const TreeEntry& entry, const Node& node, const std::string& group) {
        Group(group);
        const std::string& shown = node.path;
        if (node.kind != KindOf(entry))
            return Problem(group, shown + ": a " + KindName(node.kind) + ", should be a " +
                                      KindName(KindOf(entry)));
        if (node.kind == 'D')
            return Folder(entry.path, node.path, group);
        if (node.kind == 'L') {
            if (node.target != entry.target)
                Problem(group, shown + ": points to \"" + node.target + "\", should point to \"" +
                                   entry.target + "\"");
            return;
        }
        if (node.size != entry.size)
            return Problem(group, shown + ": " + std::to_string(node.size) + " bytes, should be " +
                                      std::to_string(entry.size));
        if (entry.kind == 'F') {
            const std::string& hash = Hash(node.path);
            if (hash != entry.hash)
                Problem(group, shown + ": content differs (sha256 " +
                                   (hash.empty() ? std::string("not computed") : hash) + ")");
            return;
        }
        const int fd = ::open((root_ + "/" + node.path).c_str(), O_RDONLY | O_CLOEXEC);
        for (const auto& sample : entry.samples) {
            std::string bytes(sample.bytes.size(), '\0');
            const ssize_t n = ::pread(fd, bytes.data(), bytes.size(), sample.offset);
            if (n != static_cast<ssize_t>(bytes.size()) || bytes != sample.bytes)
                Problem(group, shown + ": the " + std::to_string(sample.bytes.size()) +
                                   " bytes at offset " + std::to_string(sample.offset) +
                                   (n < 0 ? " cannot be read" : " differ"));
        }
        if (fd >= 0)
            ::close(fd);
    }

    std::string root_;
    bool joliet_;
    std::map<std::string, std::vector<const TreeEntry*>> listed_;
    Folders shown_;
    std::map<std::string, std::string> hashes_;
    TreeComparison result_;
};

// One check per first-level name, with the first problems found below it.
void ReportComparison(Report& report, const std::string& prefix, const TreeComparison& result) {
    for (const auto& group : result.groups) {
        std::string detail;
        int problems = 0;
        for (const auto& problem : result.problems) {
            if (problem.group == group && ++problems <= 4)
                detail += " [" + problem.text + "]";
        }
        report.Check(prefix + "." + group, problems == 0,
                     std::to_string(problems) + " problems" + detail);
    }
}

// The volume name field of the Joliet descriptor in hex; empty when the device has none.
std::string JolietVolumeName(const std::string& device) {
    const int fd = ::open(device.c_str(), O_RDONLY | O_CLOEXEC);
    std::array<uint8_t, 2048> sector{};
    std::string name;
    for (int lba = 16; lba < 32 && fd >= 0; ++lba) {
        if (::pread(fd, sector.data(), sector.size(), off_t{lba} * 2048) != 2048 ||
            std::memcmp(sector.data() + 1, "CD001", 5) != 0 || sector[0] == 255)
            break;
        // A supplementary descriptor with one of the three Joliet escape sequences.
        if (sector[0] == 2 && sector[88] == 0x25 && sector[89] == 0x2F) {
            name = Hex(std::span(sector).subspan(40, 32));
            break;
        }
    }
    if (fd >= 0)
        ::close(fd);
    return name;
}

}  // namespace

std::vector<TreeEntry> ReadTreeListing(Report& report, const std::string& name,
                                       const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<TreeEntry> entries;
    int number = 0;
    bool ok = true;
    for (std::string line; ok && std::getline(in, line);) {
        ++number;
        if (line.empty() || line[0] == '#')
            continue;
        const auto fields = Split(line, '\t');
        TreeEntry entry;
        entry.kind = fields[0].size() == 1 ? fields[0][0] : '?';
        const size_t wanted = entry.kind == 'D' || entry.kind == 'V' ? 2
                              : entry.kind == 'L'                    ? 3
                                                                     : 4;
        ok = fields.size() == wanted && !fields[1].empty() &&
             std::string_view("DFLSV").find(entry.kind) != std::string_view::npos;
        if (ok) {
            entry.path = fields[1];
            entry.target = entry.kind == 'L' ? fields[2] : "";
        }
        if (ok && (entry.kind == 'F' || entry.kind == 'S'))
            ok = ParseNumber(fields[2], entry.size);
        if (ok && entry.kind == 'F') {
            entry.hash = fields[3];
            ok = entry.hash.size() == 64;
        }
        for (const auto& sample :
             ok&& entry.kind == 'S' ? Split(fields[3], ',') : std::vector<std::string>{}) {
            const size_t colon = sample.find(':');
            TreeSample parsed;
            ok = ok && colon != std::string::npos &&
                 ParseNumber(sample.substr(0, colon), parsed.offset);
            if (ok)
                parsed.bytes = FromHex(sample.substr(colon + 1), ok);
            entry.samples.push_back(parsed);
        }
        entries.push_back(entry);
    }
    ok = ok && in.eof() && !entries.empty();
    report.Check(name, ok,
                 ok ? std::to_string(entries.size()) + " entries"
                    : path + ", line " + std::to_string(number) + " cannot be read");
    return ok ? entries : std::vector<TreeEntry>{};
}

TreeComparison CompareRockRidge(const std::vector<TreeEntry>& expected, const std::string& root) {
    return Comparer(expected, root, false).Run();
}

TreeComparison CompareJoliet(const std::vector<TreeEntry>& expected, const std::string& root) {
    return Comparer(expected, root, true).Run();
}

void CheckMountedTrees(Report& report, const std::string& data) {
    for (const std::string drive : {"sr0", "sr1"}) {
        const std::string path = data + "/tree-" + drive + ".manifest";
        if (::access(path.c_str(), R_OK) != 0)
            continue;
        const auto expected = ReadTreeListing(report, drive + ".listing", path);
        if (expected.empty())
            continue;
        const std::string device = "/dev/" + drive;
        for (const auto& entry : expected) {
            if (entry.kind == 'V')
                report.Check(drive + ".joliet.volume-name", JolietVolumeName(device) == entry.path,
                             JolietVolumeName(device) + ", should be " + entry.path);
        }

        const std::string point = "/mnt/" + drive;
        ::mkdir("/mnt", 0755);
        ::mkdir(point.c_str(), 0755);
        for (const bool joliet : {false, true}) {
            const std::string prefix = drive + (joliet ? ".joliet" : ".rock");
            const char* options = joliet ? "norock" : "";
            const bool mounted =
                ::mount(device.c_str(), point.c_str(), "iso9660", MS_RDONLY, options) == 0;
            if (!report.Check(prefix + ".mount", mounted,
                              std::string("iso9660 -o ro") + (joliet ? ",norock" : "") +
                                  (mounted ? "" : std::string(": ") + std::strerror(errno))))
                continue;
            ReportComparison(
                report, prefix,
                joliet ? CompareJoliet(expected, point) : CompareRockRidge(expected, point));
            ::umount(point.c_str());
        }
    }
}

}  // namespace plattmix::testbed
