// The cdaudio device: takes the program's command strings for playing a disc and moving the
// door, and plays digitally (READ CD through the transport, in a worker, into an audio sink).
// Any number of devices can be open at once, each under its alias, on the same drive too.
//
// Every command is sent from one thread (the window's); "status" while a device plays answers
// from what the worker reports and does not touch the transport. The transport is shared with
// the worker while a device plays: give it a CdAudioSharedTransport when others use it too.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "CdAudioCommand.h"
#include "IAudioSink.h"
#include "ISCSI.h"

namespace plattmix::audiocd {

class CdAudioPlayer;

struct MciReply {
    int error = 0;          // a CdAudioError, 0 on success
    std::string result;     // the return string ("245900", "playing", ...), empty for most
    std::string errorText;  // the error's text with what caused it; empty on success
    bool ok() const { return error == 0; }
};

class CdAudio {
  public:
    CdAudio(scsi::ISCSI& transport, AudioSinkFactory sinks);
    ~CdAudio();  // stops every player
    CdAudio(const CdAudio&) = delete;
    CdAudio& operator=(const CdAudio&) = delete;

    // One command string.
    MciReply SendString(std::string_view command);
    // The same, for commands whose failure the user should see: the error box gets the text.
    // True on success.
    bool Execute(std::string_view command);
    void SetErrorBox(std::function<void(const std::string& text)> box);

    // Why the last playback of the alias ended early (a read failure or the audio output);
    // empty when it did not or the alias is not open.
    std::string PlaybackError(std::string_view alias);

  private:
    struct Device;
    MciReply Open(const MciCommand& command);
    MciReply Close(Device& device, const std::string& key);
    MciReply Play(Device& device, const MciCommand& command);
    MciReply Status(Device& device, const MciCommand& command);
    MciReply Set(Device& device, const MciCommand& command);
    void StopPlayersOn(const std::string& handle);
    Device* Find(std::string_view alias);

    scsi::ISCSI& transport_;
    AudioSinkFactory sinks_;
    std::function<void(const std::string&)> errorBox_;
    std::map<std::string, std::unique_ptr<Device>> devices_;  // by alias in lower case
};

// The window's SendCommand: the reply's numeric value; errorText gets the error's text (empty
// on success).
int64_t SendCommand(CdAudio& cdAudio, std::string_view command, std::string* errorText = nullptr);

}  // namespace plattmix::audiocd
