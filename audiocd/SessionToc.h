// The disc's tracks grouped into sessions, each with its own lead-out, and the lead-out of the
// whole disc, as READ TOC tells them: the table of contents (format 0) gives the tracks and
// the disc's lead-out, the full TOC (format 2, point A2 of each session) or, from a drive
// without it, the session information (format 1) the sessions. A disc of one session (or a
// drive that answers neither) gives one session ending at the disc's lead-out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "modMMC.h"

namespace plattmix::audiocd {

struct TocTrack {
    int number = 0;  // as the disc numbers it
    int session = 1;
    int32_t startLba = 0;  // INDEX 01
    bool data = false;
};

struct TocSession {
    int number = 1;
    size_t firstTrack = 0;  // indexes into SessionToc::tracks
    size_t lastTrack = 0;
    int32_t leadOutLba = 0;  // the first sector after the session's last track
};

struct SessionToc {
    std::vector<TocTrack> tracks;      // in table order
    std::vector<TocSession> sessions;  // in disc order, at least one
    int32_t leadOutLba = 0;            // the whole disc's, after its last session

    // The first sector after the track at index: the next track's start, or for the last track
    // of a session that session's lead-out (the disc's lead-out for the last session).
    int32_t TrackEndLba(size_t index) const;
    // Whether the track at index ends a session that another session follows.
    bool EndsEarlierSession(size_t index) const;
    // The session holding the track at index.
    const TocSession& SessionOf(size_t index) const;
};

// One session from a table of contents (addresses in MSF form when msf is true, else LBA).
// Nothing when the table has no track or no lead-out, or an address beyond any disc (±2^30).
std::optional<SessionToc> SessionTocFromToc(const modMMC::Toc& toc, bool msf);

// Sessions from the full TOC: each track's session from its point, each session's lead-out
// from its point A2. False, and the sessions left as they were, when the full TOC does not fit
// the table (a track missing, a lead-out not between its session's last track and the next
// session).
bool ApplyFullToc(SessionToc& toc, const modMMC::FullToc& full);

// Two sessions from the session information: the last session from its first track on, the
// session before it ending a session gap (lead-out, lead-in, pre-gap: 11400 sectors) before.
// False, and nothing changed, for a single session or a first track the table does not hold.
bool ApplySessionInfo(SessionToc& toc, const modMMC::SessionInfo& info);

// Asks the drive for the full TOC, else for the session information, and applies the first
// that fits; toc stays one session when neither does.
void ReadSessions(scsi::ISCSI& transport, std::string& handle, SessionToc& toc);

// READ TOC format 0 in LBA form and the sessions. Nothing when the table cannot be read.
std::optional<SessionToc> ReadSessionToc(scsi::ISCSI& transport, std::string handle);

// Every sector of a track, none left off: from its start to the sector before its end
// (TrackEndLba), both inclusive.
struct ExactTrackBounds {
    int32_t firstLba = 0;
    int32_t lastLba = 0;  // the track's last sector, read too
    int32_t Sectors() const { return lastLba - firstLba + 1; }
};

// position counts from 1 in table order, whatever number the disc gives its first track (as
// the track list's rows and the extraction count). Nothing for a position outside the table
// or a track without sectors.
std::optional<ExactTrackBounds> ExactBoundsOf(const SessionToc& toc, int position);

}  // namespace plattmix::audiocd
