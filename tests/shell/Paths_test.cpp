// The path helpers and where the program's own files are.
#include <gtest/gtest.h>

#include "ShellFiles.h"
#include "modPaths.h"

namespace plattmix::shell {
namespace {

struct Split {
    std::string folder = "unchanged";
    std::string name = "unchanged";
};

Split SplitOf(const std::string& path) {
    Split split;
    SplitPath(path, split.folder, split.name);
    return split;
}

TEST(PathsTest, AddBackslashEnsuresOneTrailingSlash) {
    EXPECT_EQ(AddBackslash("/home/u/Musik"), "/home/u/Musik/");
    EXPECT_EQ(AddBackslash("/home/u/Musik/"), "/home/u/Musik/");
    EXPECT_EQ(AddBackslash("/"), "/");
    EXPECT_EQ(AddBackslash(""), "/");
}

TEST(PathsTest, SplitPathGivesFolderAndName) {
    EXPECT_EQ(SplitOf("/a/b.txt").folder, "/a");
    EXPECT_EQ(SplitOf("/a/b.txt").name, "b.txt");
    EXPECT_EQ(SplitOf("/b.txt").folder, "/");
    EXPECT_EQ(SplitOf("/b.txt").name, "b.txt");
    EXPECT_EQ(SplitOf("b.txt").folder, "");
    EXPECT_EQ(SplitOf("b.txt").name, "b.txt");
    EXPECT_EQ(SplitOf("/a/b/").folder, "/a/b");
    EXPECT_EQ(SplitOf("/a/b/").name, "b/");
    EXPECT_EQ(SplitOf("/").folder, "unchanged");  // the root has nothing to remove
    EXPECT_EQ(SplitOf("").folder, "unchanged");
    EXPECT_EQ(SplitOf("").name, "unchanged");
}

TEST(PathsTest, FilterPairs) {
    const auto one = ParseFilter("ISO Dateien|*.iso");
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].description, "ISO Dateien");
    EXPECT_EQ(one[0].pattern, "*.iso");

    const auto two = ParseFilter("Zusammenstellung|*.txt;*.lst|Alle Dateien|*.*|");
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[1].description, "Alle Dateien");
    EXPECT_EQ(two[1].pattern, "*.*");
    EXPECT_EQ(two[0].pattern, "*.txt;*.lst");

    EXPECT_TRUE(ParseFilter("").empty());
    EXPECT_EQ(ParseFilter("Nur Text|*.txt|Ohne Muster").size(), 1u);
}

TEST(PathsTest, ProgramFolders) {
    const std::string executable = ExecutableFolder();
    ASSERT_TRUE(executable.ends_with('/'));
    EXPECT_TRUE(std::filesystem::exists(executable + "plattmix_shell_tests"));

    const std::string languages = LanguagesFolder();
    EXPECT_TRUE(languages.ends_with("Languages/"));
    EXPECT_TRUE(languages == executable + "Languages/" ||
                languages.ends_with("/share/plattmix/Languages/"));
}

TEST(PathsTest, HomeFolderEndsInSlash) {
    {
        test::ScopedEnv home("HOME", "/home/hanna");
        EXPECT_EQ(HomeFolder(), "/home/hanna/");
    }
    test::ScopedEnv noHome("HOME", std::nullopt);
    const std::string fromPasswd = HomeFolder();
    EXPECT_TRUE(fromPasswd.starts_with('/'));
    EXPECT_TRUE(fromPasswd.ends_with('/'));
}

}  // namespace
}  // namespace plattmix::shell
