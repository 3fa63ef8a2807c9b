#include "CdPlayerButtons.h"

#include "CdAudioCommand.h"
#include "CdAudioDoor.h"
#include "modMSF.h"

namespace plattmix::audiocd {

CdPlayerButtons::CdPlayerButtons(CdAudio& cdAudio, std::string alias)
    : cdAudio_(cdAudio), alias_(std::move(alias)) {}

int64_t CdPlayerButtons::Send(const std::string& command, std::string* errorText) {
    return SendCommand(cdAudio_, command, errorText);
}

void CdPlayerButtons::Open(const std::string& entry) {
    Send("Open " + MciQuote(DriveFromEntry(entry) + ":") + " Alias " + alias_ +
         " wait shareable Type CDAudio");
    Send("set " + alias_ + " time format milliseconds");
    marker_ = kOpenMarker;
}

void CdPlayerButtons::PrepareToPlay(const std::string& entry) {
    Send("stop " + alias_);
    std::string error;
    Send("status " + alias_ + " length", &error);
    if (!error.empty())
        Reopen(entry);
    if (!IsOpen())
        Open(entry);
}

MciReply CdPlayerButtons::PlayFrom(int32_t startLba) {
    return cdAudio_.SendString(
        "play " + alias_ + " from " +
        std::to_string(FramesToMilliseconds(startLba + modMSF::kPregapFrames)));
}

void CdPlayerButtons::Stop() {
    Send("stop " + alias_);
}

void CdPlayerButtons::Reopen(const std::string& entry) {
    Send("stop " + alias_);
    Send("close " + alias_);
    Open(entry);
}

}  // namespace plattmix::audiocd
