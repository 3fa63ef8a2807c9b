// Any command block the image drive can be sent, with any buffer, while its tray opens and closes
// and its medium comes and goes: its replies (INQUIRY, READ TOC in every format, GET
// CONFIGURATION, GET EVENT STATUS NOTIFICATION, READ DISC INFORMATION, READ CAPACITY, the READ
// commands) stay inside the buffer, and the good ones are read by the program's own parsers.
//
// Input: records of an operation byte; a command's record goes on with its length byte, twelve
// command bytes and a two-byte buffer length.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "CdText.h"
#include "FuzzInput.h"
#include "MmcOpcodes.h"
#include "ScsiStatus.h"
#include "TrayState.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace {

using namespace plattmix;

// An audio session of two tracks with CD-Text and a data session after it, in one BIN file.
const char kSheet[] =
    "CATALOG 0123456789012\n"
    "TITLE \"Album\"\nPERFORMER \"Band\"\n"
    "REM SESSION 01\n"
    "FILE \"disc.bin\" BINARY\n"
    "  TRACK 01 AUDIO\n    TITLE \"Eins\"\n    ISRC DEABC1234567\n    INDEX 01 00:00:00\n"
    "  TRACK 02 AUDIO\n    FLAGS PRE DCP\n    INDEX 00 00:01:00\n    INDEX 01 00:02:00\n"
    "REM SESSION 02\n"
    "FILE \"data.bin\" BINARY\n"
    "  TRACK 03 MODE1/2352\n    INDEX 01 00:00:00\n";

const std::string& SheetPath() {
    static const std::string path = [] {
        fuzz::ScratchFile("disc.bin", std::string(300 * 2352, '\x11'));
        fuzz::ScratchFile("data.bin", std::string(200 * 2352, '\0'));
        return fuzz::ScratchFile("disc.cue", kSheet);
    }();
    return path;
}

// The program's parsers over a good reply.
void ReadReply(const uint8_t* cdb, std::span<const uint8_t> reply) {
    switch (cdb[0]) {
        case scsi::kOpInquiry:
            modMMC::InquiryIdentText(reply);
            break;
        case scsi::kOpGetEventStatus:
            scsi::TrayStateFromMediaEvent(scsi::MakeTrayResult(0, {}), reply);
            break;
        case scsi::kOpReadToc:
            modMMC::ParseTOC(reply);
            modMMC::ParseSessionInfo(reply);
            modMMC::ParseFullToc(reply);
            audiocd::ParseCdText(reply);
            break;
        default:
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    scsi::imagedrive::clsImageDrive drives;
    const auto added = drives.AddDrive(SheetPath());
    if (!added.ok())
        std::abort();
    std::string handle = added.Value();
    size_t at = 0;
    while (at < size) {
        const uint8_t op = data[at++];
        switch (op % 8) {
            case 5:
                drives.OpenTray(handle);
                continue;
            case 6:
                drives.CloseTray(handle);
                continue;
            case 7:
                if (drives.HasMedium(handle))
                    drives.RemoveMedium(handle);
                else
                    drives.InsertMedium(handle, SheetPath());
                continue;
            default:
                break;
        }
        if (size - at < 15)
            break;
        uint8_t cdb[12];
        std::copy_n(data + at + 1, 12, cdb);
        uint8_t cdbLength = data[at];
        const size_t length = (size_t{data[at + 13]} << 8) | data[at + 14];
        at += 15;
        std::vector<uint8_t> buffer(length);
        int32_t direction = 0;
        int16_t timeOut = 0;
        const int32_t status =
            drives.ExecCMD(handle, std::span<const uint8_t>(cdb, 12), cdbLength, direction,
                           buffer.data(), static_cast<int32_t>(buffer.size()), timeOut);
        if (status == scsi::kStatusGood)
            ReadReply(cdb, buffer);
    }
    return 0;
}
