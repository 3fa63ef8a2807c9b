// INQUIRY replies as the drive list names a drive by them.
#include <cstdint>
#include <span>
#include <vector>

#include "DriveList.h"
#include "MmcOpcodes.h"
#include "ScriptedDrive.h"
#include "modMMC.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix;
    const std::span<const uint8_t> reply(data, size);
    modMMC::ParseInquiry(reply);
    audiocd::DriveEntryText("sr0", reply);

    fuzz::ScriptedDrive drive;
    drive.Script(fuzz::ScriptedDrive::Key(scsi::kOpInquiry), reply);
    audiocd::FillDriveList(drive, [](std::string_view) {});
    return 0;
}
