// Asks the AccurateRip server for a disc's record.
#pragma once

#include <functional>
#include <string>

#include "AccurateRipIds.h"
#include "AccurateRipRecord.h"
#include "HttpGet.h"

namespace plattmix::audiocd {

inline constexpr const char* kAccurateRipServer = "http://www.accuraterip.com/accuraterip/";
inline constexpr const char* kAccurateRipUnknownDisc =
    "Die Disk ist bei AccurateRip nicht bekannt.";

// server + the record's path (a slash put between them when server has none at its end).
std::string AccurateRipRecordUrl(const std::string& server, const AccurateRipIds& ids);

// The parsed record, or no responses and the reason in German: kAccurateRipUnknownDisc when the
// server does not have it (404), "AccurateRip: " and the transfer's reason when there was no
// reply, the status for any other answer, kAccurateRipDamaged for a damaged or short reply.
// stop is asked during the transfer; true ends it.
AccurateRipRecord FetchAccurateRipRecord(const std::string& server, const AccurateRipIds& ids,
                                         const HttpGetFn& get, std::function<bool()> stop = {});

}  // namespace plattmix::audiocd
