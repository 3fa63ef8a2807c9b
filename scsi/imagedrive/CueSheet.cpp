#include "imagedrive/CueSheet.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace plattmix::scsi::imagedrive {

int32_t StoredSectorSize(TrackMode mode) {
    return mode == TrackMode::Mode1_2048 ? 2048 : 2352;
}

bool IsDataMode(TrackMode mode) {
    return mode != TrackMode::Audio;
}

std::string ImageMessage(const std::string& fileName, int line, const std::string& text) {
    if (line <= 0)
        return fileName + ": " + text;
    return fileName + ", Zeile " + std::to_string(line) + ": " + text;
}

namespace {

constexpr int kMaxTrack = 99;
constexpr int kMaxIndex = 99;

std::string Upper(std::string_view word) {
    std::string text(word);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// Splits a line into words; a quoted name with blanks is one word, without its quotes.
std::optional<std::vector<std::string>> SplitWords(std::string_view line) {
    std::vector<std::string> words;
    size_t i = 0;
    while (i < line.size()) {
        if (std::isspace(static_cast<unsigned char>(line[i]))) {
            ++i;
        } else if (line[i] == '"') {
            const size_t close = line.find('"', i + 1);
            if (close == std::string_view::npos)
                return std::nullopt;
            words.emplace_back(line.substr(i + 1, close - i - 1));
            i = close + 1;
        } else {
            size_t end = i;
            while (end < line.size() && !std::isspace(static_cast<unsigned char>(line[end]))) {
                ++end;
            }
            words.emplace_back(line.substr(i, end - i));
            i = end;
        }
    }
    return words;
}

std::optional<int> ParseNumber(std::string_view text, int low, int high) {
    int value = 0;
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || ptr != text.data() + text.size() || value < low || value > high) {
        return std::nullopt;
    }
    return value;
}

// "mm:ss:ff" as a sector count; seconds below 60, frames below 75.
std::optional<int32_t> ParseMsf(std::string_view text) {
    const size_t first = text.find(':');
    const size_t second = first == std::string_view::npos ? first : text.find(':', first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const auto minutes = ParseNumber(text.substr(0, first), 0, 999);
    const auto seconds = ParseNumber(text.substr(first + 1, second - first - 1), 0, 59);
    const auto frames = ParseNumber(text.substr(second + 1), 0, 74);
    if (!minutes || !seconds || !frames)
        return std::nullopt;
    return (*minutes * 60 + *seconds) * 75 + *frames;
}

std::optional<TrackMode> ParseMode(const std::string& word) {
    const std::string mode = Upper(word);
    if (mode == "AUDIO")
        return TrackMode::Audio;
    if (mode == "MODE1/2048")
        return TrackMode::Mode1_2048;
    if (mode == "MODE1/2352")
        return TrackMode::Mode1_2352;
    if (mode == "MODE2/2352")
        return TrackMode::Mode2_2352;
    return std::nullopt;
}

std::string JoinPath(const std::string& folder, const std::string& name) {
    if (name.starts_with('/') || folder.empty())
        return name;
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

using Words = std::vector<std::string>;
using Problem = std::optional<std::string>;

// Walks the sheet line by line; each keyword has its own handler that answers a problem text.
class Parser {
  public:
    explicit Parser(std::string baseFolder) : baseFolder_(std::move(baseFolder)) {}

    Problem Line(const Words& words, int line) {
        line_ = line;
        const std::string keyword = Upper(words[0]);
        if (keyword == "REM")
            return Rem(words);
        if (keyword == "FILE")
            return File(words);
        if (keyword == "TRACK")
            return Track(words);
        if (keyword == "INDEX")
            return Index(words);
        if (keyword == "PREGAP")
            return Gap(words, true);
        if (keyword == "POSTGAP")
            return Gap(words, false);
        if (keyword == "TITLE")
            return Text(words, &CueSheet::title, &CueTrack::title);
        if (keyword == "PERFORMER")
            return Text(words, &CueSheet::performer, &CueTrack::performer);
        if (keyword == "SONGWRITER") {
            return Text(words, &CueSheet::songwriter, &CueTrack::songwriter);
        }
        if (keyword == "CATALOG")
            return Catalog(words);
        if (keyword == "ISRC")
            return Isrc(words);
        if (keyword == "FLAGS")
            return Flags(words);
        if (keyword == "CDTEXTFILE")
            return std::nullopt;  // CD-Text comes from the sheet itself
        return "unbekanntes Schlüsselwort '" + words[0] + "'";
    }

    // Checks that need the whole sheet; answers the problem and its line.
    std::optional<std::pair<int, std::string>> Finish() const {
        if (sheet_.files.empty())
            return std::pair{0, std::string("keine Datei (FILE) angegeben")};
        for (const CueFile& file : sheet_.files) {
            if (file.tracks.empty())
                return std::pair{file.line, "Datei ohne Spur (TRACK)"};
            for (const CueTrack& track : file.tracks) {
                const bool hasStart =
                    std::any_of(track.indexes.begin(), track.indexes.end(),
                                [](const CueIndex& index) { return index.number == 1; });
                if (!hasStart)
                    return std::pair{track.line, "Spur ohne INDEX 01"};
            }
        }
        return std::nullopt;
    }

    CueSheet Take() && { return std::move(sheet_); }

  private:
    CueTrack* CurrentTrack() {
        if (sheet_.files.empty() || sheet_.files.back().tracks.empty())
            return nullptr;
        return &sheet_.files.back().tracks.back();
    }

    Problem Rem(const Words& words) {
        if (words.size() < 3 || Upper(words[1]) != "SESSION")
            return std::nullopt;
        const auto session = ParseNumber(words[2], 1, 99);
        if (!session)
            return "ungültige Sitzungsnummer '" + words[2] + "'";
        if (*session != session_ && *session != session_ + 1) {
            return "Sitzung " + words[2] + " folgt nicht auf Sitzung " + std::to_string(session_);
        }
        if (*session != session_ && lastTrack_ == 0)
            return "Sitzung 1 hat keine Spur";
        session_ = *session;
        return std::nullopt;
    }

    Problem File(const Words& words) {
        if (words.size() != 3)
            return std::string("FILE erwartet einen Namen und einen Typ");
        if (Upper(words[2]) != "BINARY")
            return "Dateityp '" + words[2] + "' nicht unterstützt";
        sheet_.files.push_back(CueFile{words[1], JoinPath(baseFolder_, words[1]), line_, {}});
        lastIndexFrames_.reset();
        return std::nullopt;
    }

    Problem Track(const Words& words) {
        if (sheet_.files.empty())
            return std::string("TRACK vor der ersten FILE-Zeile");
        if (words.size() != 3)
            return std::string("TRACK erwartet eine Nummer und eine Art");
        const auto number = ParseNumber(words[1], 1, kMaxTrack);
        if (!number)
            return "ungültige Spurnummer '" + words[1] + "'";
        if (*number <= lastTrack_)
            return "Spurnummer " + words[1] + " nicht aufsteigend";
        const auto mode = ParseMode(words[2]);
        if (!mode)
            return "Spurart '" + words[2] + "' nicht unterstützt";
        CueTrack track;
        track.number = *number;
        track.mode = *mode;
        track.session = session_;
        track.line = line_;
        sheet_.files.back().tracks.push_back(std::move(track));
        lastTrack_ = *number;
        return std::nullopt;
    }

    Problem Index(const Words& words) {
        CueTrack* track = CurrentTrack();
        if (track == nullptr)
            return std::string("INDEX außerhalb einer Spur");
        if (words.size() != 3)
            return std::string("INDEX erwartet eine Nummer und eine Zeit");
        const auto number = ParseNumber(words[1], 0, kMaxIndex);
        if (!number)
            return "ungültige Indexnummer '" + words[1] + "'";
        const auto frames = ParseMsf(words[2]);
        if (!frames)
            return "ungültige Zeitangabe '" + words[2] + "'";
        const int expected =
            track->indexes.empty() ? (*number == 0 ? 0 : 1) : track->indexes.back().number + 1;
        if (*number != expected)
            return "INDEX " + words[1] + " außer der Reihe";
        if (lastIndexFrames_ && *frames <= *lastIndexFrames_) {
            return "INDEX " + words[1] + " liegt nicht hinter dem vorigen";
        }
        if (track->postgap > 0)
            return std::string("INDEX nach POSTGAP");
        track->indexes.push_back(CueIndex{*number, *frames, line_});
        lastIndexFrames_ = *frames;
        return std::nullopt;
    }

    Problem Gap(const Words& words, bool pre) {
        CueTrack* track = CurrentTrack();
        const std::string name = pre ? "PREGAP" : "POSTGAP";
        if (track == nullptr)
            return name + " außerhalb einer Spur";
        if (words.size() != 2)
            return name + " erwartet eine Zeit";
        const auto frames = ParseMsf(words[1]);
        if (!frames)
            return "ungültige Zeitangabe '" + words[1] + "'";
        if (pre && !track->indexes.empty())
            return std::string("PREGAP nach INDEX");
        (pre ? track->pregap : track->postgap) = *frames;
        return std::nullopt;
    }

    Problem Text(const Words& words, std::string CueSheet::*discField,
                 std::string CueTrack::*trackField) {
        if (words.size() != 2)
            return Upper(words[0]) + " erwartet einen Text";
        CueTrack* track = CurrentTrack();
        if (track != nullptr) {
            track->*trackField = words[1];
        } else {
            sheet_.*discField = words[1];
        }
        return std::nullopt;
    }

    Problem Catalog(const Words& words) {
        if (words.size() != 2)
            return std::string("CATALOG erwartet eine Nummer");
        sheet_.catalog = words[1];
        return std::nullopt;
    }

    Problem Isrc(const Words& words) {
        CueTrack* track = CurrentTrack();
        if (track == nullptr)
            return std::string("ISRC außerhalb einer Spur");
        if (words.size() != 2)
            return std::string("ISRC erwartet einen Code");
        track->isrc = words[1];
        return std::nullopt;
    }

    Problem Flags(const Words& words) {
        CueTrack* track = CurrentTrack();
        if (track == nullptr)
            return std::string("FLAGS außerhalb einer Spur");
        for (size_t i = 1; i < words.size(); ++i) {
            const std::string flag = Upper(words[i]);
            if (flag == "DCP") {
                track->copyPermitted = true;
            } else if (flag == "4CH") {
                track->fourChannel = true;
            } else if (flag == "PRE") {
                track->preEmphasis = true;
            } else if (flag != "SCMS") {
                return "unbekanntes Flag '" + words[i] + "'";
            }
        }
        return std::nullopt;
    }

    std::string baseFolder_;
    CueSheet sheet_;
    int line_ = 0;
    int session_ = 1;
    int lastTrack_ = 0;
    std::optional<int32_t> lastIndexFrames_;  // reset per FILE: times count from its start
};

}  // namespace

ImageResult<CueSheet> ParseCueSheet(std::string_view text, const std::string& baseFolder,
                                    const std::string& sheetName) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);  // UTF-8 byte-order mark
    Parser parser(baseFolder);
    int lineNumber = 0;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        ++lineNumber;
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        const auto words = SplitWords(line);
        if (!words) {
            return ImageResult<CueSheet>::Fail(
                ImageMessage(sheetName, lineNumber, "Anführungszeichen nicht geschlossen"));
        }
        if (words->empty())
            continue;
        if (const Problem problem = parser.Line(*words, lineNumber)) {
            return ImageResult<CueSheet>::Fail(ImageMessage(sheetName, lineNumber, *problem));
        }
    }
    if (const auto problem = parser.Finish()) {
        return ImageResult<CueSheet>::Fail(
            ImageMessage(sheetName, problem->first, problem->second));
    }
    return ImageResult<CueSheet>::Ok(std::move(parser).Take());
}

}  // namespace plattmix::scsi::imagedrive
