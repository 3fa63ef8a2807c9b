// The two entry points of libplattmix_aspi.so, with C linkage, over one layer for the life of
// the library.
#include <cstdint>

#include "AspiLayer.h"

namespace {

plattmix::scsi::aspi::AspiLayer& Layer() {
    static plattmix::scsi::aspi::AspiLayer layer;
    return layer;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) uint32_t GetASPI32SupportInfo() {
    return Layer().SupportInfo();
}

__attribute__((visibility("default"))) uint32_t SendASPI32Command(void* srb) {
    return Layer().Send(static_cast<uint8_t*>(srb));
}

}  // extern "C"
