#include "imagedrive/clsImageDrive.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "ScsiStatus.h"
#include "imagedrive/DriveSidecar.h"
#include "imagedrive/ImageCommands.h"
#include "imagedrive/ImageLoader.h"
#include "imagedrive/SectorSource.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr size_t kMaxCdbLength = 16;
constexpr int kSectorsPerSecondAt1x = 75;

ImageResult<std::shared_ptr<const SectorSource>> OpenMedium(const std::string& path) {
    using Result = ImageResult<std::shared_ptr<const SectorSource>>;
    auto disc = LoadImage(path);
    if (!disc.ok())
        return Result::FailFrom(disc);
    auto source = SectorSource::Open(std::move(disc).Take());
    if (!source.ok())
        return Result::FailFrom(source);
    return Result::Ok(std::move(source).Take());
}

// Holds a read back to the pace of a drive spinning at the given multiple of 1x. Deadlines are
// absolute: a read that follows the previous one closely continues the disc's stream, so a
// sleep that overshoots a little is made up by the next one instead of adding up.
void Throttle(Faults& faults, int64_t blocks) {
    if (faults.speedMultiple <= 0 || blocks <= 0)
        return;
    using Clock = std::chrono::steady_clock;
    constexpr auto kStreamGap = std::chrono::milliseconds(100);  // longer: the disc was idle
    const auto micros =
        blocks * 1'000'000 / (int64_t{kSectorsPerSecondAt1x} * faults.speedMultiple);
    const auto now = Clock::now();
    const auto start = now <= faults.streamedUntil + kStreamGap ? faults.streamedUntil : now;
    faults.streamedUntil = start + std::chrono::microseconds(micros);
    std::this_thread::sleep_until(faults.streamedUntil);
}

}  // namespace

DriveSlot* clsImageDrive::Find(const std::string& handle) {
    const auto it = std::find_if(slots_.begin(), slots_.end(),
                                 [&](const DriveSlot& slot) { return slot.Handle() == handle; });
    return it == slots_.end() ? nullptr : &*it;
}

const DriveSlot* clsImageDrive::Find(const std::string& handle) const {
    return const_cast<clsImageDrive*>(this)->Find(handle);
}

std::string clsImageDrive::UniqueHandle(const std::string& wanted) const {
    std::string handle = wanted;
    for (int n = 2; Find(handle) != nullptr; ++n)
        handle = wanted + "#" + std::to_string(n);
    return handle;
}

template <typename ChangeFn>
bool clsImageDrive::Change(const std::string& handle, ChangeFn change) {
    DriveSlot* slot = Find(handle);
    if (slot == nullptr)
        return false;
    change(*slot);
    return true;
}

ImageResult<std::string> clsImageDrive::AddDrive(const std::string& imagePath) {
    if (imagePath.empty()) {
        slots_.emplace_back(UniqueHandle(kEmptyDriveHandle));
        return ImageResult<std::string>::Ok(slots_.back().Handle());
    }
    auto medium = OpenMedium(imagePath);
    if (!medium.ok())
        return ImageResult<std::string>::FailFrom(medium);
    auto sidecar = LoadDriveSidecar(imagePath);
    if (!sidecar.ok())
        return ImageResult<std::string>::FailFrom(sidecar);
    slots_.emplace_back(UniqueHandle(imagePath));
    slots_.back().Insert(std::move(medium).Take(), true);
    if (sidecar.Value())
        slots_.back().Injected() = std::move(*sidecar.Value());
    return ImageResult<std::string>::Ok(slots_.back().Handle());
}

bool clsImageDrive::OpenTray(const std::string& handle) {
    return Change(handle, [](DriveSlot& slot) { slot.OpenTray(); });
}

bool clsImageDrive::CloseTray(const std::string& handle) {
    return Change(handle, [](DriveSlot& slot) { slot.CloseTray(); });
}

std::optional<std::string> clsImageDrive::InsertMedium(const std::string& handle,
                                                       const std::string& path) {
    DriveSlot* slot = Find(handle);
    if (slot == nullptr)
        return "unbekanntes Laufwerk '" + handle + "'";
    auto medium = OpenMedium(path);
    if (!medium.ok())
        return medium.Error();
    slot->Insert(std::move(medium).Take(), false);
    return std::nullopt;
}

bool clsImageDrive::RemoveMedium(const std::string& handle) {
    return Change(handle, [](DriveSlot& slot) { slot.Remove(); });
}

