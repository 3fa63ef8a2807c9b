// A transport shared by the window's thread and the CD player's worker: every call goes to the
// wrapped transport under one lock, and the sense bytes each thread reads back are those of
// its own last command.
#pragma once

#include <memory>
#include <mutex>

#include "ISCSI.h"

namespace plattmix::audiocd {

class CdAudioSharedTransport final : public scsi::ISCSI {
  public:
    explicit CdAudioSharedTransport(std::unique_ptr<scsi::ISCSI> inner);
    ~CdAudioSharedTransport() override;
    CdAudioSharedTransport(const CdAudioSharedTransport&) = delete;
    CdAudioSharedTransport& operator=(const CdAudioSharedTransport&) = delete;

    scsi::ISCSI& Inner() { return *inner_; }

    std::string Interface() const override;
    uint8_t LastASCQ() const override;
    uint8_t LastASC() const override;
    uint8_t LastSK() const override;
    bool Initialized() override;
    bool Installed() override;
    int16_t DriveCount() const override;
    std::string DriveChar(const std::string& Handle) override;
    std::string DriveHandle(int16_t& index) override;
    uint8_t HostAdapter(const std::string& Handle) override;
    uint8_t TargetId(const std::string& Handle) override;
    uint8_t LUN(const std::string& Handle) override;
    int32_t ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                    int16_t& TimeOut) override;

  private:
    std::unique_ptr<scsi::ISCSI> inner_;
    mutable std::mutex lock_;
};

}  // namespace plattmix::audiocd
