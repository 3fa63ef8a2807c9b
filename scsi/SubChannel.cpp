#include "SubChannel.h"

#include <algorithm>
#include <cctype>

#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::modMMC {
namespace {

constexpr size_t kHeaderBytes = 4;  // reserved, audio status, data length
constexpr size_t kValidAt = 8;      // MCVal / TCVal in bit 7
constexpr uint8_t kValidBit = 0x80;
constexpr size_t kCatalogDigits = 13;
constexpr size_t kIsrcCharacters = 12;
constexpr uint8_t kAdrPosition = 1;

// The characters after the valid flag, when the drive marks them valid and each passes.
template <typename AcceptFn>
std::optional<std::string> ValidText(std::span<const uint8_t> reply, uint8_t format, size_t length,
                                     AcceptFn accept) {
    if (reply.size() < kValidAt + 1 + length || reply[kHeaderBytes] != format ||
        (reply[kValidAt] & kValidBit) == 0)
        return std::nullopt;
    const auto characters = reply.subspan(kValidAt + 1, length);
    std::string text(characters.begin(), characters.end());
    if (!std::all_of(text.begin(), text.end(), accept))
        return std::nullopt;
    return text;
}

}  // namespace

std::optional<std::string> ParseCatalog(std::span<const uint8_t> reply) {
    auto digits = ValidText(reply, 0x02, kCatalogDigits,
                            [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
    if (digits && digits->find_first_not_of('0') == std::string::npos)
        return std::nullopt;  // some drives mark an absent number valid
    return digits;
}

std::optional<std::string> ParseIsrc(std::span<const uint8_t> reply) {
    return ValidText(reply, 0x03, kIsrcCharacters, [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) ||
               std::isupper(static_cast<unsigned char>(c));
    });
}

std::optional<QPosition> ParseQPosition(std::span<const uint8_t> q) {
    if (q.size() < static_cast<size_t>(kQBytes) || (q[0] & 0x0F) != kAdrPosition)
        return std::nullopt;
    return QPosition{static_cast<uint8_t>(q[0] >> 4), modMSF::FromBcd(q[1]), modMSF::FromBcd(q[2])};
}

int32_t PregapSectorsBefore(std::span<const uint8_t> sectors, int track) {
    const size_t count = sectors.size() / kSectorWithQBytes;
    size_t first = count;  // the earliest sector known to lie in the pregap
    for (size_t i = count; i-- > 0;) {
        const auto position =
            ParseQPosition(sectors.subspan(i * kSectorWithQBytes + 2352, kQBytes));
        if (!position)
            continue;
        if (position->track != track || position->index != 0)
            break;
        first = i;
    }
    return static_cast<int32_t>(count - first);
}

}  // namespace plattmix::modMMC
