#include "TrayChecks.h"

#include <vector>

#include "CdAudio.h"
#include "CdAudioDoor.h"
#include "CommandLineChecks.h"
#include "TrayState.h"
#include "clsSPTI.h"

namespace plattmix::testbed {

namespace {

class Checks {
  public:
    Checks(Report& report, Channel& channel, std::string cli)
        : report_(report), channel_(channel), cli_(std::move(cli)) {
        cdAudio_.SetErrorBox([this](const std::string& text) { boxes_.push_back(text); });
    }

    void Run() {
        const TrayAnswer loaded = AskTray("/dev/sr0");
        report_.Check("tray.closed-disc", loaded.value == 0, "/dev/sr0 " + loaded.Text());
        Door();
        Monitor();
        EmptyDrive();
        NotDrives();
        CommandLine();
    }

  private:
    std::string Qemu(const std::string& request) {
        return channel_.Request(request).value_or("no answer");
    }

    void Door() {
        const bool opened = audiocd::OpenCloseCD(cdAudio_, "/dev/sr0", true);
        const std::string host = Qemu("tray 0");
        const TrayAnswer open = AskTray("/dev/sr0");
        report_.Check(
            "tray.door-open", opened && host.starts_with("ok open medium") && open.value == 1,
            "OpenCloseCD " + std::to_string(opened) + ", QEMU " + host + ", " + open.Text());

        const bool closed = audiocd::OpenCloseCD(cdAudio_, "/dev/sr0:  QEMU", false);
        const std::string after = Qemu("tray 0");
        const TrayAnswer shut = AskTray("/dev/sr0");
        report_.Check(
            "tray.door-close",
            closed && after.starts_with("ok closed medium") && shut.value == 0 && boxes_.empty(),
            "OpenCloseCD " + std::to_string(closed) + ", QEMU " + after + ", " + shut.Text() +
                ", " + std::to_string(boxes_.size()) + " error boxes");

        const bool missing = audiocd::OpenCloseCD(cdAudio_, "/dev/sr7", true);
        report_.Check("tray.door-no-drive", !missing && boxes_.size() == 1,
                      boxes_.empty() ? "no error box" : boxes_.back());
    }

    void Monitor() {
        const std::string opened = Qemu("open-tray 0");
        const TrayAnswer open = AskTray("/dev/sr0");
        report_.Check("tray.monitor-open", opened.starts_with("ok open medium") && open.value == 1,
                      "QEMU " + opened + ", " + open.Text());
        const std::string closed = Qemu("close-tray 0");
        const TrayAnswer shut = AskTray("/dev/sr0");
        report_.Check("tray.monitor-close",
                      closed.starts_with("ok closed medium") && shut.value == 0,
                      "QEMU " + closed + ", " + shut.Text());
    }

    void EmptyDrive() {
        const std::string ejected = Qemu("eject 1");
        const TrayAnswer open = AskTray("/dev/sr1");
        report_.Check("tray.empty-open",
                      ejected.starts_with("ok open no-medium") && open.value == 1,
                      "QEMU " + ejected + ", " + open.Text());
        const std::string closed = Qemu("close-tray 1");
        const TrayAnswer shut = AskTray("sr1");
        report_.Check("tray.empty-closed",
                      closed.starts_with("ok closed no-medium") && shut.value == 0,
                      "QEMU " + closed + ", " + shut.Text());
    }

    void NotDrives() {
        const TrayAnswer missing = AskTray("/dev/sr9");
        const TrayAnswer null = AskTray("/dev/null");
        report_.Check("tray.not-a-drive", missing.value == -1 && null.value == -1,
                      "/dev/sr9 " + missing.Text() + ", /dev/null " + null.Text());
    }

    void CommandLine() {
        const std::string tray = cli_ + " tray --drive ";
        const CommandOutput before = RunInGuest(tray + "/dev/sr0");
        const CommandOutput open = RunInGuest(tray + "/dev/sr0 open");
        const std::string host = Qemu("tray 0");
        const CommandOutput opened = RunInGuest(tray + "/dev/sr0");
        const CommandOutput close = RunInGuest(tray + "/dev/sr0 close");
        const CommandOutput closed = RunInGuest(tray + "/dev/sr0");
        const bool ok = before.lines == std::vector<std::string>{"0"} && open.code == 0 &&
                        host.starts_with("ok open medium") &&
                        opened.lines == std::vector<std::string>{"1"} && close.code == 0 &&
                        closed.code == 0 && closed.lines == std::vector<std::string>{"0"};
        report_.Check("cli.tray.door", ok,
                      before.Text() + " open " + open.Text() + " QEMU " + host + " " +
                          opened.Text() + " close " + close.Text() + " " + closed.Text());

        const CommandOutput empty = RunInGuest(tray + "/dev/sr1");
        const CommandOutput none = RunInGuest(tray + "/dev/sr9");
        const CommandOutput noDoor = RunInGuest(tray + "/dev/sr9 open");
        const bool noDoorSaid =
            !noDoor.lines.empty() &&
            noDoor.lines.back() == "Konnte Laufwerk nicht öffnen! Bitte manuell versuchen!";
        report_.Check(
            "cli.tray.unknown",
            empty.code == 0 && empty.lines == std::vector<std::string>{"0"} && none.code == 1 &&
                none.lines == std::vector<std::string>{"-1"} && noDoor.code == 1 && noDoorSaid,
            "sr1 " + empty.Text() + ", sr9 " + none.Text() + ", sr9 open " + noDoor.Text());
    }

    Report& report_;
    Channel& channel_;
    std::string cli_;
    scsi::clsSPTI spti_;
    audiocd::CdAudio cdAudio_{spti_, {}};
    std::vector<std::string> boxes_;
};

}  // namespace

void CheckTray(Report& report, Channel& channel, const std::string& cli) {
    Checks(report, channel, cli).Run();
}

}  // namespace plattmix::testbed
