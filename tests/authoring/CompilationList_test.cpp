#include "CompilationList.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ScanTree.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using test::MakeFile;

void WriteBytes(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// UTF-16LE bytes of plain ASCII text.
std::string AsciiUtf16(const std::string& text) {
    std::string bytes;
    for (const char c : text)
        bytes += {c, '\0'};
    return bytes;
}

class CompilationListTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("authoring");
    fs::path list = root / "Diskolo.txt";
};

// Folders and files by their size are the command line's compilation test; here what it does not
// meet.
TEST_F(CompilationListTest, MeasuresAChosenLinkAsItsFolderAndCountsWhatCannotBeRead) {
    MakeFile(root / "tree" / "a", 1000);
    MakeFile(root / "tree" / "sub" / "b", 24);
    fs::create_directory_symlink(root / "tree", root / "link-to-tree");

    // A link the user chose leads to its folder; links below it would not be followed.
    const auto linked = MeasureEntry((root / "link-to-tree").string(), {});
    EXPECT_EQ(linked.path, (root / "link-to-tree").string());  // no slash added
    EXPECT_TRUE(linked.folder);
    EXPECT_EQ(linked.bytes, 1024);
    // Something that cannot be opened is still a row, with -1; Escape leaves a folder at 0.
    const auto missing = MeasureEntry((root / "gone").string(), {});
    EXPECT_EQ(missing.bytes, -1);
    EXPECT_EQ(MeasureEntry((root / "tree").string(), {[] { return true; }, {}}).bytes, 0);
    // The sum is that of the sizes the rows show, -1 included.
    EXPECT_EQ(CompilationBytes({linked, missing}), 1024 - 1);
}

TEST_F(CompilationListTest, WritesTheMarkAndUtf16WithSurrogatePairsAndNothingElse) {
    EXPECT_EQ(ListFileText({"/a", "/b"}), "/a\r\n/b\r\n");

    ASSERT_TRUE(UnicodeFile_Write_WithBOM(list.string(), "/\xC3\xA4\r\n/\xF0\x9F\x8E\xB5"));
    EXPECT_EQ(test::WholeFile(list),
              std::string("\xFF\xFE/\0\xE4\0\r\0\n\0/\0\x3C\xD8\xB5\xDF", 16));

    // An existing, longer file is replaced, not overwritten in part.
    ASSERT_TRUE(UnicodeFile_Write_WithBOM(list.string(), "x"));
    EXPECT_EQ(test::WholeFile(list), std::string("\xFF\xFEx\0", 4));

    EXPECT_FALSE(UnicodeFile_Write_WithBOM((root / "no" / "folder.txt").string(), "x"));
    EXPECT_FALSE(UnicodeFile_Write_WithBOM(root.string(), "x"));
    EXPECT_FALSE(UnicodeFile_Write_WithBOM("/dev/full", "x"));  // the write fails
}

// Empty pieces and missing paths are dropped; a last line without CR LF counts; what holds
// nothing usable (no mark, nothing, no file) gives no paths.
TEST_F(CompilationListTest, ReadingKeepsWhatExistsEvenFromADamagedList) {
    const std::string a = (root / "a").string();
    const std::string b = (root / "b ").string();  // its blank belongs to the name
    MakeFile(a, 1);
    MakeFile(b, 1);
    const std::string missing = (root / "missing").string();
    WriteBytes(list, "\xFF\xFE" + AsciiUtf16(a + "\r\n\r\n" + missing + "\r\n" + b));
    EXPECT_EQ(ReadListFileLines(list.string()), (std::vector<std::string>{a, missing, b}));
    EXPECT_EQ(ReadListFile(list.string()), (std::vector<std::string>{a, b}));

    // UTF-16 without a mark loses its first character to the mark.
    WriteBytes(list, AsciiUtf16(a + "\r\n"));
    EXPECT_EQ(ReadListFileLines(list.string()), (std::vector<std::string>{a.substr(1)}));
    // UTF-8 without a mark is read as UTF-16: nothing in it names an existing path.
    WriteBytes(list, a + "\r\n" + a + "\r\n");
    EXPECT_TRUE(ReadListFile(list.string()).empty());
    WriteBytes(list, "\xFF\xFE");
    EXPECT_TRUE(ReadListFileLines(list.string()).empty());
    EXPECT_TRUE(ReadListFile((root / "no-such-list.txt").string()).empty());
    EXPECT_TRUE(ReadListFile(root.string()).empty());

    // Junk, a megabyte line and an odd half character read without harm; the paths among them
    // that exist are kept.
    const std::string junk = test::JunkBytes(256 * 1024);
    WriteBytes(list, junk);
    EXPECT_TRUE(ReadListFile(list.string()).empty());
    WriteBytes(list, "\xFF\xFE" + AsciiUtf16(std::string(1 << 20, 'x') + "\r\n" + a + "\r\n") +
                         junk.substr(0, 1001));
    EXPECT_EQ(ReadListFile(list.string()), std::vector<std::string>{a});
}

}  // namespace
}  // namespace plattmix::authoring
