#include "TreeChecks.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

extern char** environ;

namespace plattmix::testbed {

namespace {

// What the kernel shows for one name below the mount point.
struct Node {
    char kind = 'F';  // D, F, L, or O for anything else
    std::string name;
    std::string path;  // relative to the mount point
    int64_t size = 0;
    std::string target;
};

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
    ok = hex.size() % 2 == 0;
    for (size_t i = 0; ok && i < hex.size(); i += 2) {
        const std::string pair = hex.substr(i, 2);
        ok = pair.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
        if (ok)
            bytes.push_back(static_cast<char>(std::stoi(pair, nullptr, 16)));
    }
    return bytes;
}

std::string BaseName(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string Parent(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string Group(const std::string& path) {
    return path.substr(0, path.find('/'));
}

const char* KindName(char kind) {
    switch (kind) {
        case 'D':
            return "folder";
        case 'L':
            return "link";
        case 'O':
            return "special file";
        default:
            return "file";
    }
}

// Every name below root, depth first; links are not followed.
void Walk(const std::string& root, const std::string& relative, std::vector<Node>& nodes) {
    const std::string folder = relative.empty() ? root : root + "/" + relative;
    DIR* dir = ::opendir(folder.c_str());
    if (dir == nullptr)
        return;
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    for (const auto& name : names) {
        Node node;
        node.name = name;
        node.path = relative.empty() ? name : relative + "/" + name;
        const std::string full = root + "/" + node.path;
        struct stat info {};
        if (::lstat(full.c_str(), &info) != 0) {
            node.kind = 'O';
        } else if (S_ISDIR(info.st_mode)) {
            node.kind = 'D';
        } else if (S_ISLNK(info.st_mode)) {
            node.kind = 'L';
            std::array<char, 4096> target{};
            const ssize_t n = ::readlink(full.c_str(), target.data(), target.size());
            if (n >= 0)
                node.target.assign(target.data(), static_cast<size_t>(n));
        } else if (S_ISREG(info.st_mode)) {
            node.kind = 'F';
            node.size = info.st_size;
        } else {
            node.kind = 'O';
        }
        nodes.push_back(node);
        if (node.kind == 'D')
            Walk(root, node.path, nodes);
    }
}

// The sha256sum program's digest of a file; empty when it could not be run.
std::string Sha256Of(const std::string& path) {
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::string program = "sha256sum";
    std::string file = path;
    char* argv[] = {program.data(), file.data(), nullptr};
    pid_t child = 0;
    const int failed = ::posix_spawnp(&child, "sha256sum", &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    std::string text;
    char chunk[256];
    for (ssize_t n; failed == 0 && (n = ::read(out[0], chunk, sizeof chunk)) > 0;)
        text.append(chunk, static_cast<size_t>(n));
    ::close(out[0]);
    int status = 0;
    if (failed != 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0 || text.size() < 64)
        return {};
    return text.substr(0, 64);
}

class Comparer {
  public:
    Comparer(const std::string& root, TreeComparison& result) : root_(root), result_(result) {}

    void Problem(const std::string& group, std::string text) {
        result_.problems.push_back({group, std::move(text)});
    }

    // Kind, size, content and link target of the expected entry against what the kernel shows
    // at node; shown is the path named in problems.
    void Content(const TreeEntry& expected, const Node& node, const std::string& group) {
        const std::string& shown = node.path;
        const char wanted = expected.kind == 'S' ? 'F' : expected.kind;
        if (node.kind != wanted) {
            Problem(group,
                    shown + ": a " + KindName(node.kind) + ", should be a " + KindName(wanted));
            return;
        }
        if (wanted == 'L') {
            if (node.target != expected.target)
                Problem(group, shown + ": points to \"" + node.target + "\", should point to \"" +
                                   expected.target + "\"");
            return;
        }
        if (wanted != 'F')
            return;
        if (node.size != expected.size) {
            Problem(group, shown + ": " + std::to_string(node.size) + " bytes, should be " +
                               std::to_string(expected.size));
            return;
        }
        const std::string full = root_ + "/" + node.path;
        if (expected.kind == 'F') {
            const std::string& hash = Hash(node.path);
            if (hash != expected.hash)
                Problem(group, shown + ": content differs (sha256 " +
                                   (hash.empty() ? std::string("not computed") : hash) + ")");
            return;
        }
        const int fd = ::open(full.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            Problem(group, shown + ": cannot be opened (" + std::strerror(errno) + ")");
            return;
        }
        for (const auto& sample : expected.samples) {
            std::string bytes(sample.bytes.size(), '\0');
            const ssize_t n = ::pread(fd, bytes.data(), bytes.size(), sample.offset);
            if (n != static_cast<ssize_t>(bytes.size()) || bytes != sample.bytes)
                Problem(group, shown + ": the " + std::to_string(sample.bytes.size()) +
                                   " bytes at offset " + std::to_string(sample.offset) +
                                   (n < 0 ? " cannot be read" : " differ"));
        }
        ::close(fd);
    }

    // The digest of a file below the mount point, computed once.
    const std::string& Hash(const std::string& path) {
        auto at = hashes_.find(path);
        if (at == hashes_.end())
            at = hashes_.emplace(path, Sha256Of(root_ + "/" + path)).first;
        return at->second;
    }

  private:
    std::string root_;
    TreeComparison& result_;
    std::map<std::string, std::string> hashes_;
};

void AddGroup(TreeComparison& result, const std::string& group) {
    if (std::find(result.groups.begin(), result.groups.end(), group) == result.groups.end())
        result.groups.push_back(group);
}

// Bytes a name cut for Joliet keeps at least from its start.
constexpr int kCutNameKeeps = 32;

int CommonPrefix(const std::string& a, const std::string& b) {
    const auto end = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return static_cast<int>(end.first - a.begin());
}

// Matches the Joliet folder actual (a path below the mount point) with the listed folder
// expected, and so on below them.
class JolietMatcher {
  public:
    JolietMatcher(const std::vector<TreeEntry>& expected, const std::vector<Node>& nodes,
                  Comparer& comparer, TreeComparison& result)
        : comparer_(comparer), result_(result) {
        for (const auto& entry : expected) {
            if (entry.kind != 'L')
                listed_[Parent(entry.path)].push_back(&entry);
        }
        for (const auto& node : nodes)
            shown_[Parent(node.path)].push_back(&node);
    }

    void Folder(const std::string& expected, const std::string& actual, const std::string& group) {
        const auto& listed = listed_[expected];
        const auto& shown = shown_[actual];
        std::map<std::string, int> seen;
        for (const Node* node : shown) {
            if (++seen[node->name] == 2)
                Problem(group, node->name, node->path + ": the name appears twice in its folder");
        }
        std::vector<bool> used(shown.size(), false);
        std::vector<const TreeEntry*> renamed;
        for (const TreeEntry* entry : listed) {
            const std::string name = BaseName(entry->path);
            if (!JolietKeepsName(name, entry->kind == 'D')) {
                renamed.push_back(entry);
                continue;
            }
            const auto at = std::find_if(shown.begin(), shown.end(),
                                         [&](const Node* node) { return node->name == name; });
            if (at == shown.end()) {
                Problem(group, name,
                        "missing " + std::string(KindName(entry->kind)) + " " + entry->path);
                continue;
            }
            used[static_cast<size_t>(at - shown.begin())] = true;
            Pair(*entry, **at, group.empty() ? name : group);
        }
        // Names Joliet cannot keep: each must have one counterpart of the same kind among the
        // names left, preferably of the same content, then with the longest common beginning
        // (names cut to the same length and then made unique differ only at their end).
        for (const TreeEntry* entry : renamed) {
            const std::string name = BaseName(entry->path);
            const char kind = entry->kind == 'D' ? 'D' : 'F';
            int best = -1;
            int bestScore = -1;
            for (size_t i = 0; i < shown.size(); ++i) {
                if (used[i] || shown[i]->kind != kind)
                    continue;
                int score = CommonPrefix(shown[i]->name, name);
                if (kind == 'F' && shown[i]->size == entry->size) {
                    score += 10000;
                    if (entry->kind == 'F' && comparer_.Hash(shown[i]->path) == entry->hash)
                        score += 10000;
                }
                if (score > bestScore) {
                    best = static_cast<int>(i);
                    bestScore = score;
                }
            }
            if (best < 0) {
                Problem(group, name,
                        "missing " + std::string(KindName(entry->kind)) + " " + entry->path +
                            " (no shortened name for it)");
                continue;
            }
            const Node& node = *shown[static_cast<size_t>(best)];
            used[static_cast<size_t>(best)] = true;
            const int units = JolietNameUnits(node.name, node.kind == 'D');
            if (units > kJolietNameUnits)
                Problem(group, name,
                        entry->path + " appears as " + node.path + ", " + std::to_string(units) +
                            " characters long");
            // A name cut for its length keeps its beginning, so the user still recognises it.
            if (JolietNameUnits(name, entry->kind == 'D') > kJolietNameUnits &&
                CommonPrefix(node.name, name) < kCutNameKeeps)
                Problem(group, name, entry->path + " appears as " + node.path);
            Pair(*entry, node, group.empty() ? name : group);
        }
        for (size_t i = 0; i < shown.size(); ++i) {
            if (!used[i])
                Problem(group, shown[i]->name,
                        "extra " + std::string(KindName(shown[i]->kind)) + " " + shown[i]->path);
        }
    }

  private:
    void Problem(const std::string& group, const std::string& name, std::string text) {
        const std::string& where = group.empty() ? name : group;
        AddGroup(result_, where);
        comparer_.Problem(where, std::move(text));
    }

    void Pair(const TreeEntry& entry, const Node& node, const std::string& group) {
        AddGroup(result_, group);
        comparer_.Content(entry, node, group);
        if (entry.kind == 'D' && node.kind == 'D')
            Folder(entry.path, node.path, group);
    }

    Comparer& comparer_;
    TreeComparison& result_;
    std::map<std::string, std::vector<const TreeEntry*>> listed_;
    std::map<std::string, std::vector<const Node*>> shown_;
};

// "12 folders, 30 files, 3 links" below the group.
std::string Counts(const std::vector<TreeEntry>& expected, const std::string& group,
                   bool withLinks) {
    int folders = 0, files = 0, links = 0;
    for (const auto& entry : expected) {
        if (Group(entry.path) != group)
            continue;
        (entry.kind == 'D' ? folders : entry.kind == 'L' ? links : files)++;
    }
    std::string text = std::to_string(folders) + " folders, " + std::to_string(files) + " files";
    if (withLinks)
        text += ", " + std::to_string(links) + " links";
    return text;
}

void ReportComparison(Report& report, const std::string& prefix, const TreeComparison& result,
                      const std::vector<TreeEntry>& expected, bool withLinks) {
    for (const auto& group : result.groups) {
        std::vector<std::string> texts;
        for (const auto& problem : result.problems) {
            if (problem.group == group)
                texts.push_back(problem.text);
        }
        std::string detail = Counts(expected, group, withLinks) + " listed";
        if (!texts.empty()) {
            detail += "; " + std::to_string(texts.size()) + " problems:";
            for (size_t i = 0; i < texts.size() && i < 4; ++i)
                detail += " [" + texts[i] + "]";
            if (texts.size() > 4)
                detail += " …";
        }
        report.Check(prefix + "." + group, texts.empty(), detail);
    }
}

// The volume name in the Joliet descriptor (UCS-2, big-endian, padded with spaces); empty when
// the device has none.
std::string JolietVolumeName(const std::string& device) {
    const int fd = ::open(device.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {};
    std::string name;
    std::array<unsigned char, 2048> sector{};
    for (int lba = 16; lba < 32; ++lba) {
        if (::pread(fd, sector.data(), sector.size(), off_t{lba} * 2048) != 2048 ||
            std::memcmp(sector.data() + 1, "CD001", 5) != 0 || sector[0] == 255)
            break;
        // A supplementary descriptor with one of the three Joliet escape sequences.
        if (sector[0] != 2 || sector[88] != 0x25 || sector[89] != 0x2F)
            continue;
        std::u16string units;
        for (size_t i = 40; i < 72; i += 2)
            units.push_back(static_cast<char16_t>(sector[i] << 8 | sector[i + 1]));
        while (!units.empty() && units.back() == u' ')
            units.pop_back();
        for (size_t i = 0; i < units.size(); ++i) {
            uint32_t c = units[i];
            if (c >= 0xD800 && c < 0xDC00 && i + 1 < units.size())
                c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
            if (c < 0x80) {
                name.push_back(static_cast<char>(c));
            } else if (c < 0x800) {
                name.push_back(static_cast<char>(0xC0 | c >> 6));
                name.push_back(static_cast<char>(0x80 | (c & 0x3F)));
            } else if (c < 0x10000) {
                name.push_back(static_cast<char>(0xE0 | c >> 12));
                name.push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
                name.push_back(static_cast<char>(0x80 | (c & 0x3F)));
            } else {
                name.push_back(static_cast<char>(0xF0 | c >> 18));
                name.push_back(static_cast<char>(0x80 | (c >> 12 & 0x3F)));
                name.push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
                name.push_back(static_cast<char>(0x80 | (c & 0x3F)));
            }
        }
        break;
    }
    ::close(fd);
    return name;
}

}  // namespace

std::vector<TreeEntry> ParseTreeListing(std::string_view text, std::string& error) {
    std::vector<TreeEntry> entries;
    int number = 0;
    for (const auto& line : Split(text, '\n')) {
        ++number;
        if (line.empty() || line[0] == '#' || line[0] == 'V')
            continue;
        const auto fields = Split(line, '\t');
        TreeEntry entry;
        entry.kind = fields[0].size() == 1 ? fields[0][0] : '?';
        bool ok = fields.size() >= 2 && !fields[1].empty();
        if (ok)
            entry.path = fields[1];
        switch (entry.kind) {
            case 'D':
                ok = ok && fields.size() == 2;
                break;
            case 'F':
                ok = ok && fields.size() == 4 && ParseNumber(fields[2], entry.size) &&
                     fields[3].size() == 64;
                if (ok)
                    entry.hash = fields[3];
                break;
            case 'L':
                ok = ok && fields.size() == 3;
                if (ok)
                    entry.target = fields[2];
                break;
            case 'S':
                ok = ok && fields.size() == 4 && ParseNumber(fields[2], entry.size);
                for (const auto& sample : ok ? Split(fields[3], ',') : std::vector<std::string>{}) {
                    const size_t colon = sample.find(':');
                    TreeSample parsed;
                    ok = ok && colon != std::string::npos &&
                         ParseNumber(sample.substr(0, colon), parsed.offset);
                    if (ok)
                        parsed.bytes = FromHex(sample.substr(colon + 1), ok);
                    if (ok)
                        entry.samples.push_back(parsed);
                }
                break;
            default:
                ok = false;
        }
        if (!ok) {
            error = "line " + std::to_string(number) + " cannot be read";
            return {};
        }
        entries.push_back(entry);
    }
    return entries;
}

int Utf16Units(std::string_view utf8) {
    int units = 0;
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) != 0x80)
            ++units;
        if ((byte & 0xF8) == 0xF0)  // four bytes: a surrogate pair
            ++units;
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
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || std::strchr("*/:;?\\", c) != nullptr)
            return false;
    }
    return true;
}

