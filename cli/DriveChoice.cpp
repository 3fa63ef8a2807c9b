#include "DriveChoice.h"

#include <filesystem>

#include "DemoDisc.h"
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

DriveChoiceResult DriveNode(const std::string& node) {
    auto spti = std::make_unique<scsi::clsSPTI>();
    const std::string wanted = spti->DriveChar(node);
    for (int16_t i = 1; i <= spti->DriveCount(); ++i) {
        int16_t index = i;
        if (spti->DriveChar(spti->DriveHandle(index)) == wanted) {
            return {DriveChoice{std::move(spti), i}, {}};
        }
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
    auto spti = std::make_unique<scsi::clsSPTI>();
    if (spti->DriveCount() > 0)
        return {DriveChoice{std::move(spti), 0}, {}};
    const auto demo = discgen::DemoDisc();
    if (!demo.ok())
        return Fail(demo.error);
    return ImageDrive(demo.value->string(), 0);
}

}  // namespace plattmix::cli
