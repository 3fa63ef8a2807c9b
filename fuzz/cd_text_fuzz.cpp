// CD-Text packs (READ TOC format 5) as the ripper reads the disc's titles and performers. Most
// packs of a random input fail their CRC; an input whose first byte is odd has the CRCs set
// right, so that the texts behind them are read too.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "CdText.h"
#include "FuzzInput.h"
#include "MmcOpcodes.h"
#include "ScriptedDrive.h"
#include "modMMC.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix;
    if (size == 0)
        return 0;
    std::vector<uint8_t> reply(data + 1, data + size);
    if ((data[0] & 1) != 0) {
        for (size_t at = 4; at + 18 <= reply.size(); at += 18) {
            const uint16_t crc = modMMC::CdTextCrc(std::span(reply).subspan(at, 16));
            reply[at + 16] = static_cast<uint8_t>(crc >> 8);
            reply[at + 17] = static_cast<uint8_t>(crc);
        }
    }
    audiocd::ParseCdText(reply);

    fuzz::ScriptedDrive drive;
    std::vector<uint8_t> scripted{0, 0, 0, 0};
    scripted.insert(scripted.end(), reply.begin(), reply.end());
    drive.Script(fuzz::ScriptedDrive::Key(scsi::kOpReadToc, scsi::kTocFormatCdText), scripted);
    audiocd::ReadCdText(drive, "sr0");
    return 0;
}
