#include "AccurateRipFetch.h"

#include <span>

#include "ProgramVersion.h"

namespace plattmix::audiocd {
namespace {

constexpr long kHttpOk = 200;
constexpr long kHttpNotFound = 404;

AccurateRipRecord Failed(std::string reason) {
    AccurateRipRecord record;
    record.error = std::move(reason);
    return record;
}

}  // namespace

std::string AccurateRipRecordUrl(const std::string& server, const AccurateRipIds& ids) {
    const bool slash = !server.empty() && server.back() == '/';
    return server + (slash ? "" : "/") + AccurateRipRecordPath(ids);
}

AccurateRipRecord FetchAccurateRipRecord(const std::string& server, const AccurateRipIds& ids,
                                         const HttpGetFn& get, std::function<bool()> stop) {
    HttpRequest request(AccurateRipRecordUrl(server, ids), ProgramUserAgent());
    request.stop = std::move(stop);
    const HttpReply reply = get(request);
    if (!reply.error.empty()) {
        return Failed("AccurateRip: " + reply.error);
    }
    if (reply.status == kHttpNotFound) {
        return Failed(kAccurateRipUnknownDisc);
    }
    if (reply.status != kHttpOk) {
        return Failed("AccurateRip antwortet mit dem Status " + std::to_string(reply.status) + ".");
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(reply.body.data());
    return ParseAccurateRipRecord(std::span<const uint8_t>(bytes, reply.body.size()), ids);
}

}  // namespace plattmix::audiocd
