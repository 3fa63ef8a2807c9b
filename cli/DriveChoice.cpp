#include "DriveChoice.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "DemoDisc.h"
#include "TransportSelection.h"
#include "clsASPI.h"
#include "clsSPTI.h"
#include "imagedrive/clsImageDrive.h"

namespace plattmix::cli {

namespace {

using scsi::imagedrive::clsImageDrive;

DriveChoiceResult Fail(std::string error) {
    return {std::nullopt, std::move(error)};
}

DriveChoiceResult ImageDrive(const std::string& path, int16_t index) {
    auto drive = std::make_unique<clsImageDrive>();
    const auto added = drive->AddDrive(path);
    if (!added.ok())
        return Fail(added.Error());
    return {DriveChoice{std::move(drive), index}, {}};
}

// The drive transport as the window chooses it: the pass-through first, the fall-back when the
// first is not both installed and initialized; nothing when neither works.
std::unique_ptr<scsi::ISCSI> DriveTransport() {
    return scsi::SelectTransport([] { return std::make_unique<scsi::clsSPTI>(); },
                                 [] { return std::make_unique<scsi::clsASPI>(); });
}

// The short name DriveChar gives for a node named as "sr0", "/dev/sr0" or in upper case; empty
// for a path outside /dev.
std::string NodeName(const std::string& node) {
    std::string lower = node;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto slash = lower.rfind('/');
    if (slash == std::string::npos)
        return lower;
    return lower.substr(0, slash) == "/dev" ? lower.substr(slash + 1) : std::string();
}

DriveChoiceResult DriveNode(const std::string& node) {
    auto transport = DriveTransport();
    const std::string wanted = NodeName(node);
    for (int16_t i = 1; transport && !wanted.empty() && i <= transport->DriveCount(); ++i) {
        int16_t index = i;
        if (transport->DriveChar(transport->DriveHandle(index)) == wanted)
            return {DriveChoice{std::move(transport), i}, {}};
    }
    return Fail("Kein optisches Laufwerk: " + node);
}

}  // namespace

DriveChoiceResult ChooseDrive(const std::optional<std::string>& drive) {
    if (drive) {
        std::error_code ec;
        if (std::filesystem::is_regular_file(*drive, ec))
            return ImageDrive(*drive, 1);
        return DriveNode(*drive);
    }
    auto transport = DriveTransport();
    if (transport && transport->DriveCount() > 0)
        return {DriveChoice{std::move(transport), 0}, {}};
    const auto demo = discgen::DemoDisc();
    if (!demo.ok())
        return Fail(demo.error);
    return ImageDrive(demo.value->string(), 0);
}

}  // namespace plattmix::cli
