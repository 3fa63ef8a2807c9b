#include "TransportSelection.h"

namespace plattmix::scsi {

namespace {
bool Works(ISCSI& transport) {
    const bool installed = transport.Installed();
    const bool initialized = transport.Initialized();
    return installed && initialized;
}
}  // namespace

SelectedTransport SelectUsableTransport(const TransportFactory& first,
                                        const TransportFactory& fallback,
                                        const std::string& devDir) {
    SelectedTransport selected;
    for (const TransportFactory* factory : {&first, &fallback}) {
        std::unique_ptr<ISCSI> transport = *factory ? (*factory)() : nullptr;
        if (!transport)
            continue;
        const bool works = Works(*transport);
        auto refused = RefusedFirstDrive(*transport, devDir);
        if (works && !refused && (transport->DriveCount() > 0 || !selected.refused)) {
            selected.transport = std::move(transport);
            selected.refused.reset();
            return selected;
        }
        if (!selected.refused)
            selected.refused = std::move(refused);
    }
    return selected;
}

std::unique_ptr<ISCSI> SelectTransport(const TransportFactory& first,
                                       const TransportFactory& fallback) {
    return SelectUsableTransport(first, fallback).transport;
}

}  // namespace plattmix::scsi
