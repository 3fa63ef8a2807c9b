#include "CdAudioCommand.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <limits>

#include "CdAudioErrors.h"
#include "modMSF.h"

namespace plattmix::audiocd {

namespace {

constexpr int32_t kFramesPerMinute = modMSF::kFramesPerSecond * modMSF::kSecondsPerMinute;

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

template <typename Number>
std::optional<Number> Digits(std::string_view text) {
    Number value{};
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text.front())))
        return std::nullopt;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// Walks the words after the device, in lower case for the keywords.
class Words {
  public:
    explicit Words(const std::vector<std::string>& words) : words_(words) {}
    bool Done() const { return at_ >= words_.size(); }
    std::string Keyword() { return Lower(words_[at_++]); }
    std::optional<std::string> Value() {
        if (Done())
            return std::nullopt;
        return words_[at_++];
    }
    bool Next(std::string_view word) {
        if (Done() || Lower(words_[at_]) != word)
            return false;
        ++at_;
        return true;
    }

  private:
    const std::vector<std::string>& words_;
    size_t at_ = 2;
};

std::optional<MciVerb> VerbOf(const std::string& word) {
    if (word == "open")
        return MciVerb::Open;
    if (word == "close")
        return MciVerb::Close;
    if (word == "play")
        return MciVerb::Play;
    if (word == "stop")
        return MciVerb::Stop;
    if (word == "status")
        return MciVerb::Status;
    if (word == "set")
        return MciVerb::Set;
    return std::nullopt;
}

// One keyword of a command (with its value); an error code, or 0 when it was taken.
int OpenKeyword(const std::string& keyword, Words& words, MciCommand& c) {
    if (keyword == "shareable") {
        c.shareable = true;
        return 0;
    }
    if (keyword != "type" && keyword != "alias")
        return kCdAudioUnknownKeyword;
    const auto value = words.Value();
    if (!value)
        return kCdAudioMissingValue;
    (keyword == "type" ? c.type : c.alias) = *value;
    return 0;
}

int PlayKeyword(const std::string& keyword, Words& words, MciCommand& c) {
    if (keyword != "from" && keyword != "to")
        return kCdAudioUnknownKeyword;
    const auto value = words.Value();
    if (!value)
        return kCdAudioMissingValue;
    (keyword == "from" ? c.from : c.to) = *value;
    return 0;
}

// "track N" after length or position, when it follows.
int TrackNumber(Words& words, MciCommand& c) {
    if (!words.Next("track"))
        return 0;
    const auto value = words.Value();
    if (!value)
        return kCdAudioMissingValue;
    const auto number = Digits<int>(*value);
    if (!number)
        return kCdAudioBadNumber;
    c.track = *number;
    return 0;
}

int StatusItem(const std::string& keyword, Words& words, MciCommand& c) {
    if (keyword == "length" || keyword == "position") {
        c.item = keyword == "length" ? MciStatusItem::Length : MciStatusItem::Position;
        return TrackNumber(words, c);
    }
    if (keyword == "mode") {
        c.item = MciStatusItem::Mode;
        return 0;
    }
    if (keyword == "current" && words.Next("track")) {
        c.item = MciStatusItem::CurrentTrack;
        return 0;
    }
    if (keyword == "number" && words.Next("of") && words.Next("tracks")) {
        c.item = MciStatusItem::NumberOfTracks;
        return 0;
    }
    if (keyword == "media" && words.Next("present")) {
        c.item = MciStatusItem::MediaPresent;
        return 0;
    }
    return kCdAudioUnknownKeyword;
}

int SetItem(const std::string& keyword, Words& words, MciCommand& c) {
    if (keyword == "door") {
        if (words.Next("open"))
            c.set = MciSetItem::DoorOpen;
        else if (words.Next("closed"))
            c.set = MciSetItem::DoorClosed;
        else
            return words.Done() ? kCdAudioMissingValue : kCdAudioUnknownKeyword;
        return 0;
    }
    if (keyword != "time" || !words.Next("format"))
        return kCdAudioUnknownKeyword;
    const auto value = words.Value();
    if (!value)
        return kCdAudioMissingValue;
    const std::string format = Lower(*value);
    c.set = MciSetItem::TimeFormat;
    if (format == "milliseconds" || format == "ms")
        c.timeFormat = MciTimeFormat::Milliseconds;
    else if (format == "msf")
        c.timeFormat = MciTimeFormat::Msf;
    else
        return kCdAudioBadTimeFormat;
    return 0;
}

}  // namespace

