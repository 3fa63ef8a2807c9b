// An AccurateRip record ("dBAR" file) as the secure mode reads the server's reply, for the disc
// that the first response's header names.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "AccurateRipRecord.h"
#include "LittleEndian.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix::audiocd;
    AccurateRipIds ids;
    if (size >= kAccurateRipHeaderBytes)
        ids = {data[0], LoadLE32(data + 1), LoadLE32(data + 5), LoadLE32(data + 9)};
    const AccurateRipRecord record = ParseAccurateRipRecord({data, size}, ids);
    if (record.error.empty() == record.responses.empty())
        std::abort();  // a record either has responses or says why not
    for (const AccurateRipResponse& response : record.responses) {
        if (response.tracks.size() != static_cast<size_t>(response.ids.audioTracks))
            std::abort();
    }
    return 0;
}
