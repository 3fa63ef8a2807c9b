// The ASPI-style layer over the SCSI generic driver: answers the support query and the request
// blocks for the CD/DVD drives among /dev/sgN. Host adapter numbers are the kernel's SCSI host
// numbers; target and LUN are the kernel's too (the channel is not part of an address).
//
// An execute block is checked at once; if it can be carried out, its status is set to pending
// and a worker thread sends it with SG_IO. On completion the worker fills in host status,
// target status and sense data, signals the completion event if the block names one (an eventfd
// descriptor in the post-processing field; any other descriptor is left alone), and then
// publishes the final status byte, so a client that polls the status byte or waits on the event
// sees the whole answer. The other blocks are answered before Send returns.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <tuple>

#include "AspiDevices.h"
#include "AspiExec.h"

namespace plattmix::scsi::aspi {

class AspiLayer {
  public:
    // Sends one request to an open node: the SG_IO ioctl unless a test stands in.
    using Executor = std::function<int(int descriptor, sg_io_hdr_t& header)>;

    struct Options {
        std::string sysClass = "/sys/class";
        std::string devDir = "/dev";
        Executor execute;  // empty: the real ioctl
    };

    AspiLayer();
    explicit AspiLayer(Options options);
    // Waits for the request being sent; queued ones end aborted.
    ~AspiLayer();
    AspiLayer(const AspiLayer&) = delete;
    AspiLayer& operator=(const AspiLayer&) = delete;

    // Status in bits 8..15, adapter count in the low byte. Reads the drives anew.
    uint32_t SupportInfo();
    // Answers the block's status (pending for an execute block that was queued).
    uint32_t Send(uint8_t* srb);

  private:
    using Key = std::tuple<uint8_t, uint8_t, uint8_t>;
    struct Job {
        uint8_t* srb = nullptr;
        ExecFields fields;
        unsigned node = 0;
        uint32_t halfSeconds = 0;
    };

    const GenericDevices& Devices();  // with lock_ held
    // kSrbComplete with the drive, or why there is none.
    uint8_t Locate(SrbAddress address, const GenericDrive*& drive);
    uint8_t GetDeviceType(uint8_t* srb);
    uint8_t GetDiskInfo(uint8_t* srb);
    uint8_t GetSetTimeouts(uint8_t* srb);
    uint8_t StartExec(uint8_t* srb);
    void Work();
    void Run(const Job& job);
    int Descriptor(unsigned node);  // worker thread only

    Options options_;
    std::mutex lock_;
    std::optional<GenericDevices> devices_;
    std::map<Key, uint32_t> timeOuts_;
    std::deque<Job> queue_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::thread worker_;
    std::map<unsigned, int> descriptors_;
};

}  // namespace plattmix::scsi::aspi
