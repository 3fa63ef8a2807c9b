#include "imagedrive/EdcEcc.h"

#include <algorithm>
#include <array>

#include "modMSF.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr uint32_t kEdcPolynomialReflected = 0xD8018001u;
constexpr unsigned kFieldPolynomial = 0x11D;  // x^8+x^4+x^3+x^2+1, GF(2^8) of the RSPC

constexpr std::array<uint32_t, 256> MakeEdcTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1u) ? (value >> 1) ^ kEdcPolynomialReflected : value >> 1;
        }
        table[i] = value;
    }
    return table;
}

constexpr auto kEdcTable = MakeEdcTable();

// Multiplication by alpha (x) in GF(2^8), and the inverse of (1 + alpha) as a table.
constexpr uint8_t TimesAlpha(uint8_t value) {
    const unsigned shifted = static_cast<unsigned>(value) << 1;
    return static_cast<uint8_t>((shifted & 0x100u) ? shifted ^ kFieldPolynomial : shifted);
}

constexpr std::array<uint8_t, 256> MakeDivideByOnePlusAlpha() {
    std::array<uint8_t, 256> table{};
    for (unsigned i = 0; i < 256; ++i) {
        const auto value = static_cast<uint8_t>(i);
        table[static_cast<uint8_t>(value ^ TimesAlpha(value))] = value;
    }
    return table;
}

constexpr auto kDivideByOnePlusAlpha = MakeDivideByOnePlusAlpha();

// One family of parity vectors. The bytes from offset 12 form 16-bit words split into two byte
// planes; vector v of a plane starts at word (v * startStep) and visits `length` words, each
// `stride` words after the previous, wrapping at `wrap` words. Two parity symbols per vector
// make both syndromes zero: p0 = (sum + alpha^2 * horner) / (1 + alpha), p1 = sum + p0.
struct ParityLayout {
    size_t vectors, length, startStep, stride, wrap, parityOffset;
};

constexpr ParityLayout kPLayout{43, 24, 1, 43, 1032, kPParityOffset};
constexpr ParityLayout kQLayout{26, 43, 43, 44, 1118, kQParityOffset};

void ComputeParity(std::span<uint8_t, kRawSectorSize> sector, const ParityLayout& layout) {
    const std::span<uint8_t> words = std::span<uint8_t>(sector).subspan(kSyncSize);
    for (size_t plane = 0; plane < 2; ++plane) {
        for (size_t v = 0; v < layout.vectors; ++v) {
            uint8_t sum = 0;
            uint8_t horner = 0;  // sum of d[i] * alpha^(length - i), built by Horner's rule
            size_t word = (v * layout.startStep) % layout.wrap;
            for (size_t i = 0; i < layout.length; ++i) {
                const uint8_t symbol = words[2 * word + plane];
                sum ^= symbol;
                horner = TimesAlpha(static_cast<uint8_t>(horner ^ symbol));
                word = (word + layout.stride) % layout.wrap;
            }
            const uint8_t p0 =
                kDivideByOnePlusAlpha[static_cast<uint8_t>(TimesAlpha(horner) ^ sum)];
            const size_t at = layout.parityOffset + 2 * v + plane;
            sector[at] = p0;
            sector[at + 2 * layout.vectors] = static_cast<uint8_t>(p0 ^ sum);
        }
    }
}

}  // namespace

uint32_t ComputeEdc(std::span<const uint8_t> bytes) {
    uint32_t edc = 0;
    for (const uint8_t byte : bytes)
        edc = (edc >> 8) ^ kEdcTable[(edc ^ byte) & 0xFFu];
    return edc;
}

void ComputeEccParity(std::span<uint8_t, kRawSectorSize> sector) {
    ComputeParity(sector, kPLayout);  // Q covers the P parity, so P comes first
    ComputeParity(sector, kQLayout);
}

void WriteSyncAndHeader(int32_t lba, uint8_t mode, std::span<uint8_t, kRawSectorSize> sector) {
    sector[0] = 0x00;
    std::fill(sector.begin() + 1, sector.begin() + 11, uint8_t{0xFF});
    sector[11] = 0x00;
    std::ranges::copy(modMSF::ToBcd(modMSF::LBAToMSF(lba)), sector.begin() + 12);
    sector[15] = mode;
}

void BuildMode1Sector(int32_t lba, std::span<const uint8_t, kUserDataSize> userData,
                      std::span<uint8_t, kRawSectorSize> sector) {
    WriteSyncAndHeader(lba, 1, sector);
    std::copy(userData.begin(), userData.end(), sector.begin() + 16);
    const uint32_t edc = ComputeEdc(std::span<const uint8_t>(sector).first(kMode1EdcOffset));
    for (size_t i = 0; i < 4; ++i) {
        sector[kMode1EdcOffset + i] = static_cast<uint8_t>((edc >> (8 * i)) & 0xFFu);
    }
    std::fill(sector.begin() + kMode1EdcOffset + 4, sector.begin() + kPParityOffset, uint8_t{0});
    ComputeEccParity(sector);
}

}  // namespace plattmix::scsi::imagedrive
