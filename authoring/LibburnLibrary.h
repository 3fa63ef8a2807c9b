// libburn, libisoburn and libisofs as the burn service starts them, and owners of what the
// service takes from them. Only the Libburn*.cpp files include this (and with it libburn.h).
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

// libisoburn's declarations name libisofs's image type as well.
#include <libburn/libburn.h>
#include <libisofs/libisofs.h>
// In C++ libburn declares its API in namespace burn, while libisoburn names libburn's structs
// unqualified: they have to be found from the global namespace.
using namespace burn;
#include <libisoburn/libisoburn.h>

#include "IsofsLibrary.h"

namespace plattmix::authoring {

inline constexpr int64_t kBurnBlockBytes = 2048;

// The three libraries, started on first use and finished when the process ends. Calls into them
// hold the mutex: the message queue and the drive list are the libraries' own global state.
class LibburnLibrary {
  public:
    static LibburnLibrary& Instance();

    bool ok() const { return ok_; }
    std::mutex& mutex() { return mutex_; }

  private:
    LibburnLibrary();
    ~LibburnLibrary();

    // libisofs as the image writer starts it, shared with libisoburn.
    IsofsLibrary isofs_;
    bool ok_ = false;
    std::mutex mutex_;
};

// The first queued message of severity SORRY or worse since the last call (the cause; later
// ones tell the consequences); the queue is emptied.
std::string TakeBurnMessages();

// What libburn's threads say only in messages, counted as TakeBurnMessages takes them: a write
// thread has ended (the drive shows idle a moment before that), and a write was refused because a
// thread of an earlier write still held the drive's slot (libburn then reports no failure).
struct BurnThreadEvents {
    uint64_t writesEnded = 0;
    uint64_t refusedAsBusy = 0;
};
BurnThreadEvents BurnThreadEventCounts();

// A drive grabbed through libisoburn, released (ejecting when asked) and its description freed
// with the scope.
class GrabbedDrive {
  public:
    // flags as isoburn_drive_aquire takes them.
    GrabbedDrive(std::string address, int flags);
    ~GrabbedDrive() { Release(false); }
    GrabbedDrive(const GrabbedDrive&) = delete;
    GrabbedDrive& operator=(const GrabbedDrive&) = delete;

    bool ok() const { return infos_ != nullptr; }
    const burn_drive_info& info() const { return infos_[0]; }
    burn_drive* drive() const { return infos_[0].drive; }

    void Release(bool eject);
    // Reads the medium's state anew, as after grabbing it (libisoburn keeps what it saw before
    // a blanking until then).
    bool Reassess();
    // Lets the drive go with its tray opened, then grabs it again with the tray closed: the
    // medium is loaded anew.
    bool Reload();

  private:
    bool Acquire(int flags);

    std::string address_;
    int flags_ = 0;
    burn_drive_info* infos_ = nullptr;
};

class ReadOptions {
  public:
    ReadOptions();
    ~ReadOptions() { isoburn_ropt_destroy(&options_, 0); }
    ReadOptions(const ReadOptions&) = delete;
    ReadOptions& operator=(const ReadOptions&) = delete;

    isoburn_read_opts* get() const { return options_; }

  private:
    isoburn_read_opts* options_ = nullptr;
};

// A drive the library can write: a recorder, or a pseudo-drive that is not read-only.
bool CanWrite(const GrabbedDrive& drive);

// True when address is "stdio:" followed by a folder (libburn would take it for a write-only
// pseudo-drive; nothing can be written to it).
bool IsStdioFolder(const std::string& address);

}  // namespace plattmix::authoring
