// A GET CONFIGURATION reply as the secure mode reads it, for the CD Read feature's C2 flag.
#include <cstdint>
#include <span>

#include "modMMC.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Any reply, however its descriptors' lengths lie, is read inside its bytes.
    static_cast<void>(plattmix::modMMC::ReportsC2Pointers(std::span<const uint8_t>(data, size)));
    return 0;
}
