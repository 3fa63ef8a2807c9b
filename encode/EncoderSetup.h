// The one builder that turns a row of the format table into an opened FFmpeg encoder.
#pragma once

#include "FfmpegOwners.h"
#include "OutputFormats.h"

namespace plattmix::encode {

// The encoder of a compressed format, opened with the row's codec, sample rate, stereo layout,
// bit rate, sample format, declared bits per sample and profile. globalHeader: the container
// wants the codec's set-up in its header (MP4). Empty when FFmpeg lacks the codec or refuses
// one of the values.
ff::CodecContext OpenEncoder(const OutputFormat& format, bool globalHeader);

}  // namespace plattmix::encode
