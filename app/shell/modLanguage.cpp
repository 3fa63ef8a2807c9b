#include "modLanguage.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "FileIo.h"
#include "Utf16.h"
#include "modProfile.h"

namespace plattmix::shell {

namespace {

constexpr const char* kDefaultLanguage = "default";
constexpr const char* kCommonSection = "Common";
constexpr size_t kTranslationBufferChars = 800;
constexpr size_t kLanguageNameBufferChars = 1024;

bool IsGerman(const std::string& name) {
    return name.empty() || name == kDefaultLanguage;
}

// The buffer the file is read into: as many UTF-16 characters as the file has bytes, all
// blanks, the file's bytes laid over its start; then as many characters as bytes were read.
std::u16string BlankBufferWithBytes(const std::string& bytes, size_t fileSize) {
    std::string buffer(fileSize * 2, '\0');
    for (size_t i = 0; i < buffer.size(); i += 2) {
        buffer[i] = ' ';
    }
    buffer.replace(0, bytes.size(), bytes);
    std::u16string text(std::min(bytes.size(), fileSize), u' ');
    for (size_t i = 0; i < text.size(); ++i) {
        const auto low = static_cast<unsigned char>(buffer[2 * i]);
        const auto high = static_cast<unsigned char>(buffer[2 * i + 1]);
        text[i] = static_cast<char16_t>((high << 8) | low);
    }
    return text;
}

// One read of at most size bytes, as the platform's single read gives them.
std::optional<std::string> ReadUpTo(const std::string& path, size_t size) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    std::string bytes(size, '\0');
    size_t done = 0;
    while (done < size) {
        const ssize_t got = ::read(fd, bytes.data() + done, size - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        done += static_cast<size_t>(got);
    }
    ::close(fd);
    bytes.resize(done);
    return bytes;
}

}  // namespace

LanguageTexts::LanguageTexts(std::string languagesFolder, std::string name)
    : name_(std::move(name)) {
    if (IsGerman(name_)) {
        name_ = kDefaultLanguage;
        return;
    }
    file_ = std::move(languagesFolder) + name_ + ".lng";
    if (!RegularFileExists(file_)) {
        name_ = kDefaultLanguage;
        file_.clear();
    }
}

std::string LanguageTexts::LangText(const std::string& key, const std::string& defaultValue) const {
    const std::string& fallback = defaultValue.empty() ? key : defaultValue;
    if (IsGerman(name_)) {
        return fallback;
    }
    std::string translation = modProfile::GetPrivateProfileString(kCommonSection, key, "", file_,
                                                                  kTranslationBufferChars);
    return translation.empty() ? fallback : translation;
}

std::string ReadLanguageName(const std::string& suiteOptionsFile) {
    return modProfile::GetPrivateProfileString("Pfad1", "Languages", "", suiteOptionsFile,
                                               kLanguageNameBufferChars);
}

std::string UnicodeFile_Read(const std::string& path) {
    try {
        const auto size = RegularFileSize(path);
        if (!size || *size == 0) {
            return {};
        }
        const auto bytes = ReadUpTo(path, static_cast<size_t>(*size));
        if (!bytes) {
            return {};
        }
        std::u16string text = BlankBufferWithBytes(*bytes, static_cast<size_t>(*size));
        // The mark: two characters when the file was read byte by byte, else the first one.
        const bool byteMark = text.size() >= 2 && text[0] == 0x00FF && text[1] == 0x00FE;
        text.erase(0, byteMark ? 2 : 1);
        return Utf16ToUtf8(text);
    } catch (const std::exception&) {
        return {};
    }
}

bool UnicodeFile_Create(const std::string& path, const std::string& /*text*/) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        return false;
    }
    const char mark[2] = {'\xFF', '\xFE'};
    ssize_t written = -1;
    do {
        written = ::write(fd, mark, sizeof mark);
    } while (written < 0 && errno == EINTR);
    const bool closed = ::close(fd) == 0;
    return written == static_cast<ssize_t>(sizeof mark) && closed;
}

}  // namespace plattmix::shell
