// The ripping page's Start command in the secure mode: the disc's AccurateRip record asked for
// first, then every checked row read and proven (see SecureTrack.h), its row's result followed
// by the verdict, and Rip.log and Rip.cue written into the target folder at the end.
#pragma once

#include <optional>
#include <string>

#include "CdText.h"
#include "HttpGet.h"
#include "ISCSI.h"
#include "JobHooks.h"
#include "RipJob.h"
#include "TrackEncode.h"

namespace plattmix::audiocd {

struct SecureRipParams {
    RipJobParams rip;
    int offset = 0;                 // the drive's read offset in samples
    std::string driveName;          // its identification, for the log
    std::string accurateRipServer;  // ends in "/"
    HttpGetFn httpGet;              // empty: the record is not asked for
    std::optional<CdText> cdText;   // for the cue sheet
    std::string extension;          // the format's, ".flac": the files' names in log and sheet
};

struct SecureRipResult {
    bool aborted = false;
    int filesStarted = 0;
    bool allProven = false;         // every track started was proven
    std::string accurateRipStatus;  // why there is no record (German); empty when there is one
    std::string logError;           // why Rip.log or Rip.cue could not be written
};

// Rows as in RunRipJob; a result reads e.g. "Track01.flac -->Fertig (AccurateRip:
// übereinstimmend, 12)". WAV files get the standard header; other formats go to encode.
SecureRipResult RunSecureRipJob(scsi::ISCSI& transport, const SecureRipParams& params,
                                const JobHooks& hooks, const RowTextFn& rowText,
                                const EncodeFn& encode);

}  // namespace plattmix::audiocd
