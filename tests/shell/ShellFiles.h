// Small file helpers for the shell tests: raw bytes out, UTF-16LE files made by hand (not by
// the code under test), and an environment variable set for one test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace plattmix::test {

inline void WriteBytes(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// UTF-16LE bytes of text, without a mark.
inline std::string Utf16Le(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

inline const std::string kUtf16Mark = "\xFF\xFE";

// Sets (or with nothing, removes) an environment variable until the end of the scope.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        Set(value);
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;
    ~ScopedEnv() { Set(old_); }

  private:
    void Set(const std::optional<std::string>& value) {
        if (value)
            ::setenv(name_, value->c_str(), 1);
        else
            ::unsetenv(name_);
    }
    const char* name_;
    std::optional<std::string> old_;
};

}  // namespace plattmix::test
