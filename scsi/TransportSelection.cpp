#include "TransportSelection.h"

namespace plattmix::scsi {

namespace {
bool Works(ISCSI& transport) {
    const bool installed = transport.Installed();
    const bool initialized = transport.Initialized();
    return installed && initialized;
}
}  // namespace

std::unique_ptr<ISCSI> SelectTransport(const TransportFactory& first,
                                       const TransportFactory& fallback) {
    std::unique_ptr<ISCSI> transport = first ? first() : nullptr;
    if (transport && Works(*transport))
        return transport;
    transport.reset();
    transport = fallback ? fallback() : nullptr;
    if (transport && Works(*transport))
        return transport;
    return nullptr;
}

}  // namespace plattmix::scsi
