// The cdaudio device's error codes and the texts it gives for them.
#pragma once

#include <string>

namespace plattmix::audiocd {

enum CdAudioError : int {
    kCdAudioOk = 0,
    kCdAudioUnknownCommand = 1,  // the first word is no command of the device
    kCdAudioMissingDevice = 2,   // no device or alias after the command
    kCdAudioUnknownKeyword = 3,  // a word the command does not take
    kCdAudioMissingValue = 4,    // a keyword without its value
    kCdAudioBadNumber = 5,       // a value that is no number or time
    kCdAudioOpenQuote = 6,       // a quotation mark is not closed
    kCdAudioWrongType = 7,       // a device type other than CDAudio
    kCdAudioNoSuchDrive = 8,     // no drive of that name
    kCdAudioAliasInUse = 9,      // open with an alias that is already open
    kCdAudioNotOpen = 10,        // no open device has that alias
    kCdAudioNotReady = 11,       // no disc, or the drive is not ready
    kCdAudioOutOfRange = 12,     // a position or track the disc does not have
    kCdAudioNotAudio = 13,       // the position lies in a data track
    kCdAudioNoOutput = 14,       // the audio output could not be opened
    kCdAudioReadFailed = 15,     // READ CD failed while playing
    kCdAudioDoorFailed = 16,     // START STOP UNIT failed
    kCdAudioBadTimeFormat = 17,  // a time format the device does not know
};

// The text for a code; codes the table does not hold get a text naming the number.
std::string CdAudioErrorText(int code);

}  // namespace plattmix::audiocd
