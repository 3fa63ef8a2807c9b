#include "ProgressBar.h"

#include <algorithm>
#include <ostream>

namespace plattmix::cli {

namespace {
constexpr int kBarWidth = 30;
}

ProgressBar::ProgressBar(std::ostream& out, bool terminal) : out_(out), terminal_(terminal) {}

void ProgressBar::Begin(const std::string& label) {
    label_ = label;
    shown_ = -1;
    Update(0);
}

void ProgressBar::Update(int percent) {
    percent = std::clamp(percent, 0, 100);
    if (percent == shown_)
        return;
    shown_ = percent;
    if (!terminal_)
        return;  // plain output reports only outcomes
    const int filled = percent * kBarWidth / 100;
    out_ << '\r' << '[' << std::string(static_cast<size_t>(filled), '#')
         << std::string(static_cast<size_t>(kBarWidth - filled), '.') << "] ";
    out_.width(3);
    out_ << percent << "%  " << label_ << std::flush;
}

void ProgressBar::Finish(const std::string& text) {
    if (terminal_)
        out_ << "\r\033[K";  // clear the bar's line
    out_ << text << '\n' << std::flush;
    shown_ = -1;
}

}  // namespace plattmix::cli