bool clsImageDrive::IsTrayOpen(const std::string& handle) const {
    const DriveSlot* slot = Find(handle);
    return slot != nullptr && slot->TrayOpen();
}

bool clsImageDrive::HasMedium(const std::string& handle) const {
    const DriveSlot* slot = Find(handle);
    return slot != nullptr && slot->HasMedium();
}

bool clsImageDrive::SetBecomingReady(const std::string& handle, int commands) {
    return Change(handle, [&](DriveSlot& slot) { slot.SetBecomingReady(commands); });
}

bool clsImageDrive::AddReadError(const std::string& handle, int32_t firstLba, int32_t count) {
    return Change(handle, [&](DriveSlot& slot) {
        slot.Injected().readErrors.push_back(LbaRange{firstLba, count});
    });
}

bool clsImageDrive::AddTimeOutRange(const std::string& handle, int32_t firstLba, int32_t count) {
    return Change(handle, [&](DriveSlot& slot) {
        slot.Injected().timeOuts.push_back(LbaRange{firstLba, count});
    });
}

bool clsImageDrive::TimeOutNextCommands(const std::string& handle, int commands) {
    return Change(handle, [&](DriveSlot& slot) { slot.Injected().timeOutCommands = commands; });
}

bool clsImageDrive::SetReadSpeed(const std::string& handle, int speedMultiple) {
    return Change(handle, [&](DriveSlot& slot) { slot.Injected().speedMultiple = speedMultiple; });
}

bool clsImageDrive::SetReadOffset(const std::string& handle, int32_t samples) {
    return Change(handle, [&](DriveSlot& slot) { slot.Injected().readOffsetSamples = samples; });
}

bool clsImageDrive::SetC2Pointers(const std::string& handle, bool reported) {
    return Change(handle, [&](DriveSlot& slot) { slot.Injected().c2Pointers = reported; });
}

bool clsImageDrive::AddFlakyRange(const std::string& handle, int32_t firstLba, int32_t count,
                                  double probability, uint32_t seed) {
    return Change(handle, [&](DriveSlot& slot) {
        slot.Injected().flaky.push_back(FlakyRange{LbaRange{firstLba, count}, probability, seed});
    });
}

bool clsImageDrive::ClearFaults(const std::string& handle) {
    return Change(handle, [](DriveSlot& slot) { slot.Injected() = Faults{}; });
}

std::string clsImageDrive::DriveHandle(int16_t& index) {
    if (index < 1 || index > DriveCount())
        return {};
    return slots_[static_cast<size_t>(index - 1)].Handle();
}

uint8_t clsImageDrive::HostAdapter(const std::string&) {
    return 0;
}

uint8_t clsImageDrive::TargetId(const std::string&) {
    return 0;
}

uint8_t clsImageDrive::LUN(const std::string& Handle) {
    const DriveSlot* slot = Find(Handle);
    if (slot == nullptr)
        return 0;
    return static_cast<uint8_t>(slot - slots_.data());
}

int32_t clsImageDrive::ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                               int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                               int16_t& TimeOut) {
    (void)direction;  // every command this drive knows reads from it
    DriveSlot* slot = Find(Handle);
    if (slot == nullptr)
        return kStatusNoDevice;
    if (TimeOut == 0)
        TimeOut = kSptiDefaultTimeOut;
    lastSense_ = Sense{};

    const size_t sent = std::min({size_t{cdblen}, cdb.size(), kMaxCdbLength});
    if (sent == 0)
        return kStatusNotDelivered;
    if (slot->Injected().timeOutCommands > 0) {
        --slot->Injected().timeOutCommands;
        return kStatusNotDelivered;
    }
    std::array<uint8_t, kMaxCdbLength> block{};  // bytes not sent read as zero
    std::copy_n(cdb.begin(), sent, block.begin());
    const std::span<uint8_t> buffer(
        Buffer, Buffer == nullptr || BufferLen < 0 ? size_t{0} : static_cast<size_t>(BufferLen));

    const CommandResult result = ExecuteCommand(*slot, block, buffer);
    if (result.status == kStatusCheckCondition)
        lastSense_ = result.sense;
    if (result.status == kStatusGood && (block[0] == kOpReadCd || block[0] == kOpRead10)) {
        Throttle(slot->Injected(), RequestedBlocks(block));
    }
    return result.status;
}

}  // namespace plattmix::scsi::imagedrive
