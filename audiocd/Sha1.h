// SHA-1 (FIPS 180-4), for the disc ID the online title look-up asks for.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace plattmix::audiocd {

std::array<uint8_t, 20> Sha1(std::string_view message);

}  // namespace plattmix::audiocd
