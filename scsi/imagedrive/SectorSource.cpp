#include "imagedrive/SectorSource.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace plattmix::scsi::imagedrive {

namespace {

constexpr size_t kSubmodeByte = 18;
constexpr uint8_t kSubmodeForm2 = 0x20;

SectorKind KindOfMode2(std::span<const uint8_t, kRawSectorSize> sector) {
    return (sector[kSubmodeByte] & kSubmodeForm2) ? SectorKind::Mode2Form2 : SectorKind::Mode2Form1;
}

// A Mode 2 Form 2 frame of zeros as a gap in an XA track holds, with its EDC.
void BuildEmptyForm2(int32_t lba, std::span<uint8_t, kRawSectorSize> out) {
    std::fill(out.begin(), out.end(), uint8_t{0});
    WriteSyncAndHeader(lba, 2, out);
    out[kSubmodeByte] = kSubmodeForm2;
    out[kSubmodeByte + 4] = kSubmodeForm2;
    const uint32_t edc = ComputeEdc(std::span<const uint8_t>(out).subspan(16, 2332));
    for (size_t i = 0; i < 4; ++i)
        out[2348 + i] = static_cast<uint8_t>((edc >> (8 * i)) & 0xFFu);
}

}  // namespace

ImageResult<std::shared_ptr<SectorSource>> SectorSource::Open(DiscImage disc) {
    using Result = ImageResult<std::shared_ptr<SectorSource>>;
    std::shared_ptr<SectorSource> source(new SectorSource(std::move(disc)));
    for (const std::string& path : source->disc_.files) {
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            const std::string name = std::filesystem::path(path).filename().string();
            return Result::Fail(ImageMessage(name, 0, "Datei nicht lesbar"));
        }
        source->descriptors_.push_back(fd);
    }
    return Result::Ok(std::move(source));
}

SectorSource::~SectorSource() {
    for (const int fd : descriptors_)
        ::close(fd);
}

bool SectorSource::ReadFile(const DiscTrack& track, int32_t lba, std::span<uint8_t> out) const {
    const int64_t at =
        track.fileOffset + int64_t{lba - track.fileFirst} * StoredSectorSize(track.mode);
    const int fd = descriptors_[static_cast<size_t>(track.fileIndex)];
    size_t done = 0;
    while (done < out.size()) {
        const ssize_t got = ::pread(fd, out.data() + done, out.size() - done,
                                    static_cast<off_t>(at + static_cast<int64_t>(done)));
        if (got <= 0)
            return false;  // an error, or the file shrank since it was loaded
        done += static_cast<size_t>(got);
    }
    return true;
}

RawSector SectorSource::Read(int32_t lba, std::span<uint8_t, kRawSectorSize> out) const {
    const DiscTrack* track = disc_.TrackAt(lba);
    if (track == nullptr)
        return {SectorRead::OutOfRange, SectorKind::Audio};
    const bool stored = lba >= track->fileFirst && lba < track->fileFirst + track->fileCount;
    switch (track->mode) {
        case TrackMode::Audio:
            if (stored && !ReadFile(*track, lba, out))
                break;
            if (!stored)
                std::fill(out.begin(), out.end(), uint8_t{0});  // silence in a gap
            return {SectorRead::Ok, SectorKind::Audio};
        case TrackMode::Mode1_2048: {
            std::array<uint8_t, kUserDataSize> user{};
            if (stored && !ReadFile(*track, lba, user))
                break;
            BuildMode1Sector(lba, user, out);
            return {SectorRead::Ok, SectorKind::Mode1};
        }
        case TrackMode::Mode1_2352:
            if (stored && !ReadFile(*track, lba, out))
                break;
            if (!stored)
                BuildMode1Sector(lba, std::array<uint8_t, kUserDataSize>{}, out);
            return {SectorRead::Ok, SectorKind::Mode1};
        case TrackMode::Mode2_2352:
            if (stored && !ReadFile(*track, lba, out))
                break;
            if (!stored)
                BuildEmptyForm2(lba, out);
            return {SectorRead::Ok, KindOfMode2(out)};
    }
    return {SectorRead::ReadFailed, SectorKind::Audio};
}

}  // namespace plattmix::scsi::imagedrive
