// A small library for the clsCDECL tests: plain C exports taking words and answering 32 bits.
#include <cstdint>

extern "C" {

__attribute__((visibility("default"))) uint32_t Answer() {
    return 42;
}

// Weights each argument by its position, so a swapped or lost argument shows.
__attribute__((visibility("default"))) uint32_t Weighted(uint32_t a, uint32_t b, uint32_t c,
                                                         uint32_t d, uint32_t e, uint32_t f) {
    return a + 2 * b + 3 * c + 4 * d + 5 * e + 6 * f;
}

__attribute__((visibility("default"))) uint32_t Store(uint32_t* where, uint32_t value) {
    *where = value;
    return value + 1;
}

}  // extern "C"
