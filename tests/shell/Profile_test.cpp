// The profile functions against the behaviour of the Windows private-profile functions they
// stand in for.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ShellFiles.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"
#include "modProfile.h"

namespace plattmix::shell {
namespace {

using modProfile::GetPrivateProfileSection;
using modProfile::GetPrivateProfileString;
using modProfile::WritePrivateProfileSection;
using modProfile::WritePrivateProfileString;
using test::Utf16Le;
using test::WriteBytes;
using Lines = std::vector<std::string>;

class ProfileTest : public ::testing::Test {
  protected:
    std::string FileWith(std::string_view bytes, const std::string& name = "test.ini") {
        const auto path = folder_ / name;
        WriteBytes(path, bytes);
        return path.string();
    }
    std::string Get(const std::string& path, const std::string& section, const std::string& key,
                    const std::string& def = "<none>", size_t buffer = 1024) {
        return GetPrivateProfileString(section, key, def, path, buffer);
    }
    std::filesystem::path folder_ = test::ScratchFolder("shell");
};

TEST_F(ProfileTest, ReadsFindNamesLikeWindowsAndCutToTheBuffer) {
    const auto path = FileWith(
        "[Diskolo]\n  Unload  =  1  \nText1=\"  Track  \"\nsingle='x y'\nhalf=\"open\n"
        "mixed=\"a'\nempty=\"\"\n[\xC3\x84nderung]\n\xC3\x96l=ja\n"
        "[A]\nno key line\n; comment=1\nk=first\nk=second\nlong=" +
        std::string(2000, 'x') +
        "\nemoji=a\xF0\x9F\x98\x80z\n[B]\nk=b\n[a]\nk=third\nonly=later\n");
    const struct {
        const char *section, *key, *def;
        size_t buffer;
        std::string expected;
    } cases[] = {
        {"  diskolo ", " UNLOAD  ", "", 1024, "1"},
        {"Diskolo", "Text1", "", 1024, "  Track  "},
        {"Diskolo", "single", "", 1024, "x y"},
        {"Diskolo", "half", "", 1024, "\"open"},
        {"Diskolo", "mixed", "", 1024, "\"a'"},
        {"Diskolo", "empty", "-", 1024, ""},
        {"\xC3\xA4nderung", "\xC3\xB6L", "", 1024, "ja"},  // Ä/ä, Ö/ö
        {"C", "key", "<none>", 1024, "<none>"},
        {"A", "no key line", "<none>", 1024, "<none>"},
        {"A", "other", "trailing   ", 1024, "trailing"},
        {"A", "k", "", 1024, "first"},
        {"a", "only", "<none>", 1024, "<none>"},  // the first section of a name wins
        {"B", "k", "", 1024, "b"},
        {"A", "long", "", 800, std::string(799, 'x')},
        {"A", "long", "", 1, ""},
        {"A", "long", "", 0, ""},
        {"A", "missing", "abcdef", 4, "abc"},
        // A character outside the BMP takes two places and is never split.
        {"A", "emoji", "", 3, "a"},
        {"A", "emoji", "", 4, "a\xF0\x9F\x98\x80"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Get(path, c.section, c.key, c.def, c.buffer), c.expected)
            << c.section << '/' << c.key << '/' << c.buffer;
    EXPECT_EQ(Get((folder_ / "missing.ini").string(), "A", "key"), "<none>");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "missing.ini"));
}

TEST_F(ProfileTest, SectionReadGivesEveryLineAsStored) {
    const auto path = FileWith(
        "[ComboBox1]\r\n/home/u/Musik/\r\n\r\n  key = value  \r\n; a comment\r\n"
        "/home/u/a = b/\r\n[Next]\r\nother=1\r\n");
    EXPECT_EQ(GetPrivateProfileSection("combobox1", path, 32767),
              (Lines{"/home/u/Musik/", "key = value", "/home/u/a = b/"}));
    EXPECT_TRUE(GetPrivateProfileSection("None", path, 32767).empty());
    // Eleven places: nine characters, their NUL and the final NUL.
    EXPECT_EQ(GetPrivateProfileSection("ComboBox1", path, 11), (Lines{"/home/u/M"}));
}

// A write keeps the file's encoding and line ends; a new file is 8-bit with CR LF.
TEST_F(ProfileTest, WritesKeepTheFilesEncoding) {
    const std::string euroNote = "\xE2\x82\xAC \xF0\x9F\x8E\xB5";
    const struct {
        const char* what;
        std::string before, read, value, after;
    } cases[] = {
        {"UTF-16", test::kUtf16Mark + Utf16Le(u"[A]\r\nname=M\u00FCller\r\n"), "M\xC3\xBCller", "1",
         test::kUtf16Mark + Utf16Le(u"[A]\r\nname=M\u00FCller\r\nnew=1\r\n")},
        // A file of just the mark gets its first section, characters outside the BMP as pairs.
        {"mark only", test::kUtf16Mark, "<none>", euroNote,
         test::kUtf16Mark + Utf16Le(u"[A]\r\nnew=\u20AC \U0001F3B5\r\n")},
        {"UTF-8", "[A]\nname=\xC3\xA4\n", "\xC3\xA4", "\xC3\xB6",
         "[A]\nname=\xC3\xA4\nnew=\xC3\xB6\n"},
        // Latin-1 bytes that are not UTF-8 are read as Windows-1252, and the file stays so.
        {"Windows-1252", "[A]\r\nname=M\xFCller \x80\r\n", "M\xC3\xBCller \xE2\x82\xAC", "\xC3\x9F",
         "[A]\r\nname=M\xFCller \x80\r\nnew=\xDF\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto path = FileWith(c.before);
        EXPECT_EQ(Get(path, "A", "name"), c.read);
        ASSERT_TRUE(WritePrivateProfileString("A", "new", c.value, path));
        EXPECT_EQ(test::WholeFile(path), c.after);
        EXPECT_EQ(Get(path, "A", "new"), c.value);
    }
    const auto created = (folder_ / "created.ini").string();
    ASSERT_TRUE(WritePrivateProfileString("A", "k", "v", created));
    EXPECT_EQ(test::WholeFile(created), "[A]\r\nk=v\r\n");
}

TEST_F(ProfileTest, WritesChangeOnlyWhatTheyName) {
    const auto path =
        FileWith("; top\n[A]\n  k = old ; not a comment\nx=1\n\n[B]\ny=2\n[b]\ny=3\n");
    ASSERT_TRUE(WritePrivateProfileString("a", "K", "new", path));
    ASSERT_TRUE(WritePrivateProfileString("A", "added", "3", path));
    ASSERT_TRUE(WritePrivateProfileString("C", "z", "4", path));
    EXPECT_EQ(test::WholeFile(path),
              "; top\n[A]\nk=new\nx=1\nadded=3\n\n[B]\ny=2\n[b]\ny=3\n[C]\nz=4\n");
    ASSERT_TRUE(WritePrivateProfileString("A", "x", std::nullopt, path));
    ASSERT_TRUE(WritePrivateProfileString("B", std::nullopt, std::nullopt, path));  // every copy
    ASSERT_TRUE(WritePrivateProfileString("Gone", "x", std::nullopt, path));
    EXPECT_EQ(test::WholeFile(path), "; top\n[A]\nk=new\nadded=3\n\n[C]\nz=4\n");
}

TEST_F(ProfileTest, SectionWriteReplacesTheSection) {
    const auto path = FileWith("[List]\nold1\nold2=x\n; note\n\n[Keep]\nk=1\n");
    ASSERT_TRUE(WritePrivateProfileSection("LIST", {"/new/1/", "a=b", "", "after empty"}, path));
    EXPECT_EQ(test::WholeFile(path), "[List]\n/new/1/\na=b\n\n[Keep]\nk=1\n");
    ASSERT_TRUE(WritePrivateProfileSection("Other", {"line"}, path));
    EXPECT_EQ(GetPrivateProfileSection("Other", path, 100), (Lines{"line"}));
    EXPECT_EQ(Get(path, "Keep", "k"), "1");
}

// A damaged file gives what can be read from it, takes writes and keeps the rest as it was.
TEST_F(ProfileTest, DamagedFilesReadWhatCanBeReadAndTakeWrites) {
    const std::string junk = test::JunkBytes(10 * 1024 * 1024);
    const struct {
        const char* what;
        std::string bytes;
        const char* section;
        const char* k;  // what k gives; nothing for anything
    } cases[] = {
        // The last half character is left out.
        {"odd length", test::kUtf16Mark + Utf16Le(u"[A]\r\nk=v") + "\x41", "A", "v"},
        {"cut in a section name", "[A]\nk=v\n[B", "B", "<none>"},
        {"lone surrogate", test::kUtf16Mark + Utf16Le(u"[A]\r\nk=\xD800x\r\n"), "A",
         "\xEF\xBF\xBDx"},
        {"half a mark", "\xFE", "A", "<none>"},
        {"UTF-16 junk", test::kUtf16Mark + junk, "A", nullptr},
        {"junk before the section", junk + "\n[Tail]\nk=found\n", "Tail", "found"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto path = FileWith(c.bytes);
        if (c.k != nullptr) {
            EXPECT_EQ(Get(path, c.section, "k"), c.k);
        }
        GetPrivateProfileSection(c.section, path, 32767);
        ASSERT_TRUE(WritePrivateProfileString(c.section, "k2", "w", path));
        EXPECT_EQ(Get(path, c.section, "k2"), "w");
    }
    // The junk before the section is kept as it was.
    EXPECT_EQ(test::WholeFile(folder_ / "test.ini").substr(0, 1000), junk.substr(0, 1000));
}

TEST_F(ProfileTest, UnwritableTargetsAnswerFalse) {
    const auto folderTarget = folder_ / "is-a-folder.ini";
    std::filesystem::create_directory(folderTarget);
    EXPECT_FALSE(WritePrivateProfileString("A", "k", "v", folderTarget.string()));
    EXPECT_FALSE(WritePrivateProfileSection("A", {"x"}, folderTarget.string()));
    EXPECT_EQ(Get(folderTarget.string(), "A", "k"), "<none>");
    EXPECT_TRUE(std::filesystem::is_directory(folderTarget));

    const auto plainFile = FileWith("not a folder", "plain");
    EXPECT_FALSE(WritePrivateProfileString("A", "k", "v", plainFile + "/x.ini"));
    // The folder is the caller's to create.
    EXPECT_FALSE(WritePrivateProfileString("A", "k", "v", (folder_ / "no/x.ini").string()));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "no"));
}

TEST_F(ProfileTest, WritesLeaveNoTemporaryFilesAndKeepModeAndLinks) {
    const auto path = FileWith("[A]\nk=1\n", "real.ini");
    ::chmod(path.c_str(), 0640);
    const auto link = folder_ / "link.ini";
    std::filesystem::create_symlink(path, link);
    ASSERT_TRUE(WritePrivateProfileString("A", "k", "2", link.string()));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(Get(path, "A", "k"), "2");
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    size_t entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_)) {
        ++entries;
    }
    EXPECT_EQ(entries, 2u);
}

}  // namespace
}  // namespace plattmix::shell
