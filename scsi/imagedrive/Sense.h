// A command's outcome as the drive reports it: the status, the sense key/ASC/ASCQ that go with a
// CHECK CONDITION, and how many bytes went into the caller's buffer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ScsiStatus.h"

namespace plattmix::scsi::imagedrive {

struct Sense {
    uint8_t key = 0, asc = 0, ascq = 0;
    bool operator==(const Sense&) const = default;
};

struct CommandResult {
    int32_t status = kStatusGood;
    Sense sense;
    size_t transferred = 0;

    static CommandResult Good(size_t bytes = 0) { return {kStatusGood, {}, bytes}; }
    static CommandResult Check(Sense sense) { return {kStatusCheckCondition, sense, 0}; }
    static CommandResult Check(uint8_t key, uint8_t asc, uint8_t ascq) {
        return Check(Sense{key, asc, ascq});
    }
    static CommandResult TimedOut() { return {kStatusNotDelivered, {}, 0}; }
};

}  // namespace plattmix::scsi::imagedrive
