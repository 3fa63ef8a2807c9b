// The probe's way out: a control port (a serial line to the harness) that carries check
// results and requests, and the report that counts the checks.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace plattmix::testbed {

inline constexpr int kAckWaitMs = 60000;

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
        while (fd_ >= 0) {
            const auto line = ReadLine();
            if (!line)
                return std::nullopt;
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
                if (!line.empty() && line.back() == '\r')
                    line.pop_back();
                return line;
            }
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, kAckWaitMs) <= 0)
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
    void Done() {
        channel_.Line("DONE pass=" + std::to_string(passed_) + " fail=" + std::to_string(failed_));
    }
    int Failed() const { return failed_; }

  private:
    Channel& channel_;
    int passed_ = 0;
    int failed_ = 0;
};

}  // namespace plattmix::testbed