TreeComparison CompareRockRidge(const std::vector<TreeEntry>& expected, const std::string& root) {
    TreeComparison result;
    std::vector<Node> nodes;
    Walk(root, "", nodes);
    std::map<std::string, const Node*> shown;
    for (const auto& node : nodes)
        shown[node.path] = &node;
    Comparer comparer(root, result);
    std::set<std::string> listed;
    for (const auto& entry : expected) {
        const std::string group = Group(entry.path);
        AddGroup(result, group);
        listed.insert(entry.path);
        const auto at = shown.find(entry.path);
        if (at == shown.end())
            comparer.Problem(
                group, "missing " + std::string(KindName(entry.kind == 'S' ? 'F' : entry.kind)) +
                           " " + entry.path);
        else
            comparer.Content(entry, *at->second, group);
    }
    for (const auto& node : nodes) {
        if (listed.count(node.path) == 0) {
            AddGroup(result, Group(node.path));
            comparer.Problem(Group(node.path),
                             "extra " + std::string(KindName(node.kind)) + " " + node.path);
        }
    }
    return result;
}

TreeComparison CompareJoliet(const std::vector<TreeEntry>& expected, const std::string& root) {
    TreeComparison result;
    std::vector<Node> nodes;
    Walk(root, "", nodes);
    Comparer comparer(root, result);
    JolietMatcher matcher(expected, nodes, comparer, result);
    matcher.Folder("", "", "");
    return result;
}

