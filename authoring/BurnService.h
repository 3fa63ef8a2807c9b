// The disc-writing service seen through the few questions the program asks it. This interface
// is the one seam over libburn and libisoburn: LibburnService.cpp alone includes their headers,
// and tests script the states no drive here can produce.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace plattmix::authoring {

enum class MediaState {
    NoService,   // the library could not be started
    NoRecorder,  // no drive at that address, or one that cannot write
    NoDisc,
    Blank,
    Appendable,  // written, open for another session
    Closed,      // written and closed, or a session that cannot be imported
};

struct MediaInfo {
    MediaState state = MediaState::NoService;
    int64_t totalSectors = 0;  // 2048-byte blocks the disc holds in all
    int64_t freeBlocks = 0;    // blocks still free after the imported last session
};

class IBurnService {
  public:
    virtual ~IBurnService() = default;
    // Drive addresses are drive nodes ("/dev/sr0") or libburn's pseudo-drives ("stdio:PATH").
    virtual MediaInfo QueryMedia(const std::string& drive) = 0;
    // What the library complained about during the last query, for logs and the command
    // line; empty when it said nothing (or there is no library behind the service).
    virtual std::string LastMessage() const { return {}; }
};

// The service over libburn and libisoburn. The libraries start with the first query and stay
// until the process ends; drives are grabbed only for the time of a query, without exclusive
// locking. A "stdio:" file holding an ISO image is appendable (sessions grow at its end), one
// holding anything else is closed; a new or empty file is blank with the space its file system
// has left. A folder, a read-only file and a drive that cannot write are no recorder.
std::unique_ptr<IBurnService> MakeLibburnService();

}  // namespace plattmix::authoring
