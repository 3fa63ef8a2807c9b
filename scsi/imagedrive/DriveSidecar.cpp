#include "imagedrive/DriveSidecar.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <vector>

#include "imagedrive/ImageLoader.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr std::uintmax_t kMaxSidecarBytes = 64 * 1024;
constexpr int32_t kMaxSectors = 100 * 60 * 75;  // beyond any disc
constexpr int32_t kMaxOffsetSamples = 100 * 588;

std::string Upper(std::string word) {
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return word;
}

template <typename Number>
std::optional<Number> ParseValue(std::string text, Number low, Number high) {
    if (text.starts_with('+'))
        text.erase(0, 1);
    Number value{};
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size() || value < low || value > high)
        return std::nullopt;
    return value;
}

using Words = std::vector<std::string>;
using Problem = std::optional<std::string>;

Problem Invalid(const std::string& what, const std::string& word) {
    return what + " '" + word + "'";
}

// "first count" of a range, from words[1] and words[2].
std::optional<LbaRange> ParseRange(const Words& words) {
    const auto first = ParseValue<int32_t>(words[1], 0, kMaxSectors);
    const auto count = ParseValue<int32_t>(words[2], 1, kMaxSectors);
    if (!first || !count)
        return std::nullopt;
    return LbaRange{*first, *count};
}

Problem ApplyLine(const Words& words, Faults& faults) {
    const std::string keyword = Upper(words[0]);
    const auto expect = [&](size_t count, const char* form) -> Problem {
        if (words.size() != count + 1)
            return keyword + " erwartet " + form;
        return std::nullopt;
    };
    if (keyword == "OFFSET") {
        if (auto problem = expect(1, "einen Versatz in Samples"))
            return problem;
        const auto offset = ParseValue<int32_t>(words[1], -kMaxOffsetSamples, kMaxOffsetSamples);
        if (!offset)
            return Invalid("ungültiger Versatz", words[1]);
        faults.readOffsetSamples = *offset;
        return std::nullopt;
    }
    if (keyword == "C2") {
        if (auto problem = expect(1, "ON oder OFF"))
            return problem;
        const std::string value = Upper(words[1]);
        if (value != "ON" && value != "OFF")
            return Invalid("ungültiger Wert", words[1]);
        faults.c2Pointers = value == "ON";
        return std::nullopt;
    }
    if (keyword == "SPEED") {
        if (auto problem = expect(1, "ein Vielfaches der einfachen Geschwindigkeit"))
            return problem;
        const auto speed = ParseValue<int>(words[1], 0, 100);
        if (!speed)
            return Invalid("ungültige Geschwindigkeit", words[1]);
        faults.speedMultiple = *speed;
        return std::nullopt;
    }
    if (keyword == "READERROR" || keyword == "TIMEOUT") {
        if (auto problem = expect(2, "ersten Sektor und Anzahl"))
            return problem;
        const auto range = ParseRange(words);
        if (!range)
            return Invalid("ungültiger Bereich", words[1] + " " + words[2]);
        (keyword == "READERROR" ? faults.readErrors : faults.timeOuts).push_back(*range);
        return std::nullopt;
    }
    if (keyword == "FLAKY") {
        if (auto problem = expect(4, "ersten Sektor, Anzahl, Wahrscheinlichkeit und Startwert"))
            return problem;
        const auto range = ParseRange(words);
        if (!range)
            return Invalid("ungültiger Bereich", words[1] + " " + words[2]);
        const auto probability = ParseValue<double>(words[3], 0.0, 1.0);
        if (!probability)
            return Invalid("ungültige Wahrscheinlichkeit", words[3]);
        const auto seed = ParseValue<uint32_t>(words[4], 0, UINT32_MAX);
        if (!seed)
            return Invalid("ungültiger Startwert", words[4]);
        faults.flaky.push_back(FlakyRange{*range, *probability, *seed});
        return std::nullopt;
    }
    return "unbekanntes Schlüsselwort '" + words[0] + "'";
}

}  // namespace

ImageResult<Faults> ParseDriveSidecar(std::string_view text, const std::string& sidecarName) {
    Faults faults;
    std::istringstream lines{std::string(text)};
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        std::istringstream split(line);
        Words words{std::istream_iterator<std::string>(split), {}};
        if (words.empty() || words[0].starts_with('#'))
            continue;
        if (const Problem problem = ApplyLine(words, faults))
            return ImageResult<Faults>::Fail(ImageMessage(sidecarName, number, *problem));
    }
    return ImageResult<Faults>::Ok(std::move(faults));
}

ImageResult<std::optional<Faults>> LoadDriveSidecar(const std::string& imagePath) {
    using Result = ImageResult<std::optional<Faults>>;
    const std::string path = imagePath + kDriveSidecarExtension;
    std::error_code ec;
    if (!std::filesystem::exists(path, ec))
        return Result::Ok(std::nullopt);
    const auto text = ReadTextFile(path, kMaxSidecarBytes, "zu groß für Laufwerkseinstellungen");
    if (!text.ok())
        return Result::FailFrom(text);
    auto faults = ParseDriveSidecar(text.Value(), std::filesystem::path(path).filename().string());
    if (!faults.ok())
        return Result::FailFrom(faults);
    return Result::Ok(std::move(faults).Take());
}

}  // namespace plattmix::scsi::imagedrive
