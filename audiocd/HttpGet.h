// One HTTP GET, for the online look-ups (AccurateRip records, disc titles). The request and its
// reply are plain data; the transfer itself is a function the caller hands in, so that the
// audio CD library stays free of the network library and the programs built without it.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace plattmix::audiocd {

struct HttpRequest {
    HttpRequest(std::string address, std::string agent)
        : url(std::move(address)), userAgent(std::move(agent)) {}

    std::string url;
    std::string userAgent;
    std::chrono::milliseconds timeout{5000};  // the whole transfer, connecting included
    size_t maxBytes = 16 * 1024 * 1024;       // a longer reply is cut off and counts as failed
    std::function<bool()> stop;               // asked now and then; true ends the transfer
};

struct HttpReply {
    long status = 0;    // the server's status code; 0 when there was no reply
    std::string body;   // the reply's content, as sent
    std::string error;  // why there was no usable reply (German); empty when there was one

    bool Ok() const { return error.empty() && status == 200; }
};

using HttpGetFn = std::function<HttpReply(const HttpRequest&)>;

}  // namespace plattmix::audiocd
