#include "ProgramVersion.h"

namespace plattmix::audiocd {

std::string ProgramNameAndVersion() {
    return std::string("Plattmix ") + PLATTMIX_VERSION;
}

std::string ProgramUserAgent() {
    return std::string("Plattmix/") + PLATTMIX_VERSION;
}

}  // namespace plattmix::audiocd
