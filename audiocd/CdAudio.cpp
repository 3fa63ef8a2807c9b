#include "CdAudio.h"

#include <algorithm>
#include <cctype>

#include "CdAudioDisc.h"
#include "CdAudioErrors.h"
#include "CdAudioPlayer.h"
#include "DriveList.h"
#include "ScsiStatus.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::audiocd {

namespace {

constexpr int kReadyAttempts = 3;

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

MciReply Fail(int code, const std::string& detail = {}) {
    return MciReply{code, {}, CdAudioErrorText(code) + (detail.empty() ? "" : " " + detail)};
}

MciReply Answer(std::string result = {}) {
    return MciReply{0, std::move(result), {}};
}

int32_t Frames(int32_t lba) {
    return lba + modMSF::kPregapFrames;
}

// "E:" names the drive E, "E:\\" its root: the drive list's "/dev/sr0:" and "/dev/sr0:/" both
// name /dev/sr0.
std::string DriveName(std::string name) {
    while (!name.empty() && (name.back() == '/' || name.back() == '\\' || name.back() == ':'))
        name.pop_back();
    return name;
}

// The transport's handle for a drive name, or nothing: the handle itself, the drive's short name
// or the name its drive-list entry shows ("/dev/sg1" for a fall-back drive, whose handle is no
// name at all).
std::optional<std::string> FindHandle(scsi::ISCSI& transport, const std::string& name) {
    const std::string wanted = transport.DriveChar(name);
    for (int16_t i = 1; i <= transport.DriveCount(); ++i) {
        int16_t index = i;
        const std::string handle = transport.DriveHandle(index);
        const std::string shown = transport.DriveChar(handle);
        if (handle == name ||
            (!shown.empty() && (shown == name || shown == wanted || DriveEntryName(shown) == name)))
            return handle;
    }
    return std::nullopt;
}

// TEST UNIT READY as the status of an idle device needs it: the status and the sense bytes.
struct Readiness {
    bool ready = false;
    bool trayOpen = false;
};
Readiness AskReady(scsi::ISCSI& transport, std::string handle) {
    Readiness r;
    for (int i = 0; i < kReadyAttempts && !r.ready; ++i) {
        r.ready = modMMC::TestUnitReady(transport, handle) == scsi::kStatusGood;
        r.trayOpen = !r.ready && transport.LastASC() == scsi::kAscMediumNotPresent &&
                     transport.LastASCQ() == scsi::kAscqTrayOpen;
    }
    return r;
}

}  // namespace

struct CdAudio::Device {
    std::string handle;
    MciTimeFormat format = MciTimeFormat::Msf;
    std::unique_ptr<CdAudioPlayer> player;
    std::optional<int32_t> positionLba;  // where a playback stopped; nothing before the first
    std::optional<CdAudioDisc> disc;     // as last read; what status answers from while playing
    int errorCode = 0;                   // of the last playback
    std::string error;

    bool Playing() const { return player && player->Playing(); }

    // Takes the state of a playback that has ended.
    void Settle() {
        if (!player || player->Playing())
            return;
        player->Wait();
        positionLba = player->PositionLba();
        errorCode = player->ErrorCode();
        error = player->Error();
        player.reset();
    }

    void StopPlayer() {
        if (!player)
            return;
        player->Stop();
        Settle();
    }

    int32_t Position() const {
        if (player)
            return player->PositionLba();
        if (positionLba)
            return *positionLba;
        return disc ? disc->tracks.front().startLba : 0;
    }
};

CdAudio::CdAudio(scsi::ISCSI& transport, AudioSinkFactory sinks)
    : transport_(transport), sinks_(std::move(sinks)) {}

CdAudio::~CdAudio() = default;

void CdAudio::SetErrorBox(std::function<void(const std::string& text)> box) {
    errorBox_ = std::move(box);
}

CdAudio::Device* CdAudio::Find(std::string_view alias) {
    const auto it = devices_.find(Lower(alias));
    return it == devices_.end() ? nullptr : it->second.get();
}

MciReply CdAudio::SendString(std::string_view command) {
    const MciParse parsed = ParseMciCommand(command);
    if (!parsed.command)
        return Fail(parsed.error);
    const MciCommand& c = *parsed.command;
    if (c.verb == MciVerb::Open)
        return Open(c);
    Device* device = Find(c.device);
    if (device == nullptr)
        return Fail(kCdAudioNotOpen, c.device);
    device->Settle();
    switch (c.verb) {
        case MciVerb::Close:
            return Close(*device, Lower(c.device));
        case MciVerb::Stop:
            device->StopPlayer();
            return Answer();
        case MciVerb::Play:
            return Play(*device, c);
        case MciVerb::Status:
            return Status(*device, c);
        case MciVerb::Set:
            return Set(*device, c);
        case MciVerb::Open:
            break;
    }
    return Fail(kCdAudioUnknownCommand);
}

bool CdAudio::Execute(std::string_view command) {
    const MciReply reply = SendString(command);
    if (!reply.ok() && errorBox_)
        errorBox_(reply.errorText);
    return reply.ok();
}

std::string CdAudio::PlaybackError(std::string_view alias) {
    Device* device = Find(alias);
    if (device == nullptr)
        return {};
    device->Settle();
    return device->error;
}

