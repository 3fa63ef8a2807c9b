// plattmix-cli tray and play: the drive's tray state and door, and playing a track.
#pragma once

#include <iosfwd>

#include "CliArgs.h"
#include "IAudioSink.h"

namespace plattmix::cli {

// "tray --drive DRIVE" prints the tray state (1 open, 0 closed, -1 unknown); with "open" or
// "close" it moves the door instead.
int RunTrayCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

// "play --drive DRIVE --track N --seconds S": track N (its row in the track list) from its
// start, for S seconds at most, into the given audio output.
int RunPlayCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal,
                   const audiocd::AudioSinkFactory& sinks);
// The same into the desktop's audio output. Defined in TrayCommandAlsa.cpp, so that the drive
// commands' library (which the test bed links statically) does without ALSA.
int RunPlayCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal);

}  // namespace plattmix::cli
