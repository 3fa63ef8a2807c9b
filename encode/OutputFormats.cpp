#include "OutputFormats.h"

namespace plattmix::encode {

const OutputFormat& FormatAt(int index) {
    if (index < 0 || index >= static_cast<int>(kOutputFormats.size()))
        return kOutputFormats[0];
    return kOutputFormats[static_cast<size_t>(index)];
}

const OutputFormat& EncodedFormatAt(int index) {
    if (index < 1 || index > 5)
        return kOutputFormats[0];
    return kOutputFormats[static_cast<size_t>(index)];
}

std::optional<int> FormatByCliName(std::string_view name) {
    for (size_t i = 0; i < kOutputFormats.size(); ++i) {
        if (kOutputFormats[i].cliName == name)
            return static_cast<int>(i);
    }
    return std::nullopt;
}

}  // namespace plattmix::encode
