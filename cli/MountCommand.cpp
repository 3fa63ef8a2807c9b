#include "MountCommand.h"

#include <optional>
#include <ostream>
#include <string>

#include "ServiceChoice.h"
#include "VirtualDrive.h"

namespace plattmix::cli {

namespace {

using vdrive::DriveOutcome;
using vdrive::DriveResult;
using vdrive::MessageIcon;

// The usage error's text when the words don't fit the command.
std::optional<std::string> CheckUsage(const CliArgs& args) {
    const std::string usage = "Aufruf: plattmix-cli " + args.command + " ABBILD.iso";
    if (!args.options.empty())
        return "Die Option " + args.options.begin()->first + " gilt nicht für " + args.command +
               ".\n" + usage;
    if (args.positional.empty())
        return "Die ISO-Datei fehlt.\n" + usage;
    if (args.positional.size() > 1)
        return "Unerwartetes Argument: " + args.positional[1] + "\n" + usage;
    return std::nullopt;
}

int Print(const DriveResult& result, const vdrive::IVirtualDriveService* service, std::ostream& out,
          std::ostream& err) {
    const bool done =
        result.outcome == DriveOutcome::Attached || result.outcome == DriveOutcome::Detached;
    for (const vdrive::DriveMessage& message : result.messages) {
        const bool problem = !done || message.icon == MessageIcon::Exclamation ||
                             message.icon == MessageIcon::Critical;
        (problem ? err : out) << message.text << '\n';
    }
    if (!result.detail.empty()) {
        const bool fromService = result.outcome != DriveOutcome::NoHandle && service != nullptr;
        err << (fromService ? service->Name() + ": " : "") << result.detail << '\n';
    }
    if (result.outcome == DriveOutcome::Attached && !result.drive.empty())
        out << result.drive << '\n';
    const bool complete = result.outcome == DriveOutcome::Detached ||
                          (result.outcome == DriveOutcome::Attached && result.mountPointOk);
    return complete ? kExitDone : kExitFailed;
}

}  // namespace

int RunMountCommand(const CliArgs& args, vdrive::IVirtualDriveService* service, std::ostream& out,
                    std::ostream& err) {
    if (const auto usage = CheckUsage(args)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    return Print(vdrive::MountIso(service, args.positional[0]), service, out, err);
}

int RunUnmountCommand(const CliArgs& args, vdrive::IVirtualDriveService* service, std::ostream& out,
                      std::ostream& err) {
    if (const auto usage = CheckUsage(args)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    return Print(vdrive::UnmountIso(service, args.positional[0]), service, out, err);
}

int RunMountCommand(const CliArgs& args, std::ostream& out, std::ostream& err) {
    if (const auto usage = CheckUsage(args)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    const auto service = vdrive::ChooseVirtualDriveService();
    return RunMountCommand(args, service.get(), out, err);
}

int RunUnmountCommand(const CliArgs& args, std::ostream& out, std::ostream& err) {
    if (const auto usage = CheckUsage(args)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    const auto service = vdrive::ChooseVirtualDriveService();
    return RunUnmountCommand(args, service.get(), out, err);
}

}  // namespace plattmix::cli
