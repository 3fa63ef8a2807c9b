#include "TransportChoice.h"

#include "clsASPI.h"
#include "clsSPTI.h"
#include "imagedrive/clsImageDrive.h"

namespace plattmix::window {

namespace {

std::string Trimmed(const std::string& line) {
    const auto first = line.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    const auto last = line.find_last_not_of(" \t\r\n");
    return line.substr(first, last - first + 1);
}

}  // namespace

std::unique_ptr<scsi::ISCSI> CreatePassThroughTransport() {
    return std::make_unique<scsi::clsSPTI>();
}

std::unique_ptr<scsi::ISCSI> CreateFallbackTransport() {
    return std::make_unique<scsi::clsASPI>();
}

std::unique_ptr<scsi::ISCSI> CreateTransportWithoutDrives() {
    return std::make_unique<scsi::imagedrive::clsImageDrive>();
}

ImageDrives LoadImageDrives(const std::vector<std::string>& imagePaths) {
    auto drive = std::make_unique<scsi::imagedrive::clsImageDrive>();
    ImageDrives result;
    for (const auto& line : imagePaths) {
        const std::string path = Trimmed(line);
        if (path.empty())
            continue;
        const auto added = drive->AddDrive(path);
        if (!added.ok())
            result.failures.push_back(path + "\r\n" + added.Error());
    }
    if (drive->DriveCount() > 0)
        result.transport = std::move(drive);
    return result;
}

std::string ImageFailureMessage(const std::vector<std::string>& failures) {
    std::string text = failures.size() == 1 ? "Ein Abbild konnte nicht geladen werden:"
                                            : "Einige Abbilder konnten nicht geladen werden:";
    for (const auto& failure : failures)
        text += "\r\n\r\n" + failure;
    return text;
}

}  // namespace plattmix::window
