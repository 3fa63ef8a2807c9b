// The desktop's audio output through ALSA (which reaches PipeWire and PulseAudio through its
// default device). Linked from plattmix_audiocd_alsa, so programs without sound stay free of it.
#pragma once

#include <memory>
#include <string>

#include "IAudioSink.h"

namespace plattmix::audiocd {

inline constexpr const char* kAlsaDefaultDevice = "default";

std::unique_ptr<IAudioSink> CreateAlsaSink(const std::string& device = kAlsaDefaultDevice);
AudioSinkFactory AlsaSinkFactory(const std::string& device = kAlsaDefaultDevice);

}  // namespace plattmix::audiocd
