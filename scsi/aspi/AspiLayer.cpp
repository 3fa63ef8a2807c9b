#include "AspiLayer.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <span>

#include "MmcOpcodes.h"
#include "ScsiStatus.h"

namespace plattmix::scsi::aspi {

namespace {

void Publish(uint8_t* srb, uint8_t status) {
    std::atomic_ref<uint8_t>(srb[kSrbStatusByte]).store(status, std::memory_order_release);
}

bool IsEventDescriptor(int descriptor) {
    if (descriptor < 0)
        return false;
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, 64> target{};
    const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
    return length > 0 &&
           std::string_view(target.data(), static_cast<size_t>(length)) == "anon_inode:[eventfd]";
}

void Signal(int descriptor) {
    if (!IsEventDescriptor(descriptor))
        return;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(descriptor, &one, sizeof one);
}

int OpenNode(const std::string& path) {
    int fd = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    return fd;
}

int SendSgIo(int descriptor, sg_io_hdr_t& header) {
    return ::ioctl(descriptor, SG_IO, &header);
}

}  // namespace

AspiLayer::AspiLayer() : AspiLayer(Options{}) {}

AspiLayer::AspiLayer(Options options) : options_(std::move(options)) {
    if (!options_.execute)
        options_.execute = SendSgIo;
}

AspiLayer::~AspiLayer() {
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (worker_.joinable())
        worker_.join();
    for (const Job& job : queue_) {
        job.srb[kExecHostStatusAt] = kHostOk;
        Signal(job.fields.event);
        Publish(job.srb, kSrbAborted);
    }
    for (const auto& [node, fd] : descriptors_) {
        if (fd >= 0)
            ::close(fd);
    }
}

const GenericDevices& AspiLayer::Devices() {
    if (!devices_)
        devices_ = ScanGenericDevices(options_.sysClass);
    return *devices_;
}

uint32_t AspiLayer::SupportInfo() {
    std::lock_guard guard(lock_);
    devices_ = ScanGenericDevices(options_.sysClass);
    uint8_t status = kSrbComplete;
    if (!devices_->driverPresent)
        status = kSrbFailedInit;
    else if (devices_->hosts.empty())
        status = kSrbNoAdapters;
    const uint8_t count = status == kSrbComplete ? devices_->AdapterCount() : 0;
    return uint32_t{status} << 8 | count;
}

uint32_t AspiLayer::Send(uint8_t* srb) {
    if (srb == nullptr)
        return kSrbInvalidSrb;
    uint8_t status = kSrbInvalidCommand;
    switch (srb[kSrbCommandByte]) {
        case kSrbGetDeviceType:
            status = GetDeviceType(srb);
            break;
        case kSrbExecScsiCmd:
            return StartExec(srb);
        case kSrbGetDiskInfo:
            status = GetDiskInfo(srb);
            break;
        case kSrbGetSetTimeouts:
            status = GetSetTimeouts(srb);
            break;
        default:
            break;
    }
    Publish(srb, status);
    return status;
}

uint8_t AspiLayer::Locate(SrbAddress address, const GenericDrive*& drive) {
    const GenericDevices& devices = Devices();
    drive = devices.Find(address);
    if (drive != nullptr)
        return kSrbComplete;
    return devices.HasHost(address.hostAdapter) ? kSrbNoDevice : kSrbInvalidHostAdapter;
}

uint8_t AspiLayer::GetDeviceType(uint8_t* srb) {
    std::lock_guard guard(lock_);
    const GenericDrive* drive = nullptr;
    const uint8_t status = Locate(ReadAddress(std::span(srb, kDeviceTypeSrbSize)), drive);
    if (drive != nullptr)
        srb[kDeviceTypeAt] = kDeviceTypeCdDvd;
    return status;
}

uint8_t AspiLayer::GetDiskInfo(uint8_t* srb) {
    std::lock_guard guard(lock_);
    const GenericDrive* drive = nullptr;
    const uint8_t status = Locate(ReadAddress(std::span(srb, kDiskInfoSrbSize)), drive);
    if (drive == nullptr)
        return status;
    // The drive-number byte carries N of /dev/sgN.
    if (drive->node > 0xFF)
        return kSrbError;
    srb[kDiskInfoFlagsAt] = 0;
    srb[kDiskInfoDriveAt] = static_cast<uint8_t>(drive->node);
    return status;
}

uint8_t AspiLayer::GetSetTimeouts(uint8_t* srb) {
    const std::span<uint8_t> block(srb, kTimeoutSrbSize);
    const uint8_t direction = srb[kSrbFlagsByte] & (kSrbDataIn | kSrbDataOut);
    if (direction != kSrbDataIn && direction != kSrbDataOut)
        return kSrbInvalidSrb;
    std::lock_guard guard(lock_);
    const SrbAddress address = ReadAddress(block);
    const GenericDrive* drive = nullptr;
    const uint8_t status = Locate(address, drive);
    if (drive == nullptr)
        return status;
    const Key key{address.hostAdapter, address.target, address.lun};
    if (direction == kSrbDataOut) {
        timeOuts_[key] = ReadLittle32(block, kTimeoutAt);
    } else {
        const auto it = timeOuts_.find(key);
        WriteLittle32(block, kTimeoutAt, it != timeOuts_.end() ? it->second : kAspiDefaultTimeOut);
    }
    return kSrbComplete;
}

uint8_t AspiLayer::StartExec(uint8_t* srb) {
    const std::span<uint8_t, kExecSrbSize> block(srb, kExecSrbSize);
    const ExecFields fields = ReadExecSrb(block);
    block[kExecHostStatusAt] = kHostOk;
    block[kExecTargetStatusAt] = 0;
    uint8_t status = CheckExecSrb(fields);
    if (status == kSrbPending) {
        std::lock_guard guard(lock_);
        const GenericDrive* drive = nullptr;
        status = Locate(fields.address, drive);
        if (drive != nullptr) {
            const auto it = timeOuts_.find(
                {fields.address.hostAdapter, fields.address.target, fields.address.lun});
            Publish(srb, kSrbPending);
            queue_.push_back(Job{srb, fields, drive->node, it != timeOuts_.end() ? it->second : 0});
            if (!worker_.joinable())
                worker_ = std::thread([this] { Work(); });
            wake_.notify_one();
            return kSrbPending;
        }
    }
    Signal(fields.event);
    Publish(srb, status);
    return status;
}

void AspiLayer::Work() {
    for (;;) {
        Job job;
        {
            std::unique_lock guard(lock_);
            wake_.wait(guard, [this] { return stopping_ || !queue_.empty(); });
            if (stopping_)
                return;
            job = queue_.front();
            queue_.pop_front();
        }
        Run(job);
    }
}

void AspiLayer::Run(const Job& job) {
    SgIoRequest request;
    BuildExecRequest(request, job.fields, job.halfSeconds);
    const int fd = Descriptor(job.node);
    const int result = fd >= 0 ? options_.execute(fd, request.header) : -1;
    const std::span<uint8_t, kExecSrbSize> block(job.srb, kExecSrbSize);
    const uint8_t status = FinishExecSrb(block, request.header, request.sense, result);
    // The event first: a client that saw the status may close the event at once.
    Signal(job.fields.event);
    Publish(job.srb, status);
}

int AspiLayer::Descriptor(unsigned node) {
    const auto it = descriptors_.find(node);
    if (it != descriptors_.end() && it->second >= 0)
        return it->second;
    const int fd = OpenNode(options_.devDir + "/sg" + std::to_string(node));
    descriptors_[node] = fd;
    return fd;
}

}  // namespace plattmix::scsi::aspi
