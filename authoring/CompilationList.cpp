#include "CompilationList.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "FileIo.h"
#include "Utf16.h"
#include "modLanguage.h"
#include "modScan.h"

namespace plattmix::authoring {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

bool IsFolder(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool Exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

std::string Utf16LeBytes(const std::string& utf8) {
    const std::u16string units = shell::Utf8ToUtf16(utf8);
    std::string bytes;
    bytes.reserve(2 + 2 * units.size());
    bytes += "\xFF\xFE";
    for (const char16_t unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

bool WriteAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

// UnicodeFile_Read pads its text with one blank for every two bytes of the file. A list file
// written here ends in CR LF, so the padding forms a last piece of its own; a last line
// without CR LF would carry it as part of its path, so exactly that many blanks are taken off.
void DropReadPadding(std::string& text, uint64_t fileBytes) {
    uint64_t padding = fileBytes / 2;
    while (padding > 0 && !text.empty() && text.back() == ' ') {
        text.pop_back();
        --padding;
    }
}

}  // namespace

CompilationEntry MeasureEntry(const std::string& path, const ScanHooks& hooks) {
    CompilationEntry entry{path, 0, IsFolder(path)};
    if (entry.folder) {
        ScanState state;
        state.ScanTotal = 0;
        std::string walked = path;
        OrdnerGroesse(walked, state, hooks);
        entry.bytes = state.ScanTotal;
    } else {
        entry.bytes = DateiGroesse(path);
    }
    return entry;
}

std::string ListFileText(const std::vector<std::string>& paths) {
    std::string text;
    for (const auto& path : paths) {
        text += path;
        text += kLineEnd;
    }
    return text;
}

bool UnicodeFile_Write_WithBOM(const std::string& fileName, const std::string& text) {
    const std::string bytes = Utf16LeBytes(text);
    const int fd = ::open(fileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    const bool written = WriteAll(fd, bytes);
    const bool closed = ::close(fd) == 0;
    return written && closed;
}

std::vector<std::string> ReadListFileLines(const std::string& fileName) {
    const auto size = shell::RegularFileSize(fileName);
    std::string text = shell::UnicodeFile_Read(fileName);
    DropReadPadding(text, size.value_or(0));

    std::vector<std::string> lines;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(kLineEnd, start);
        if (end == std::string::npos)
            end = text.size();
        if (end > start)
            lines.push_back(text.substr(start, end - start));
        start = end + kLineEnd.size();
    }
    return lines;
}

std::vector<std::string> ReadListFile(const std::string& fileName) {
    std::vector<std::string> paths;
    for (auto& line : ReadListFileLines(fileName)) {
        if (Exists(line))
            paths.push_back(std::move(line));
    }
    return paths;
}

int64_t CompilationBytes(const std::vector<CompilationEntry>& entries) {
    int64_t sum = 0;
    for (const auto& entry : entries)
        sum += entry.bytes;
    return sum;
}

}  // namespace plattmix::authoring
