#include "CdAudioSharedTransport.h"

#include <map>

#include "ScsiStatus.h"

namespace plattmix::audiocd {

namespace {

using Guard = std::lock_guard<std::mutex>;

struct Sense {
    uint8_t sk = 0, asc = 0, ascq = 0;
};

// Each thread's sense bytes, per shared transport; gone when the thread ends.
thread_local std::map<const CdAudioSharedTransport*, Sense> tSense;

Sense Mine(const CdAudioSharedTransport* transport) {
    const auto it = tSense.find(transport);
    return it == tSense.end() ? Sense{} : it->second;
}

}  // namespace

CdAudioSharedTransport::CdAudioSharedTransport(std::unique_ptr<scsi::ISCSI> inner)
    : inner_(std::move(inner)) {}

CdAudioSharedTransport::~CdAudioSharedTransport() {
    tSense.erase(this);
}

std::string CdAudioSharedTransport::Interface() const {
    Guard guard(lock_);
    return inner_->Interface();
}

uint8_t CdAudioSharedTransport::LastASCQ() const {
    return Mine(this).ascq;
}

uint8_t CdAudioSharedTransport::LastASC() const {
    return Mine(this).asc;
}

uint8_t CdAudioSharedTransport::LastSK() const {
    return Mine(this).sk;
}

bool CdAudioSharedTransport::Initialized() {
    Guard guard(lock_);
    return inner_->Initialized();
}

bool CdAudioSharedTransport::Installed() {
    Guard guard(lock_);
    return inner_->Installed();
}

int16_t CdAudioSharedTransport::DriveCount() const {
    Guard guard(lock_);
    return inner_->DriveCount();
}

std::string CdAudioSharedTransport::DriveChar(const std::string& Handle) {
    Guard guard(lock_);
    return inner_->DriveChar(Handle);
}

std::string CdAudioSharedTransport::DriveHandle(int16_t& index) {
    Guard guard(lock_);
    return inner_->DriveHandle(index);
}

uint8_t CdAudioSharedTransport::HostAdapter(const std::string& Handle) {
    Guard guard(lock_);
    return inner_->HostAdapter(Handle);
}

uint8_t CdAudioSharedTransport::TargetId(const std::string& Handle) {
    Guard guard(lock_);
    return inner_->TargetId(Handle);
}

uint8_t CdAudioSharedTransport::LUN(const std::string& Handle) {
    Guard guard(lock_);
    return inner_->LUN(Handle);
}

int32_t CdAudioSharedTransport::ExecCMD(std::string& Handle, std::span<const uint8_t> cdb,
                                        uint8_t& cdblen, int32_t& direction, uint8_t* Buffer,
                                        int32_t BufferLen, int16_t& TimeOut) {
    Guard guard(lock_);
    const int32_t status =
        inner_->ExecCMD(Handle, cdb, cdblen, direction, Buffer, BufferLen, TimeOut);
    // Kept only when the command reached a drive: the transport leaves the bytes as they
    // were otherwise, and so does this.
    if (status != scsi::kStatusNoDevice)
        tSense[this] = Sense{inner_->LastSK(), inner_->LastASC(), inner_->LastASCQ()};
    return status;
}

}  // namespace plattmix::audiocd
