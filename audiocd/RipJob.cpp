#include "RipJob.h"

#include <cstdio>
#include <optional>

#include "RipTrack.h"

namespace plattmix::audiocd {
namespace {

std::string FileName(const RipJobParams& params, const std::string& number) {
    return params.numberFirst ? number + params.namePrefix : params.namePrefix + number;
}

// One checked row: extracted to WAV, or into memory and through the encoder. The row keeps its
// "Schreibe..." when reading failed and the user got a message instead.
void RipRowTrack(scsi::ISCSI& transport, const RipJobParams& params, const JobHooks& hooks,
                 const RowTextFn& rowText, const EncodeFn& encode, size_t row,
                 const std::string& name) {
    const std::string basePath = params.targetFolder + name;
    const auto track = static_cast<int16_t>(row + 1);  // the row's position, not its number
    if (params.formatIndex == kWavFormatIndex) {
        const auto text =
            RipTrackWav(transport, params.handle, track, basePath + ".wav", name, hooks);
        if (text)
            rowText(row, *text);
        return;
    }
    const auto text =
        RipTrackConvert(transport, params.handle, track, basePath, name, encode, row, hooks);
    if (!text)
        return;
    rowText(row, *text);
    hooks.Yield();
}

}  // namespace

std::string NumberText(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", number);
    return text;
}

RipJobResult RunRipJob(scsi::ISCSI& transport, const RipJobParams& params, const JobHooks& hooks,
                       const RowTextFn& rowText, const EncodeFn& encode) {
    RipJobResult result;
    const auto setText = [&rowText](size_t row, const std::string& text) {
        if (rowText)
            rowText(row, text);
    };
    for (size_t row = 0; row < params.rows.size(); ++row) {
        if (!params.rows[row].checked)
            continue;
        setText(row, kTextWriting);
        hooks.Yield();
        // The window had its chance to take "Abbrechen", F9 or a close request.
        if (hooks.Aborted()) {
            setText(row, kTextAborted);
            hooks.Yield();
            result.aborted = true;
            break;
        }
        ++result.filesStarted;
        const int number =
            params.runningNumber ? result.filesStarted : params.rows[row].trackNumber;
        RipRowTrack(transport, params, hooks, setText, encode, row,
                    FileName(params, NumberText(number)));
    }
    return result;
}

}  // namespace plattmix::audiocd
