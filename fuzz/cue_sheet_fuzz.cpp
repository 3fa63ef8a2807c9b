// The CUE sheet with the sizes of its BIN files: parsed, laid out on a disc, and the drive's
// replies built from that disc read back by the program's own READ TOC and CD-Text parsers.
//
// Input: the sheet's text; a last line "#BIN size size ..." gives the files' byte sizes in sheet
// order (a file without one has 700 MB).
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "CdText.h"
#include "FuzzInput.h"
#include "SessionToc.h"
#include "imagedrive/CdTextReply.h"
#include "imagedrive/CueSheet.h"
#include "imagedrive/DiscImage.h"
#include "imagedrive/MmcReplies.h"
#include "modMMC.h"

namespace {

using namespace plattmix;
using namespace plattmix::scsi::imagedrive;

constexpr int64_t kDefaultFileBytes = 700LL * 1024 * 1024;
constexpr std::string_view kSizesMark = "#BIN ";

// Splits the "#BIN" line off the text.
std::vector<int64_t> TakeSizes(std::string_view& text) {
    std::vector<int64_t> sizes;
    const size_t mark = text.rfind(kSizesMark);
    if (mark == std::string_view::npos || (mark > 0 && text[mark - 1] != '\n'))
        return sizes;
    std::istringstream line{std::string(text.substr(mark + kSizesMark.size()))};
    text = text.substr(0, mark);
    for (int64_t value = 0; line >> value;)
        sizes.push_back(std::max<int64_t>(value, 0));
    return sizes;
}

// The disc's table of contents as the drive gives it, through the parsers that read a real
// drive's: every track and the lead-out must come back.
void ReadBack(const DiscImage& disc) {
    for (const bool msf : {false, true}) {
        const auto reply = TocReply(disc, msf, 1);
        if (!reply)
            std::abort();
        const auto toc = modMMC::ParseTOC(*reply);
        if (!toc)
            std::abort();
        auto sessions = audiocd::SessionTocFromToc(*toc, msf);
        if (!sessions ||
            (disc.tracks.size() < 100 && sessions->tracks.size() != disc.tracks.size()))
            std::abort();
        if (const auto full = FullTocReply(disc, 1)) {
            if (const auto parsed = modMMC::ParseFullToc(*full))
                audiocd::ApplyFullToc(*sessions, *parsed);
        }
        if (const auto info = modMMC::ParseSessionInfo(SessionInfoReply(disc, msf)))
            audiocd::ApplySessionInfo(*sessions, *info);
        for (size_t i = 1; i <= sessions->tracks.size(); ++i)
            audiocd::ExactBoundsOf(*sessions, static_cast<int>(i));
    }
    if (const auto text = CdTextReply(disc))
        audiocd::ParseCdText(*text);
    DiscInformationReply(disc);
    CapacityReply(disc);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = fuzz::AsText({data, size});
    const std::vector<int64_t> sizes = TakeSizes(text);
    const auto sheet = ParseCueSheet(text, "/fuzz/", "fuzz.cue");
    if (fuzz::Refused(sheet))
        return 0;
    std::vector<int64_t> fileSizes;
    for (size_t i = 0; i < sheet.Value().files.size(); ++i)
        fileSizes.push_back(i < sizes.size() ? sizes[i] : kDefaultFileBytes);
    const auto disc = LayoutDisc(sheet.Value(), fileSizes, "fuzz.cue");
    if (!fuzz::Refused(disc))
        ReadBack(disc.Value());
    return 0;
}