void CheckMountedTrees(Report& report, const std::string& data) {
    for (const std::string drive : {"sr0", "sr1"}) {
        std::ifstream in(data + "/tree-" + drive + ".manifest", std::ios::binary);
        if (!in)
            continue;
        std::stringstream text;
        text << in.rdbuf();
        std::string error;
        const auto expected = ParseTreeListing(text.str(), error);
        if (!report.Check(drive + ".listing", error.empty() && !expected.empty(),
                          error.empty() ? std::to_string(expected.size()) + " entries" : error))
            continue;

        const std::string device = "/dev/" + drive;
        // The volume name, when the listing names one ("V<tab>name").
        for (const auto& line : Split(text.str(), '\n')) {
            if (line.starts_with("V\t")) {
                const std::string wanted = line.substr(2);
                const std::string shown = JolietVolumeName(device);
                report.Check(drive + ".joliet.volume-name", shown == wanted,
                             "\"" + shown + "\", should be \"" + wanted + "\"");
            }
        }

        const std::string point = "/mnt/" + drive;
        ::mkdir("/mnt", 0755);
        ::mkdir(point.c_str(), 0755);
        struct View {
            const char* name;
            const char* options;
        };
        for (const View view : {View{"rock", ""}, View{"joliet", "norock"}}) {
            const std::string prefix = drive + "." + view.name;
            const bool mounted =
                ::mount(device.c_str(), point.c_str(), "iso9660", MS_RDONLY, view.options) == 0;
            if (!report.Check(prefix + ".mount", mounted,
                              std::string("iso9660 -o ro") + (*view.options != '\0' ? "," : "") +
                                  view.options +
                                  (mounted ? "" : std::string(": ") + std::strerror(errno))))
                continue;
            const bool rock = std::string_view(view.name) == "rock";
            const TreeComparison result =
                rock ? CompareRockRidge(expected, point) : CompareJoliet(expected, point);
            ReportComparison(report, prefix, result, expected, rock);
            ::umount(point.c_str());
        }
    }
}

}  // namespace plattmix::testbed
