// Whether a drive's tray is open, asked on a short pass-through path of its own: the drive node
// is opened for this question alone, whatever transport the program otherwise uses. A drive
// without a block node is asked through its transport.
//
// Every command on this path answers a 20-byte result: byte 0 the SCSI status (2 when the
// request itself failed), bytes 1..19 the first 19 bytes of fixed-format sense data, so that
// byte 3 holds the sense key, byte 13 the ASC and byte 14 the ASCQ.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "ISCSI.h"

namespace plattmix::scsi {

inline constexpr int16_t kTrayOpen = 1;
inline constexpr int16_t kTrayClosed = 0;
inline constexpr int16_t kTrayUnknown = -1;

inline constexpr int kTrayResultLength = 20;
inline constexpr int16_t kTrayTimeOut = 5;            // seconds, for each command
inline constexpr uint8_t kTraySenseLength = 14;       // sense bytes asked for
inline constexpr uint8_t kMediaEventClass = 16;       // GET EVENT STATUS: media class
inline constexpr uint16_t kMediaEventAllocation = 8;  // reply bytes asked for
inline constexpr int kTurRetries = 5;                 // further TEST UNIT READYs at most
inline constexpr int kTurRetryPauseMs = 1000;         // after each failing retry

using TrayResult = std::array<uint8_t, kTrayResultLength>;

// The result for a status and the sense bytes the drive wrote. Descriptor-format sense is
// moved to the fixed-format places, so the three bytes are always found at 3, 13 and 14.
TrayResult MakeTrayResult(int32_t status, std::span<const uint8_t> sense);
uint8_t TrayStatus(const TrayResult& result);
uint8_t TraySenseKey(const TrayResult& result);  // low four bits of byte 3
uint8_t TrayAsc(const TrayResult& result);
uint8_t TrayAscq(const TrayResult& result);

// -1 when bit number `bit` is set in value, else 0.
int16_t BitSet(int32_t value, int bit);

// The TEST UNIT READY answer that ends the retries at once: status 0 or medium not present.
bool TurIsFinal(const TrayResult& result);
// The sense that calls for retries: becoming ready (04/01) or medium changed (key 6, 28).
bool TurCallsForRetries(const TrayResult& result);

// What the tray state follows from the TEST UNIT READY answer.
enum class TrayDecision { Closed, Open, AskMediaEvent, Unknown };
TrayDecision DecideFromUnitReady(const TrayResult& result);
// The state from GET EVENT STATUS NOTIFICATION's result and reply (media class): bit 0 of the
// media status byte 5 when the request succeeded and the event data length is not 0.
int16_t TrayStateFromMediaEvent(const TrayResult& result, std::span<const uint8_t> reply);

// The path's one command: the command block, data from the device into `data`.
class ITrayDevice {
  public:
    virtual ~ITrayDevice() = default;
    virtual TrayResult Exec(std::span<const uint8_t> cdb, std::span<uint8_t> data) = 0;
};

// Waits between retries; the default sleeps.
using TrayPauseFn = std::function<void(int milliseconds)>;

// TEST UNIT READY; on becoming-ready or medium-changed sense up to five more, stopping at the
// first good one and pausing after each failing one, then one last whose result is the answer.
TrayResult TestUnitReadyRetry(ITrayDevice& device, const TrayPauseFn& pause = {});
// GET EVENT STATUS NOTIFICATION, polled, for the given class request.
TrayResult GetEventStatus(ITrayDevice& device, uint8_t classes, std::span<uint8_t> reply,
                          uint16_t allocation);

// 1 tray open, 0 closed, -1 unknown, from a device already open.
int16_t GetTrayState(ITrayDevice& device, const TrayPauseFn& pause = {});
// The same for a drive node ("/dev/sr0", "sr0", "/dev/sr0:"), opened and closed here; -1 when
// it cannot be opened.
int16_t GetTrayState(const std::string& drive, const TrayPauseFn& pause = {});
// For a drive of a transport: the path of its block node (BlockNodeOf) when it has one, else
// the transport itself with the drive's handle (the disc-image drive, and the fall-back's drives
// without the sr driver).
int16_t GetTrayState(ISCSI& transport, const std::string& handle, const TrayPauseFn& pause = {});

}  // namespace plattmix::scsi
