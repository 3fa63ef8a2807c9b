// Hooks for the burn and erase jobs that answer questions as told and record everything the
// user would have seen.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "BurnJob.h"
#include "EraseJob.h"

namespace plattmix::authoring::burntest {

struct Seen {
    std::vector<std::string> statuses;
    std::vector<int> bars;
    std::vector<std::string> questions;
    std::vector<std::pair<std::string, MessageIcon>> messages;
    std::vector<bool> busy;

    bool Showed(const std::string& text) const {
        return std::ranges::any_of(messages,
                                   [&](const auto& shown) { return shown.first == text; });
    }
};

// Answers every question with answer; Escape is "pressed" when escape says so.
inline BurnHooks RecordingHooks(Seen& seen, bool answer = true,
                                std::function<bool()> escape = nullptr) {
    BurnHooks hooks;
    hooks.scan.escapePressed = std::move(escape);
    hooks.status = [&seen](const std::string& text) { seen.statuses.push_back(text); };
    hooks.progress = [&seen](int value) { seen.bars.push_back(value); };
    hooks.askYesNo = [&seen, answer](const std::string& text) {
        seen.questions.push_back(text);
        return answer;
    };
    hooks.showMessage = [&seen](const std::string& text, MessageIcon icon) {
        seen.messages.emplace_back(text, icon);
    };
    return hooks;
}

inline EraseHooks RecordingEraseHooks(Seen& seen, bool answer = true) {
    EraseHooks hooks;
    hooks.burn = RecordingHooks(seen, answer);
    hooks.busy = [&seen](bool shown) { seen.busy.push_back(shown); };
    return hooks;
}

}  // namespace plattmix::authoring::burntest
