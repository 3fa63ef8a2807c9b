// A burn service whose drive and medium a test scripts: the states and refusals no "stdio:"
// pseudo-drive can produce. It records what the jobs asked the recorder to do.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "BurnService.h"
#include "CompilationImage.h"

namespace plattmix::authoring::burntest {

struct Script {
    MediaInfo media;  // what a query finds
    bool opens = true;
    RecorderInfo info;
    WriteError startError = WriteError::None;
    bool blankWorks = true;
    // What the drive reads back after the write, from block 0 on; reading stops before the
    // block readErrorAt when it is set.
    std::string readBack;
    std::optional<int64_t> readErrorAt;
};

struct Calls {
    std::optional<bool> closeDisc;
    bool blanked = false;
    bool ejected = false;
};

class ScriptedRecorder final : public IRecorder {
  public:
    ScriptedRecorder(const Script& script, Calls& calls) : script_(script), calls_(calls) {}

    RecorderInfo Info() override { return script_.info; }

    Iso_Image* LoadImage() override {
        if (!image_)
            image_ = NewEmptyIsoImage("Alt");
        return image_.get();
    }

    WriteError StartImageWrite(bool closeDisc) override { return Start(closeDisc); }
    WriteError StartIsoWrite(const std::string&, bool closeDisc) override {
        return Start(closeDisc);
    }

    WriteProgress Poll() override {  // the write is over at once
        WriteProgress progress;
        progress.running = false;
        return progress;
    }
    void CancelWrite() override {}
    WriteError FinishWrite(bool) override { return WriteError::None; }

    bool StartQuickBlank() override { return calls_.blanked = true; }
    bool FinishBlank() override { return script_.blankWorks; }
    bool Eject() override { return calls_.ejected = true; }
    bool ReloadMedium() override { return true; }
    int64_t WrittenStartLba() const override { return 0; }

    size_t ReadData(int64_t lba, char* data, size_t size) override {
        const auto from = static_cast<size_t>(lba) * 2048;
        size_t end = std::min(from + size, script_.readBack.size());
        if (script_.readErrorAt)
            end = std::min(end, static_cast<size_t>(*script_.readErrorAt) * 2048);
        if (end <= from)
            return 0;
        script_.readBack.copy(data, end - from, from);
        return end - from;
    }
    Iso_Image* ReadBackImage() override { return nullptr; }
    std::string LastMessage() const override { return {}; }

  private:
    WriteError Start(bool closeDisc) {
        calls_.closeDisc = closeDisc;
        return script_.startError;
    }

    const Script& script_;
    Calls& calls_;
    std::shared_ptr<Iso_Image> image_;
};

class ScriptedBurnService final : public IBurnService {
  public:
    Script script;
    Calls calls;

    MediaInfo QueryMedia(const std::string&) override { return script.media; }

    std::unique_ptr<IRecorder> OpenRecorder(const std::string&, MediaState& why) override {
        if (!script.opens) {
            why = MediaState::NoRecorder;
            return nullptr;
        }
        return std::make_unique<ScriptedRecorder>(script, calls);
    }
};

}  // namespace plattmix::authoring::burntest
