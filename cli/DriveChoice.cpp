#include "DriveChoice.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "DemoDisc.h"
#include "DriveAccess.h"
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
// first is not both installed and initialized or its drive is refused; nothing when neither
// works.
scsi::SelectedTransport DriveTransport() {
    return scsi::SelectUsableTransport([] { return std::make_unique<scsi::clsSPTI>(); },
                                       [] { return std::make_unique<scsi::clsASPI>(); });
}

// The message for a drive this user may not open, one line per line on a terminal.
DriveChoiceResult Refused(const scsi::RefusedDrive& refused) {
    std::string text = scsi::RefusedAccessMessage(refused);
    for (auto at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at))
        text.erase(at, 1);
    return Fail(std::move(text));
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
    const std::string wanted = NodeName(node);
    if (!wanted.empty()) {
        if (const auto refused = scsi::RefusedAccess("/dev/" + wanted))
            return Refused(*refused);
    }
    auto transport = DriveTransport().transport;
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
    auto selected = DriveTransport();
    if (selected.transport && selected.transport->DriveCount() > 0)
        return {DriveChoice{std::move(selected.transport), 0}, {}};
    // The demo disc stands in only where the machine has no drive at all.
    if (selected.refused)
        return Refused(*selected.refused);
    const auto demo = discgen::DemoDisc();
    if (!demo.ok())
        return Fail(demo.error);
    return ImageDrive(demo.value->string(), 0);
}

}  // namespace plattmix::cli
