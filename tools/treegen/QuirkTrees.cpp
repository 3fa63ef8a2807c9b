#include "QuirkTrees.h"

#include <cstdio>

#include "TreeWriter.h"

namespace plattmix::treegen {

namespace fs = std::filesystem;

namespace {

// prefix, then a running letter pattern, to length characters.
std::string Stem(const std::string& prefix, size_t length) {
    std::string stem = prefix;
    for (size_t i = 0; stem.size() < length; ++i)
        stem += static_cast<char>('a' + i % 26);
    return stem;
}

// A file name of exactly length characters, ".txt" included.
std::string NameOfLength(const std::string& prefix, size_t length) {
    return Stem(prefix, length - 4) + ".txt";
}

// A name of length characters that starts with shared and goes on with tail letters.
std::string Twin(const std::string& shared, char tail, size_t length) {
    return shared + std::string(length - 4 - shared.size(), tail) + ".txt";
}

void Prefix(MadeTree& into, const MadeTree& part, const std::string& folder) {
    into.folders.push_back(folder);
    for (const auto& path : part.folders)
        into.folders.push_back(folder + "/" + path);
    for (const auto& path : part.files)
        into.files.push_back(folder + "/" + path);
    for (const auto& path : part.links)
        into.links.push_back(folder + "/" + path);
    into.bytes += part.bytes;
}

}  // namespace

MadeTree MakeDeepFolders(const fs::path& root, int depth) {
    TreeWriter tree(root);
    std::string path;
    for (int level = 1; level <= depth; ++level) {
        char name[64];
        std::snprintf(name, sizeof name, "ebene%02d_ein_recht_langer_ordnername", level);
        if (!path.empty())
            path += '/';
        path += name;
        tree.Folder(path);
        tree.File(path + "/datei.txt", 100 + level, static_cast<uint64_t>(level));
    }
    return tree.Made();
}

MadeTree MakeNonAsciiNames(const fs::path& root) {
    TreeWriter tree(root);
    tree.File("Größe.txt", 1000, 1);
    tree.File("Übermaß äöü ÄÖÜ ß.txt", 2000, 2);
    tree.File("Straße/Maßstab.dat", 3000, 3);
    tree.File("Кириллица.txt", 4000, 4);
    tree.File("папка/файл.bin", 5000, 5);
    tree.File("Musik 🎵 und Spaß 😀.txt", 6000, 6);
    tree.Folder("Ordner 📁");
    tree.File("Ordner 📁/ß😀Ж.txt", 7000, 7);
    return tree.Made();
}

MadeTree MakeEmptyFolders(const fs::path& root) {
    TreeWriter tree(root);
    tree.File("inhalt.txt", 500, 1);
    tree.Folder("leer");
    tree.File("voll/datei.txt", 700, 2);
    tree.Folder("voll/leer darin");
    tree.Folder("a/b/c");
    return tree.Made();
}

LongNames LongNameSet() {
    LongNames names;
    names.len64 = NameOfLength("n64_", 64);
    names.len65 = NameOfLength("n65_", 65);
    names.len103 = NameOfLength("n103_", 103);
    names.len104 = NameOfLength("n104_", 104);
    names.len150 = NameOfLength("n150_", 150);
    names.twin80a = Twin(Stem("twin80_", 64), 'A', 80);
    names.twin80b = Twin(Stem("twin80_", 64), 'B', 80);
    names.twin120a = Twin(Stem("twin120_", 110), 'A', 120);
    names.twin120b = Twin(Stem("twin120_", 110), 'B', 120);
    names.folder120 = Stem("ordner120_", 120);
    return names;
}

MadeTree MakeLongNames(const fs::path& root) {
    TreeWriter tree(root);
    const LongNames names = LongNameSet();
    uint64_t seed = 1;
    for (const std::string* name :
         {&names.len64, &names.len65, &names.len103, &names.len104, &names.len150, &names.twin80a,
          &names.twin80b, &names.twin120a, &names.twin120b}) {
        tree.File(*name, static_cast<int64_t>(100 * seed), seed);
        ++seed;
    }
    tree.File(names.folder120 + "/inhalt.txt", 321, seed);
    return tree.Made();
}

MadeTree MakeSymbolicLinks(const fs::path& root) {
    TreeWriter tree(root);
    tree.File("ziel.txt", 1234, 1);
    tree.File("ordner/innen.txt", 567, 2);
    tree.Link("zur-datei", "ziel.txt");
    tree.Link("zum-ordner", "ordner");
    tree.Link("zur-verknuepfung", "zur-datei");
    tree.Link("ordner/nach-oben", "../ziel.txt");
    tree.Link("absolut", fs::absolute(root / "ziel.txt").string());
    tree.Link("ins-leere", "gibt/es/nicht");
    return tree.Made();
}

MadeTree MakeAllQuirks(const fs::path& root) {
    MadeTree all;
    Prefix(all, MakeDeepFolders(root / "tief"), "tief");
    Prefix(all, MakeNonAsciiNames(root / "umlaute"), "umlaute");
    Prefix(all, MakeEmptyFolders(root / "leer"), "leer");
    Prefix(all, MakeLongNames(root / "lang"), "lang");
    Prefix(all, MakeSymbolicLinks(root / "links"), "links");
    return all;
}

}  // namespace plattmix::treegen