std::optional<std::vector<std::string>> SplitMciWords(std::string_view text) {
    std::vector<std::string> words;
    size_t at = 0;
    while (at < text.size()) {
        if (IsBlank(text[at])) {
            ++at;
            continue;
        }
        if (text[at] == '"') {
            const size_t close = text.find('"', at + 1);
            if (close == std::string_view::npos)
                return std::nullopt;
            words.emplace_back(text.substr(at + 1, close - at - 1));
            at = close + 1;
            continue;
        }
        size_t end = at;
        while (end < text.size() && !IsBlank(text[end]) && text[end] != '"')
            ++end;
        words.emplace_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

MciParse ParseMciCommand(std::string_view text) {
    const auto split = SplitMciWords(text);
    if (!split)
        return {std::nullopt, kCdAudioOpenQuote};
    const std::vector<std::string>& all = *split;
    const auto verb = all.empty() ? std::nullopt : VerbOf(Lower(all[0]));
    if (!verb)
        return {std::nullopt, kCdAudioUnknownCommand};
    if (all.size() < 2 || all[1].empty())
        return {std::nullopt, kCdAudioMissingDevice};

    MciCommand c;
    c.verb = *verb;
    c.device = all[1];
    Words words(all);
    bool haveItem = false;
    while (!words.Done()) {
        const std::string keyword = words.Keyword();
        int error = 0;
        if (keyword == "wait") {
            c.wait = true;
        } else if (keyword == "notify") {
            // Nothing is posted anywhere: callers poll.
        } else if (c.verb == MciVerb::Open) {
            error = OpenKeyword(keyword, words, c);
        } else if (c.verb == MciVerb::Play) {
            error = PlayKeyword(keyword, words, c);
        } else if ((c.verb == MciVerb::Status || c.verb == MciVerb::Set) && !haveItem) {
            error = c.verb == MciVerb::Status ? StatusItem(keyword, words, c)
                                              : SetItem(keyword, words, c);
            haveItem = true;
        } else {
            error = kCdAudioUnknownKeyword;
        }
        if (error != 0)
            return {std::nullopt, error};
    }
    if ((c.verb == MciVerb::Status || c.verb == MciVerb::Set) && !haveItem)
        return {std::nullopt, kCdAudioMissingValue};
    return {c, 0};
}

// Rounded up, so that the milliseconds name the same frame again.
int64_t FramesToMilliseconds(int32_t frames) {
    return (int64_t{frames} * 1000 + modMSF::kFramesPerSecond - 1) / modMSF::kFramesPerSecond;
}

int32_t MillisecondsToFrames(int64_t milliseconds) {
    return static_cast<int32_t>(milliseconds * modMSF::kFramesPerSecond / 1000);
}

std::string FormatPosition(int32_t frames, MciTimeFormat format) {
    if (format == MciTimeFormat::Milliseconds)
        return std::to_string(FramesToMilliseconds(frames));
    const auto two = [](int32_t n) {
        std::string text = std::to_string(n);
        if (text.size() < 2)
            text.insert(text.begin(), '0');
        return text;
    };
    return two(frames / kFramesPerMinute) + ":" +
           two(frames / modMSF::kFramesPerSecond % modMSF::kSecondsPerMinute) + ":" +
           two(frames % modMSF::kFramesPerSecond);
}

std::optional<int32_t> ParsePosition(std::string_view text, MciTimeFormat format) {
    constexpr int64_t kMaxFrames = std::numeric_limits<int32_t>::max();
    if (format == MciTimeFormat::Milliseconds) {
        const auto ms = Digits<int64_t>(text);
        if (!ms || *ms > kMaxFrames)
            return std::nullopt;
        return MillisecondsToFrames(*ms);
    }
    std::array<int32_t, 3> parts{};  // minutes, seconds, frames
    size_t part = 0;
    for (;;) {
        const size_t colon = text.find(':');
        const auto value = Digits<int32_t>(text.substr(0, colon));
        if (!value || part >= parts.size())
            return std::nullopt;
        parts[part++] = *value;
        if (colon == std::string_view::npos)
            break;
        text.remove_prefix(colon + 1);
    }
    if (parts[0] > 9999 || parts[1] >= modMSF::kSecondsPerMinute ||
        parts[2] >= modMSF::kFramesPerSecond)
        return std::nullopt;
    return parts[0] * kFramesPerMinute + parts[1] * modMSF::kFramesPerSecond + parts[2];
}

int64_t MciValue(std::string_view text) {
    size_t at = 0;
    while (at < text.size() && IsBlank(text[at]))
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        negative = text[at++] == '-';
    int64_t value = 0;
    while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) &&
           value < std::numeric_limits<int64_t>::max() / 10 - 9)
        value = value * 10 + (text[at++] - '0');
    return negative ? -value : value;
}

std::string MciQuote(const std::string& value) {
    const bool blank = value.empty() || std::any_of(value.begin(), value.end(), IsBlank);
    return blank ? "\"" + value + "\"" : value;
}

}  // namespace plattmix::audiocd