MciReply CdAudio::Open(const MciCommand& command) {
    if (!command.type.empty() && Lower(command.type) != "cdaudio")
        return Fail(kCdAudioWrongType, command.type);
    const std::string alias = command.alias.empty() ? command.device : command.alias;
    const std::string key = Lower(alias);
    if (devices_.contains(key))
        return Fail(kCdAudioAliasInUse, alias);
    const auto handle = FindHandle(transport_, DriveName(command.device));
    if (!handle)
        return Fail(kCdAudioNoSuchDrive, command.device);
    auto device = std::make_unique<Device>();
    device->handle = *handle;
    devices_.emplace(key, std::move(device));
    return Answer();
}

MciReply CdAudio::Close(Device& device, const std::string& key) {
    device.StopPlayer();
    devices_.erase(key);
    return Answer();
}

MciReply CdAudio::Play(Device& device, const MciCommand& command) {
    device.StopPlayer();
    const auto disc = ReadCdAudioDisc(transport_, device.handle);
    if (!disc)
        return Fail(kCdAudioNotReady);
    device.disc = disc;

    int32_t first = device.Position();
    if (command.from) {
        const auto frames = ParsePosition(*command.from, device.format);
        if (!frames)
            return Fail(kCdAudioBadNumber, *command.from);
        first = *frames - modMSF::kPregapFrames;
    }
    const auto track = TrackIndexAt(*disc, first);
    if (!track)
        return Fail(kCdAudioOutOfRange);
    if (disc->tracks[*track].data)
        return Fail(kCdAudioNotAudio);
    int32_t end = AudioRunEnd(*disc, first);
    if (command.to) {
        const auto frames = ParsePosition(*command.to, device.format);
        if (!frames)
            return Fail(kCdAudioBadNumber, *command.to);
        const int32_t to = *frames - modMSF::kPregapFrames;
        if (to <= first || to > disc->leadOutLba)
            return Fail(kCdAudioOutOfRange);
        end = std::min(end, to);
    }

    std::unique_ptr<IAudioSink> sink = sinks_ ? sinks_() : nullptr;
    if (!sink)
        return Fail(kCdAudioNoOutput);
    if (const std::string why = sink->Open(); !why.empty())
        return Fail(kCdAudioNoOutput, why);
    device.errorCode = 0;
    device.error.clear();
    device.player =
        std::make_unique<CdAudioPlayer>(transport_, device.handle, first, end, std::move(sink));
    if (command.wait) {
        device.player->Wait();
        device.Settle();
        if (device.errorCode != 0)
            return MciReply{device.errorCode, {}, device.error};
    }
    return Answer();
}

MciReply CdAudio::Status(Device& device, const MciCommand& command) {
    const bool playing = device.Playing();
    if (command.item == MciStatusItem::Mode || command.item == MciStatusItem::MediaPresent) {
        const Readiness r = playing ? Readiness{true, false} : AskReady(transport_, device.handle);
        if (command.item == MciStatusItem::MediaPresent)
            return Answer(r.ready ? "true" : "false");
        if (playing)
            return Answer("playing");
        return Answer(r.ready ? "stopped" : r.trayOpen ? "open" : "not ready");
    }
    if (!playing) {
        device.disc = ReadCdAudioDisc(transport_, device.handle);
        if (!device.disc)
            return Fail(kCdAudioNotReady);
    }
    const CdAudioDisc& disc = *device.disc;
    std::optional<size_t> index;
    if (command.track) {
        const auto it =
            std::find_if(disc.tracks.begin(), disc.tracks.end(),
                         [&](const CdAudioTrack& t) { return t.number == *command.track; });
        if (it == disc.tracks.end())
            return Fail(kCdAudioOutOfRange, "Track " + std::to_string(*command.track));
        index = static_cast<size_t>(it - disc.tracks.begin());
    }
    const int32_t position = device.Position();
    switch (command.item) {
        case MciStatusItem::Length:
            if (index)
                return Answer(FormatPosition(
                    TrackEndLba(disc, *index) - disc.tracks[*index].startLba, device.format));
            return Answer(
                FormatPosition(disc.leadOutLba - disc.tracks.front().startLba, device.format));
        case MciStatusItem::Position:
            return Answer(FormatPosition(Frames(index ? disc.tracks[*index].startLba : position),
                                         device.format));
        case MciStatusItem::CurrentTrack: {
            // At the end of the disc the last track is still the current one.
            const auto at = TrackIndexAt(disc, std::min(position, disc.leadOutLba - 1));
            return Answer(std::to_string(disc.tracks[at.value_or(0)].number));
        }
        case MciStatusItem::NumberOfTracks:
            return Answer(std::to_string(disc.tracks.size()));
        case MciStatusItem::Mode:
        case MciStatusItem::MediaPresent:
            break;
    }
    return Fail(kCdAudioUnknownKeyword);
}

MciReply CdAudio::Set(Device& device, const MciCommand& command) {
    if (command.set == MciSetItem::TimeFormat) {
        device.format = command.timeFormat;
        return Answer();
    }
    const bool open = command.set == MciSetItem::DoorOpen;
    StopPlayersOn(device.handle);
    std::string handle = device.handle;
    if (modMMC::StartStopUnit(transport_, handle, true, !open) != scsi::kStatusGood)
        return Fail(kCdAudioDoorFailed);
    // A new disc may come in: its table is read again on the next request.
    device.positionLba.reset();
    return Answer();
}

void CdAudio::StopPlayersOn(const std::string& handle) {
    for (auto& [key, device] : devices_) {
        if (device->handle == handle)
            device->StopPlayer();
    }
}

int64_t SendCommand(CdAudio& cdAudio, std::string_view command, std::string* errorText) {
    const MciReply reply = cdAudio.SendString(command);
    if (errorText != nullptr)
        *errorText = reply.errorText;
    return MciValue(reply.result);
}

}  // namespace plattmix::audiocd
