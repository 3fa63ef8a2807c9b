// READ TOC replies of formats 0 (in MSF and LBA form), 1 and 2 from a drive, read as the track
// list, the sessions and the extraction's track bounds read them.
//
// Input parts, each a scripted reply (status, sense key, ASC, ASCQ, bytes): TEST UNIT READY,
// format 0 MSF, format 0 LBA, format 1, format 2.
#include <algorithm>
#include <array>
#include <cstdint>

#include "FuzzInput.h"
#include "MmcOpcodes.h"
#include "ScriptedDrive.h"
#include "SessionToc.h"
#include "TrackBounds.h"
#include "TrackList.h"
#include "modMMC.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix;
    fuzz::Parts parts(data, size);
    using fuzz::ScriptedDrive;
    ScriptedDrive drive;
    drive.Script(ScriptedDrive::Key(scsi::kOpTestUnitReady), parts.Next());
    drive.Script(ScriptedDrive::Key(scsi::kOpReadToc, 0, true), parts.Next());
    const auto lbaReply = parts.Next();
    drive.Script(ScriptedDrive::Key(scsi::kOpReadToc), lbaReply);
    drive.Script(ScriptedDrive::Key(scsi::kOpReadToc, scsi::kTocFormatSessionInfo), parts.Next());
    drive.Script(ScriptedDrive::Key(scsi::kOpReadToc, scsi::kTocFormatFullToc), parts.Next());

    audiocd::ReadTrackList(drive, "sr0");
    const auto sessions = audiocd::ReadSessionToc(drive, "sr0");
    if (sessions) {
        for (size_t i = 0; i <= sessions->tracks.size(); ++i)
            audiocd::ExactBoundsOf(*sessions, static_cast<int>(i));
    }
    // The extraction's bounds from the same table, as the rip reads it (a 804-byte reply).
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    if (lbaReply.size() > 4)
        std::copy_n(lbaReply.begin() + 4, std::min(reply.size(), lbaReply.size() - 4),
                    reply.begin());
    if (const auto toc = modMMC::ParseTOC(reply)) {
        for (int16_t track = 0; track <= static_cast<int16_t>(toc->descriptors.size()); ++track)
            audiocd::ComputeTrackBounds(*toc, track, sessions ? &*sessions : nullptr);
    }
    return 0;
}
