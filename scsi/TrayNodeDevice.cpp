#include "TrayNodeDevice.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "ScsiStatus.h"
#include "SgIo.h"

namespace plattmix::scsi {

TrayNodeDevice::TrayNodeDevice(const std::string& node) {
    if (node.empty())
        return;
    fd_ = ::open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0)
        fd_ = ::open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

TrayNodeDevice::~TrayNodeDevice() {
    if (fd_ >= 0)
        ::close(fd_);
}

TrayResult TrayNodeDevice::Exec(std::span<const uint8_t> cdb, std::span<uint8_t> data) {
    if (fd_ < 0)
        return MakeTrayResult(kStatusCheckCondition, {});
    SgIoRequest request;
    BuildSgIoRequest(request, cdb, static_cast<uint8_t>(cdb.size()), 0,
                     data.empty() ? nullptr : data.data(), static_cast<int32_t>(data.size()),
                     kTrayTimeOut);
    request.header.mx_sb_len = kTraySenseLength;
    const int rc = ::ioctl(fd_, SG_IO, &request.header);
    const SgIoResult result = InterpretSgIo(request.header, request.sense, rc);
    if (result.status == kStatusNotDelivered)
        return MakeTrayResult(kStatusCheckCondition, {});
    const size_t written = std::min<size_t>(request.header.sb_len_wr, kTraySenseLength);
    return MakeTrayResult(result.status, std::span<const uint8_t>(request.sense).first(written));
}

std::string TrayNodePath(const std::string& drive) {
    std::string node = drive;
    while (!node.empty() && (node.back() == ' ' || node.back() == ':'))
        node.pop_back();
    while (!node.empty() && node.front() == ' ')
        node.erase(node.begin());
    if (!node.empty() && node.find('/') == std::string::npos)
        node = "/dev/" + node;
    return node;
}

}  // namespace plattmix::scsi
