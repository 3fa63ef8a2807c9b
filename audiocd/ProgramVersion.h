// How the program names itself where it leaves a trace: in its logs and to the servers it asks.
#pragma once

#include <string>

namespace plattmix::audiocd {

// "Plattmix 0.1.0": name and version, for logs.
std::string ProgramNameAndVersion();

// "Plattmix/0.1.0": the HTTP user agent.
std::string ProgramUserAgent();

}  // namespace plattmix::audiocd
