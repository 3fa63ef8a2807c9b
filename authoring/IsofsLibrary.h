// libisofs as one shared resource of the process. The first owner that finds it uninitialised
// initialises it; nobody here finishes it, because libisoburn (the burn service) shares the same
// library state and would lose it. Messages go to the queue (never to stderr) so a job can name
// what went wrong.
#pragma once

#include <string>

namespace plattmix::authoring {

class IsofsLibrary {
  public:
    IsofsLibrary();

    IsofsLibrary(const IsofsLibrary&) = delete;
    IsofsLibrary& operator=(const IsofsLibrary&) = delete;

    bool ok() const { return ok_; }

    // Empties the message queue; returns the text of the message the image with imageId left,
    // else of the newest message, empty when there was none.
    static std::string TakeMessages(int imageId = -1);

  private:
    bool ok_ = false;
};

}  // namespace plattmix::authoring
