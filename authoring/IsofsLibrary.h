// libisofs as one shared resource: the first owner initialises the library, the last one
// finishes it. Messages go to a queue (never to stderr) so a job can name what went wrong.
#pragma once

#include <string>

namespace plattmix::authoring {

class IsofsLibrary {
  public:
    IsofsLibrary();
    ~IsofsLibrary();

    IsofsLibrary(const IsofsLibrary&) = delete;
    IsofsLibrary& operator=(const IsofsLibrary&) = delete;

    bool ok() const { return ok_; }

    // Empties the message queue; returns the text of the oldest message of at least "SORRY"
    // severity, empty when there was none.
    static std::string TakeMessages();

  private:
    bool ok_ = false;
};

}  // namespace plattmix::authoring
