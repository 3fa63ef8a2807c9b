// The disc-writing service seen through the few questions and jobs the program gives it. This
// interface is the one seam over libburn and libisoburn: the Libburn*.cpp files alone include
// their headers, and tests script the media and drives no machine here has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

// libisofs's image (typedef IsoImage there). The recorder hands out the one it writes; only code
// that includes libisofs.h looks inside.
struct Iso_Image;

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

// MMC profile numbers the jobs look at; libburn reports a "stdio:" file as kProfileStdioFile.
inline constexpr int kProfileNone = 0x00;
inline constexpr int kProfileCdRw = 0x0a;
inline constexpr int kProfileDvdMinusRwOverwrite = 0x13;
inline constexpr int kProfileDvdMinusRwSequential = 0x14;
inline constexpr int kProfileDvdPlusRw = 0x1a;
inline constexpr int kProfileStdioFile = 0xffff;

// The disc in an opened recorder.
struct RecorderInfo {
    MediaState state = MediaState::NoDisc;  // NoDisc, Blank, Appendable or Closed
    int profile = kProfileNone;             // of the medium in the drive
    bool multisession = false;  // a further session can be added (by the medium or emulated)
    int64_t totalSectors = 0;   // 2048-byte blocks: used and free
    int64_t freeBlocks = 0;     // where the next session can go
};

// Why a write did not start or did not end well; the numbers are the ones the program's
// error table knows.
enum class WriteError : uint32_t {
    None = 0,
    StreamTooLarge = 0xC0AA0404,     // the session does not fit on the medium
    MediaNotBlank = 0xC0AA0405,      // an image needs a blank medium
    MediaNotSupported = 0xC0AA0406,  // no medium, or one the recorder cannot write
    Failed = 0x80004005,             // anything else
};

// One look at a running write (or blanking): what the drive does, as the progress texts number
// it, and how far it got.
struct WriteProgress {
    int action = 0;          // 0..7 (see BurnProgress.h); other numbers are possible
    int elapsedSeconds = 0;  // since the write started
    int totalSeconds = 0;    // expected length of the whole write; 0 while unknown
    int64_t startLba = 0;    // first block of the session
    int64_t lastWrittenLba = 0;
    int64_t sectorCount = 0;  // blocks the session has; 0 while unknown
    bool running = true;      // false once the drive is idle again
};

// A drive grabbed for one burn or erase; released (and libburn's drive freed) with the object.
// One write or blanking at a time: Start..., Poll until it no longer runs, then Finish....
class IRecorder {
  public:
    virtual ~IRecorder() = default;

    // The medium as it is now.
    virtual RecorderInfo Info() = 0;

    // The image the next session is made of: the last session's tree read from an appendable
    // medium, an empty tree on a blank one. The recorder keeps it until it is released; nullptr
    // when the medium holds no image that can be read.
    virtual Iso_Image* LoadImage() = 0;

    // Starts writing the image of LoadImage as a new session (the whole tree: the imported
    // files stay where they are, the new ones follow). Checks first that it fits.
    virtual WriteError StartImageWrite(bool closeDisc) = 0;
    // Starts writing the ISO 9660 image in isoPath onto a blank medium.
    virtual WriteError StartIsoWrite(const std::string& isoPath, bool closeDisc) = 0;

    // The state of the running write or blanking; waits a moment while it runs, so that a
    // caller polling in a loop does not spin.
    virtual WriteProgress Poll() = 0;
    // Asks the running write to stop; Poll tells when it did.
    virtual void CancelWrite() = 0;
    // After the write ended: whether it wrote well. A session on a medium without sessions of
    // its own (an overwritable disc, a "stdio:" file) becomes the medium's current one here,
    // unless keepSession is false (a source file failed): then the previous one stays current.
    virtual WriteError FinishWrite(bool keepSession) = 0;

    // Quick blanking of a rewritable medium (a "stdio:" file: its image is made unreadable).
    virtual bool StartQuickBlank() = 0;
    // After the blanking ended: whether the medium is blank now.
    virtual bool FinishBlank() = 0;

    // Opens the tray (a pseudo-drive has none: nothing happens). False when it failed.
    virtual bool Eject() = 0;

    // Reading back what the last write put on the medium, once FinishWrite said it wrote well.
    // Makes the drive look at the medium anew, as after loading it; a drive that still shows
    // the medium as it was before the write gets its tray opened and closed once. False when
    // the medium cannot be read.
    virtual bool ReloadMedium() = 0;
    // The block where the last write's first byte went.
    virtual int64_t WrittenStartLba() const = 0;
    // Reads size bytes from block lba on through the drive into data. Returns the bytes read
    // before the first read error: size when all were read.
    virtual size_t ReadData(int64_t lba, char* data, size_t size) = 0;
    // The tree of the medium's last session as the drive reads it now; the bytes of its files
    // come from the drive while they are read. Kept until the next call or the release of the
    // recorder; nullptr when no tree can be read.
    virtual Iso_Image* ReadBackImage() = 0;

    // The first thing the library complained about since the recorder was opened, for the
    // command line and the logs; empty when it said nothing.
    virtual std::string LastMessage() const = 0;
};

class IBurnService {
  public:
    virtual ~IBurnService() = default;
    // Drive addresses are drive nodes ("/dev/sr0") or libburn's pseudo-drives ("stdio:PATH").
    virtual MediaInfo QueryMedia(const std::string& drive) = 0;
    // What the library complained about during the last query or open, for logs and the command
    // line; empty when it said nothing (or there is no library behind the service).
    virtual std::string LastMessage() const { return {}; }
    // The MMC profile of the medium the last query found (kProfileNone without one).
    virtual int LastProfile() const { return 0; }

    // Grabs the drive for a burn or an erase. Empty when there is no service (why = NoService)
    // or no writable drive at that address (why = NoRecorder); an empty drive opens, and its
    // Info says NoDisc. A service that only answers queries has no recorders.
    virtual std::unique_ptr<IRecorder> OpenRecorder(const std::string& drive, MediaState& why) {
        (void)drive;
        why = MediaState::NoService;
        return nullptr;
    }
};

// The service over libburn and libisoburn. The libraries start with the first query and stay
// until the process ends; drives are grabbed only for the time of a query, a burn or an erase,
// without exclusive locking. A "stdio:" file holding an ISO image is appendable (sessions grow
// at its end), one holding anything else is closed; a new or empty file is blank with the space
// its file system has left. A folder, a read-only file and a drive that cannot write are no
// recorder.
std::unique_ptr<IBurnService> MakeLibburnService();

}  // namespace plattmix::authoring
