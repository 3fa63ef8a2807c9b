#include "AccurateRipVerdict.h"

namespace plattmix::audiocd {

std::string AccurateRipVerdict::Text() const {
    switch (kind) {
        case Kind::Matching:
            return "übereinstimmend (Vertrauen " + std::to_string(confidence) + ")";
        case Kind::Differing:
            return "abweichend";
        case Kind::Unknown:
            break;
    }
    return "unbekannt";
}

std::string AccurateRipVerdict::RowText() const {
    switch (kind) {
        case Kind::Matching:
            return "AccurateRip: übereinstimmend, " + std::to_string(confidence);
        case Kind::Differing:
            return "AccurateRip: abweichend";
        case Kind::Unknown:
            break;
    }
    return "AccurateRip: unbekannt";
}

AccurateRipVerdict CompareWithRecord(const AccurateRipRecord& record, int position, uint32_t v1,
                                     uint32_t v2) {
    AccurateRipVerdict verdict;
    if (position < 1) {
        return verdict;
    }
    const auto index = static_cast<size_t>(position - 1);
    for (const AccurateRipResponse& response : record.responses) {
        if (index >= response.tracks.size() || response.tracks[index].confidence == 0) {
            continue;
        }
        const AccurateRipTrack& entry = response.tracks[index];
        if (entry.crc == v1 || entry.crc == v2) {
            verdict.kind = AccurateRipVerdict::Kind::Matching;
            verdict.confidence += entry.confidence;
        } else if (verdict.kind == AccurateRipVerdict::Kind::Unknown) {
            verdict.kind = AccurateRipVerdict::Kind::Differing;
        }
    }
    return verdict;
}

}  // namespace plattmix::audiocd
