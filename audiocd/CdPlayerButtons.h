// The ripping page's Play and Stop as the command strings they send to the cdaudio device: one
// device under a fixed alias, opened on the chosen drive at the first Play of the run and opened
// again when it no longer answers or the drive changes. The drive is named as its drive-list
// entry names it ("/dev/sr0", "/dev/sg1" for the fall-back's drives, an image file's path).
#pragma once

#include <cstdint>
#include <string>

#include "CdAudio.h"

namespace plattmix::audiocd {

// The window's player device alias.
inline constexpr const char* kPlayerAlias = "plattmixCD";

class CdPlayerButtons {
  public:
    static constexpr int kOpenMarker = 65535;  // the marker once the device is open

    CdPlayerButtons(CdAudio& cdAudio, std::string alias);

    // Play up to the choice of the row, on the drive of a drive-list entry: "stop A",
    // "status A length" (on failure the device is opened again, Reopen), and the device opened
    // when it has not been yet.
    void PrepareToPlay(const std::string& entry);
    // Play's last step for a row that starts at the sector: "play A from MS".
    MciReply PlayFrom(int32_t startLba);
    // "stop A".
    void Stop();
    // "stop A", "close A", then "Open "DRIVE:" Alias A wait shareable Type CDAudio" and
    // "set A time format milliseconds" for the drive of the entry.
    void Reopen(const std::string& entry);

    const std::string& Alias() const { return alias_; }
    bool IsOpen() const { return marker_ == kOpenMarker; }

  private:
    void Open(const std::string& entry);
    int64_t Send(const std::string& command, std::string* errorText = nullptr);

    CdAudio& cdAudio_;
    std::string alias_;
    int marker_ = 0;
};

}  // namespace plattmix::audiocd
