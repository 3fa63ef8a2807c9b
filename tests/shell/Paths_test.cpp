// The path helpers and where the program's own files are.
#include <gtest/gtest.h>

#include <array>

#include "ShellFiles.h"
#include "modPaths.h"

namespace plattmix::shell {
namespace {

TEST(PathsTest, AddBackslashAndSplitPath) {
    const std::pair<const char*, const char*> slashed[] = {{"/home/u/Musik", "/home/u/Musik/"},
                                                           {"/home/u/Musik/", "/home/u/Musik/"},
                                                           {"/", "/"},
                                                           {"", "/"}};
    for (const auto& [path, expected] : slashed)
        EXPECT_EQ(AddBackslash(path), expected) << path;

    // Path, folder, name; the root and nothing have nothing to remove.
    const std::array<const char*, 3> splits[] = {
        {"/a/b.txt", "/a", "b.txt"}, {"/b.txt", "/", "b.txt"},    {"b.txt", "", "b.txt"},
        {"/a/b/", "/a/b", "b/"},     {"/", "unchanged", nullptr}, {"", "unchanged", "unchanged"}};
    for (const auto& [path, folder, name] : splits) {
        std::string gotFolder = "unchanged", gotName = "unchanged";
        SplitPath(path, gotFolder, gotName);
        EXPECT_EQ(gotFolder, folder) << path;
        if (name != nullptr) {
            EXPECT_EQ(gotName, name) << path;
        }
    }
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

// With HOME set, the settings test finds the folder under it; without, the password entry.
TEST(PathsTest, HomeFolderWithoutHomeComesFromThePasswordEntry) {
    test::ScopedEnv noHome("HOME", std::nullopt);
    const std::string fromPasswd = HomeFolder();
    EXPECT_TRUE(fromPasswd.starts_with('/'));
    EXPECT_TRUE(fromPasswd.ends_with('/'));
}

}  // namespace
}  // namespace plattmix::shell
