// The tray state from TEST UNIT READY's sense (fixed or descriptor format) and the GET EVENT
// STATUS NOTIFICATION reply (media class), as the polling timer asks for it.
//
// Input parts, one per command the question sends, in order (the last one answers every further
// command): status, then the sense bytes' count and the sense bytes, then the reply bytes.
#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "FuzzInput.h"
#include "TrayState.h"

namespace {

using namespace plattmix;

class ScriptedTray final : public scsi::ITrayDevice {
  public:
    explicit ScriptedTray(fuzz::Parts parts) {
        for (auto part = parts.Next(); !part.empty(); part = parts.Next())
            answers_.push_back(part);
    }

    scsi::TrayResult Exec(std::span<const uint8_t> /*cdb*/, std::span<uint8_t> data) override {
        if (answers_.empty())
            return scsi::MakeTrayResult(2, {});
        const auto answer = answers_[std::min(next_++, answers_.size() - 1)];
        const size_t senseLength =
            answer.size() > 1 ? std::min<size_t>(answer[1], answer.size() - 2) : 0;
        const auto sense = answer.subspan(std::min<size_t>(2, answer.size()), senseLength);
        const auto reply = answer.subspan(std::min<size_t>(2 + senseLength, answer.size()));
        std::copy_n(reply.begin(), std::min(reply.size(), data.size()), data.begin());
        return scsi::MakeTrayResult(answer[0], sense);
    }

  private:
    std::vector<std::span<const uint8_t>> answers_;
    size_t next_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptedTray tray(fuzz::Parts(data, size));
    const int16_t state = scsi::GetTrayState(tray, [](int) {});
    if (state != scsi::kTrayOpen && state != scsi::kTrayClosed && state != scsi::kTrayUnknown)
        std::abort();
    return 0;
}
