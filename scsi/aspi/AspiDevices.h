// What the generic-driver layer serves, read from sysfs: the SCSI hosts, which become the host
// adapter numbers unchanged, and the CD/DVD drives among the generic driver's nodes, each with
// its host, channel, target and LUN.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "AspiSrb.h"

namespace plattmix::scsi::aspi {

struct GenericDrive {
    unsigned host = 0, channel = 0, target = 0, lun = 0;
    unsigned node = 0;  // N of /dev/sgN
};

struct GenericDevices {
    bool driverPresent = false;  // the generic driver's class is registered
    std::set<unsigned> hosts;
    std::vector<GenericDrive> drives;  // by host, target, LUN, then channel

    // The drive at a block's address: the lowest channel's when several channels hold one.
    const GenericDrive* Find(SrbAddress address) const;
    bool HasHost(unsigned host) const { return hosts.count(host) != 0; }
    // The support answer's count: one more than the highest host number, at most 255.
    uint8_t AdapterCount() const;
};

// "H:C:T:L", the name sysfs gives a SCSI device.
std::optional<GenericDrive> ParseHctl(const std::string& text);

// Reads <sysClass>/scsi_host and <sysClass>/scsi_generic; only nodes whose device type is 5
// (CD/DVD) are kept.
GenericDevices ScanGenericDevices(const std::string& sysClass);

}  // namespace plattmix::scsi::aspi
