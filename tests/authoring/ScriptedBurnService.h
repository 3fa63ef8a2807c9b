// A burn service whose drive and medium a test scripts: the states, refusals and progress no
// drive here can produce. It records what the jobs asked the recorder to do.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BurnService.h"
#include "CompilationImage.h"

namespace plattmix::authoring::burntest {

struct Script {
    bool opens = true;
    MediaState why = MediaState::NoRecorder;  // when it does not open
    RecorderInfo info;
    bool imageLoads = true;
    WriteError startError = WriteError::None;
    // What Poll reports while the write runs, in order; after the last one the drive is idle.
    std::vector<WriteProgress> progress;
    WriteError finishError = WriteError::None;
    bool blankWorks = true;
    // What the drive reads back after the write, from block 0 on; reading stops before the
    // block readErrorAt when it is set.
    std::string readBack;
    std::optional<int64_t> readErrorAt;
};

struct Calls {
    int opened = 0;
    bool imageLoaded = false;
    int isoWrites = 0;
    int imageWrites = 0;
    std::optional<bool> closeDisc;
    bool cancelled = false;
    std::optional<bool> keepSession;
    bool blanked = false;
    bool ejected = false;
};

class ScriptedRecorder final : public IRecorder {
  public:
    ScriptedRecorder(const Script& script, Calls& calls) : script_(script), calls_(calls) {}

    RecorderInfo Info() override { return script_.info; }

    Iso_Image* LoadImage() override {
        calls_.imageLoaded = true;
        if (!script_.imageLoads)
            return nullptr;
        if (!image_)
            image_ = NewEmptyIsoImage("Alt");
        return image_.get();
    }

    WriteError StartImageWrite(bool closeDisc) override {
        ++calls_.imageWrites;
        return Start(closeDisc);
    }
    WriteError StartIsoWrite(const std::string&, bool closeDisc) override {
        ++calls_.isoWrites;
        return Start(closeDisc);
    }

    WriteProgress Poll() override {
        if (calls_.cancelled || next_ >= script_.progress.size()) {
            WriteProgress idle;
            idle.running = false;
            return idle;
        }
        return script_.progress[next_++];
    }

    void CancelWrite() override { calls_.cancelled = true; }

    WriteError FinishWrite(bool keepSession) override {
        calls_.keepSession = keepSession;
        return calls_.cancelled ? WriteError::Failed : script_.finishError;
    }

    bool StartQuickBlank() override {
        calls_.blanked = true;
        return true;
    }
    bool FinishBlank() override { return script_.blankWorks; }

    bool Eject() override {
        calls_.ejected = true;
        return true;
    }

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
    size_t next_ = 0;
};

class ScriptedBurnService final : public IBurnService {
  public:
    Script script;
    Calls calls;

    MediaInfo QueryMedia(const std::string&) override { return {}; }

    std::unique_ptr<IRecorder> OpenRecorder(const std::string&, MediaState& why) override {
        ++calls.opened;
        if (!script.opens) {
            why = script.why;
            return nullptr;
        }
        return std::make_unique<ScriptedRecorder>(script, calls);
    }
};

// A progress record of the given action.
inline WriteProgress Progress(int action, int elapsed = 0, int total = 0, int64_t start = 0,
                              int64_t last = 0, int64_t count = 0) {
    WriteProgress progress;
    progress.action = action;
    progress.elapsedSeconds = elapsed;
    progress.totalSeconds = total;
    progress.startLba = start;
    progress.lastWrittenLba = last;
    progress.sectorCount = count;
    return progress;
}

}  // namespace plattmix::authoring::burntest
