// The probe's way out: a control port (a serial line to the harness) that carries check
// results and requests, and the report that counts the checks.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace plattmix::testbed {

inline constexpr int kAckWaitMs = 60000;

// The guest programs' options as the harness passes them: --control, --data, --variant.
struct ProbeOptions {
    std::string control, data = "/testbed", variant;
    ProbeOptions(int argc, char** argv) {
        for (int i = 1; i + 1 < argc; i += 2) {
            const std::string_view key = argv[i];
            if (key == "--control")
                control = argv[i + 1];
            else if (key == "--data")
                data = argv[i + 1];
            else if (key == "--variant")
                variant = argv[i + 1];
        }
    }
};

inline std::string Hex(std::span<const uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (uint8_t b : bytes) {
        text.push_back(kDigits[b >> 4]);
        text.push_back(kDigits[b & 15]);
    }
    return text;
}

// The control port (a serial line to the harness) plus the console, which gets a copy.
class Channel {
  public:
    explicit Channel(const std::string& path) {
        if (path.empty())
            return;
        fd_ = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (fd_ < 0)
            return;
        termios mode{};
        if (::tcgetattr(fd_, &mode) == 0) {
            ::cfmakeraw(&mode);
            ::tcsetattr(fd_, TCSANOW, &mode);
        }
    }
    ~Channel() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    void Line(std::string text) {
        for (char& c : text) {
            if (c == '\n' || c == '\r')
                c = ' ';
        }
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
        if (fd_ < 0)
            return;
        text.push_back('\n');
        std::string_view rest = text;
        while (!rest.empty()) {
            const ssize_t n = ::write(fd_, rest.data(), rest.size());
            if (n <= 0)
                return;
            rest.remove_prefix(static_cast<size_t>(n));
        }
    }

    // Sends a request and waits for its answer; nothing when the harness does not answer.
    std::optional<std::string> Request(const std::string& action) {
        const std::string seq = std::to_string(++seq_);
        Line("REQUEST " + seq + " " + action);
        const std::string prefix = "ACK " + seq + " ";
        for (auto line = ReadLine(); line; line = ReadLine()) {
            if (line->starts_with(prefix))
                return line->substr(prefix.size());
        }
        return std::nullopt;
    }

  private:
    std::optional<std::string> ReadLine() {
        for (;;) {
            if (const auto end = pending_.find('\n'); end != std::string::npos) {
                std::string line = pending_.substr(0, end);
                pending_.erase(0, end + 1);
                return line;
            }
            pollfd p{fd_, POLLIN, 0};
            if (fd_ < 0 || ::poll(&p, 1, kAckWaitMs) <= 0)
                return std::nullopt;
            char chunk[256];
            const ssize_t n = ::read(fd_, chunk, sizeof chunk);
            if (n <= 0)
                return std::nullopt;
            pending_.append(chunk, static_cast<size_t>(n));
        }
    }

    int fd_ = -1;
    unsigned seq_ = 0;
    std::string pending_;
};

class Report {
  public:
    explicit Report(Channel& channel) : channel_(channel) {}
    bool Check(const std::string& name, bool ok, const std::string& detail) {
        (ok ? passed_ : failed_)++;
        channel_.Line("CHECK " + name + (ok ? " PASS " : " FAIL ") + detail);
        return ok;
    }
    void Info(const std::string& name, const std::string& text) {
        channel_.Line("INFO " + name + " " + text);
    }
    // Reports the end; answers the guest program's exit status.
    int Done() {
        channel_.Line("DONE pass=" + std::to_string(passed_) + " fail=" + std::to_string(failed_));
        return failed_ == 0 ? 0 : 1;
    }

  private:
    Channel& channel_;
    int passed_ = 0;
    int failed_ = 0;
};

}  // namespace plattmix::testbed
