#include "ScriptedDrive.h"

#include <algorithm>
#include <cstring>

#include "MmcOpcodes.h"

namespace plattmix::fuzz {

uint32_t ScriptedDrive::ReadTocKey(uint8_t format, bool msf) {
    return (uint32_t{scsi::kOpReadToc} << 8) | (uint32_t{format} << 1) | (msf ? 1u : 0u);
}

uint32_t ScriptedDrive::KeyOf(std::span<const uint8_t> cdb) {
    if (cdb.empty())
        return 0;
    if (cdb[0] == scsi::kOpReadToc && cdb.size() > 2)
        return ReadTocKey(cdb[2] & 0x0F, (cdb[1] & 0x02) != 0);
    return uint32_t{cdb[0]} << 8;
}

void ScriptedDrive::Script(uint32_t key, std::span<const uint8_t> part) {
    ScriptedReply reply;
    const auto at = [&](size_t i) { return i < part.size() ? part[i] : uint8_t{0}; };
    // Mostly good: the low bits pick the status, so that half the inputs get their replies read.
    static constexpr int32_t kStatuses[] = {0, 0, 0, 2, 255, 24, 8, 0};
    reply.status = kStatuses[at(0) & 7];
    reply.senseKey = at(1);
    reply.asc = at(2);
    reply.ascq = at(3);
    if (part.size() > 4)
        reply.bytes.assign(part.begin() + 4, part.end());
    replies_[key] = std::move(reply);
}

int32_t ScriptedDrive::ExecCMD(std::string& /*Handle*/, std::span<const uint8_t> cdb,
                               uint8_t& cdblen, int32_t& /*direction*/, uint8_t* Buffer,
                               int32_t BufferLen, int16_t& /*TimeOut*/) {
    const auto found = replies_.find(KeyOf(cdb.first(std::min<size_t>(cdblen, cdb.size()))));
    if (found == replies_.end()) {
        last_ = ScriptedReply{2, 5, 0x20, 0, {}};
        return last_.status;
    }
    last_ = found->second;
    const size_t length = std::min(last_.bytes.size(), static_cast<size_t>(std::max(BufferLen, 0)));
    if (length > 0)
        std::memcpy(Buffer, last_.bytes.data(), length);
    return last_.status;
}

}  // namespace plattmix::fuzz
