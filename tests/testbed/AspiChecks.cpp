#include "AspiChecks.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <vector>

#include "AspiLibrary.h"
#include "AspiSrb.h"
#include "CommandLineChecks.h"
#include "DriveList.h"
#include "MmcOpcodes.h"
#include "ScsiStatus.h"
#include "TransportChoice.h"
#include "TransportSelection.h"
#include "clsASPI.h"
#include "clsCDECL.h"
#include "clsSPTI.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::testbed {

namespace fs = std::filesystem;

namespace {

constexpr size_t kSector = 2048;
constexpr size_t kRawSector = 2352;
constexpr uint8_t kReadCdUserData = 0x10;
constexpr uint8_t kReadCdRaw = 0xF8;
constexpr const char* kQemuIdent = "QEMU    QEMU DVD-ROM    2.5+";

std::string Hex(std::span<const uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (uint8_t b : bytes) {
        text.push_back(kDigits[b >> 4]);
        text.push_back(kDigits[b & 15]);
    }
    return text;
}

// The kernel's address of a generic node, "H:C:T:L".
std::string SysfsAddress(const std::string& node) {
    std::error_code ec;
    return fs::read_symlink("/sys/class/scsi_generic/" + node + "/device", ec).filename().string();
}

// "H:T:L" of a handle, to compare with the kernel's address less its channel.
std::string HandleAddress(scsi::ISCSI& transport, const std::string& handle) {
    return std::to_string(transport.HostAdapter(handle)) +
           ":0:" + std::to_string(transport.TargetId(handle)) + ":" +
           std::to_string(transport.LUN(handle));
}

unsigned HighestHost() {
    unsigned highest = 0;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator("/sys/class/scsi_host", ec))
        highest =
            std::max(highest, unsigned(std::stoul(entry.path().filename().string().substr(4))));
    return highest;
}

class FallbackChecks {
  public:
    FallbackChecks(Report& report, const std::string& data)
        : report_(report), image_(LoadImage(data + "/disc-a.iso")) {}

    void Run() {
        Drives();
        Inquiry();
        UnitReady();
        Toc();
        ReadCd();
        ReadTen();
        TimeOuts();
    }

  private:
    uint32_t Sectors() const { return static_cast<uint32_t>(image_.size() / kSector); }

    std::string Result(int32_t status) const {
        return std::to_string(status) + " " +
               Hex(std::array<uint8_t, 3>{aspi_.LastSK(), aspi_.LastASC(), aspi_.LastASCQ()});
    }

    bool SameAsImage(uint32_t lba, std::span<const uint8_t> data, std::string& why) const {
        const size_t offset = size_t{lba} * kSector;
        if (offset + data.size() > image_.size() ||
            !std::equal(data.begin(), data.end(), image_.begin() + static_cast<long>(offset))) {
            why = "sectors from " + std::to_string(lba) + " differ from the image";
            return false;
        }
        return true;
    }

    void Drives() {
        int16_t one = 1, two = 2;
        sg0_ = aspi_.DriveHandle(one);
        sg1_ = aspi_.DriveHandle(two);
        report_.Check("aspi.drives",
                      aspi_.Installed() && aspi_.Initialized() && aspi_.DriveCount() == 2,
                      "Installed " + std::to_string(aspi_.Installed()) + " Initialized " +
                          std::to_string(aspi_.Initialized()) + " DriveCount " +
                          std::to_string(aspi_.DriveCount()));
        for (const auto& [handle, node] : {std::pair{sg0_, "sg0"}, std::pair{sg1_, "sg1"}}) {
            const std::string sysfs = SysfsAddress(node);
            const std::string ours = HandleAddress(aspi_, handle);
            const std::string name = aspi_.DriveChar(handle);
            report_.Check(std::string("aspi.address.") + node,
                          handle.size() == 3 && ours == sysfs && name == node,
                          "sysfs " + sysfs + ", handle " + ours + ", DriveChar '" + name + "'");
        }
        const auto entries = audiocd::FillDriveList(aspi_, {});
        std::string listed;
        for (const auto& entry : entries)
            listed += "[" + entry.text + "]";
        report_.Check("aspi.list",
                      entries.size() == 2 &&
                          entries[0].text == std::string("/dev/sg0:  ") + kQemuIdent &&
                          entries[1].text == std::string("/dev/sg1:  ") + kQemuIdent,
                      listed);
    }

    void Inquiry() {
        for (std::string handle : {sg0_, sg1_}) {
            std::array<uint8_t, modMMC::kInquiryLength> reply{};
            const int32_t status = modMMC::Inquiry(aspi_, handle, reply);
            report_.Check("aspi.inquiry." + aspi_.DriveChar(handle),
                          status == 0 && modMMC::InquiryIdentText(reply) == kQemuIdent &&
                              (reply[0] & 0x1F) == scsi::kDeviceTypeCdDvd,
                          Result(status) + " '" + modMMC::InquiryIdentText(reply) + "'");
        }
    }

    void UnitReady() {
        // No medium: CHECK CONDITION, sense key 2 (its low four bits), 3A.
        std::string empty = sg1_;
        const int32_t none = modMMC::TestUnitReady(aspi_, empty);
        report_.Check("aspi.tur.empty",
                      none == scsi::kStatusCheckCondition &&
                          aspi_.LastSK() == scsi::kSenseNotReady &&
                          aspi_.LastASC() == scsi::kAscMediumNotPresent,
                      "sg1 " + Result(none));
        std::string trace;
        int32_t status = -1;
        for (int attempt = 0; attempt < 8 && status != 0; ++attempt) {
            std::string loaded = sg0_;
            status = modMMC::TestUnitReady(aspi_, loaded);
            trace += Result(status) + ",";
        }
        report_.Check("aspi.tur.loaded", status == 0 && aspi_.LastSK() == 0, "sg0 " + trace);
    }

    void Toc() {
        for (const bool msf : {false, true}) {
            std::array<uint8_t, modMMC::kTocReplyLength> reply{};
            std::string handle = sg0_;
            const int32_t status = modMMC::ReadTOC(aspi_, handle, msf, reply);
            const auto toc = modMMC::ParseTOC(reply);
            bool ok = status == 0 && toc && toc->firstTrack == 1 && toc->lastTrack == 1 &&
                      toc->descriptors.size() == 2;
            if (ok) {
                const auto start = [&](const modMMC::TocDescriptor& d) {
                    return msf ? modMSF::MSFToLBA(modMSF::MakeMSF(d.address))
                               : static_cast<int32_t>(modMSF::BytesToLong(d.address));
                };
                ok = (toc->descriptors[0].adrControl & 0x04) != 0 &&
                     start(toc->descriptors[0]) == 0 &&
                     toc->descriptors[1].track == modMMC::kLeadOutTrack &&
                     start(toc->descriptors[1]) == static_cast<int32_t>(Sectors());
            }
            report_.Check(msf ? "aspi.toc.msf" : "aspi.toc.lba", ok,
                          "data track 1 at 0, lead-out at " + std::to_string(Sectors()) + ": " +
                              Result(status) + " " + Hex(std::span(reply).first(20)));
        }
    }

    void ReadCd() {
        const std::array<std::pair<uint32_t, uint32_t>, 4> ranges{
            {{0, 1}, {1, 16}, {517, 27}, {Sectors() - 1, 1}}};
        bool ok = true;
        std::string why = "4 ranges match the image";
        for (const auto& [lba, count] : ranges) {
            std::vector<uint8_t> buffer(count * kSector);
            std::string handle = sg0_;
            const int32_t status =
                modMMC::ReadCD(aspi_, handle, lba, count, buffer, kReadCdUserData);
            if (status != 0) {
                why = "READ CD at " + std::to_string(lba) + ": " + Result(status);
                ok = false;
                break;
            }
            if (!SameAsImage(lba, buffer, why)) {
                ok = false;
                break;
            }
        }
        report_.Check("aspi.readcd.user-data", ok, "flags 10, cdblen 10: " + why);

        // Raw: sync, the header with its MSF address and mode 1, then the user data.
        constexpr uint32_t kLba = 16;
        std::vector<uint8_t> raw(kRawSector);
        std::string handle = sg0_;
        const int32_t status = modMMC::ReadCD(aspi_, handle, kLba, 1, raw, kReadCdRaw);
        ok = status == 0 && RawSectorMatches(raw, kLba, image_);
        report_.Check(
            "aspi.readcd.raw", ok,
            "flags F8: " + Result(status) + ", sector 16 " + (ok ? "matches" : "differs"));
    }

    void ReadTen() {
        std::vector<uint8_t> buffer(32 * kSector);
        std::string handle = sg0_;
        int32_t status = modMMC::Read10(aspi_, handle, 100, 32, buffer);
        std::string why = "LBA 100, 32 blocks match the image";
        report_.Check("aspi.read10", status == 0 && SameAsImage(100, buffer, why),
                      Result(status) + ", " + why);

        std::vector<uint8_t> one(kSector);
        status = modMMC::Read10(aspi_, handle, Sectors(), 1, one);
        report_.Check("aspi.read10.out-of-range",
                      status == scsi::kStatusCheckCondition &&
                          aspi_.LastSK() == scsi::kSenseIllegalRequest &&
                          aspi_.LastASC() == scsi::kAscLbaOutOfRange,
                      "LBA " + std::to_string(Sectors()) + ": " + Result(status));
    }

    // The time-out the layer keeps for the drive after a command: the default for 0, else twice
    // the seconds; the caller's 0 is left as it was.
    void TimeOuts() {
        scsi::clsCDECL layer;
        layer.DllLoad(scsi::FindAspiLibrary());
        const auto kept = [&] {
            std::array<uint8_t, scsi::kTimeoutSrbSize> srb{};
            scsi::BuildTimeoutSrb(srb, {aspi_.HostAdapter(sg0_), aspi_.TargetId(sg0_), 0}, 0);
            srb[scsi::kSrbFlagsByte] = scsi::kSrbDataIn;
            const std::array<uintptr_t, 1> argument{reinterpret_cast<uintptr_t>(srb.data())};
            layer.CallFunc(scsi::kAspiSendCommandExport, argument);
            return scsi::ReadLittle32(srb, scsi::kTimeoutAt);
        };
        const auto tur = modMMC::BuildTestUnitReady();
        uint8_t cdblen = 6;
        int32_t direction = 0;
        int16_t zero = 0, seven = 7;
        std::string handle = sg0_;
        const int32_t a = aspi_.ExecCMD(handle, tur, cdblen, direction, nullptr, 0, zero);
        const uint32_t afterZero = kept();
        const int32_t b = aspi_.ExecCMD(handle, tur, cdblen, direction, nullptr, 0, seven);
        const uint32_t afterSeven = kept();
        report_.Check("aspi.timeout",
                      a == 0 && b == 0 && zero == 0 && afterZero == 108000 && afterSeven == 14,
                      "TimeOut 0 kept as " + std::to_string(afterZero) + " (caller's " +
                          std::to_string(zero) + "), 7 as " + std::to_string(afterSeven));
    }

    Report& report_;
    std::vector<uint8_t> image_;
    scsi::clsASPI aspi_;
    std::string sg0_, sg1_;
};

}  // namespace

std::vector<uint8_t> LoadImage(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool RawSectorMatches(std::span<const uint8_t> raw, uint32_t lba, std::span<const uint8_t> image) {
    const auto msf = modMSF::LBAToMSF(static_cast<int32_t>(lba));
    const size_t offset = size_t{lba} * kSector;
    if (raw.size() < kRawSector || offset + kSector > image.size())
        return false;
    const auto sync = raw.first(12);
    return sync[0] == 0 && sync[11] == 0 &&
           std::all_of(sync.begin() + 1, sync.end() - 1, [](uint8_t b) { return b == 0xFF; }) &&
           raw[12] == msf.minute && raw[13] == msf.second && raw[14] == msf.frame && raw[15] == 1 &&
           std::equal(raw.begin() + 16, raw.begin() + 16 + kSector,
                      image.begin() + static_cast<long>(offset));
}

int StartLikeTheWindow(std::ostream& out) {
    auto transport =
        scsi::SelectTransport(window::CreatePassThroughTransport, window::CreateFallbackTransport);
    if (!transport)
        transport = window::LoadImageDrives({}).transport;  // no images configured
    if (!transport) {
        out << scsi::kNoTransportMessage << '\n';
        return 1;
    }
    out << transport->Interface() << '\n';
    for (const auto& entry : audiocd::FillDriveList(*transport, {}))
        out << entry.text << '\n';
    return 0;
}

void CheckFallbackTransport(Report& report, const std::string& data, const std::string& self,
                            const std::string& cli) {
    scsi::clsSPTI spti;
    report.Check("aspi.no-pass-through", !spti.Installed() && spti.DriveCount() == 0,
                 "sr drives " + std::to_string(spti.DriveCount()));
    scsi::clsCDECL layer;
    const uint32_t support =
        layer.DllLoad(scsi::FindAspiLibrary()) ? layer.CallFunc(scsi::kAspiSupportInfoExport) : 0;
    report.Check("aspi.support", support == (0x0100u | (HighestHost() + 1)),
                 "GetASPI32SupportInfo " +
                     Hex(std::array<uint8_t, 2>{uint8_t(support >> 8), uint8_t(support)}) +
                     ", hosts up to " + std::to_string(HighestHost()));

    const std::string drive = std::string("/dev/sg0:  ") + kQemuIdent;
    const std::string drive1 = std::string("/dev/sg1:  ") + kQemuIdent;
    const CommandOutput start = RunInGuest(self + " --select");
    report.Check("aspi.start",
                 start.code == 0 && start.lines == std::vector<std::string>{"ASPI", drive, drive1},
                 start.Text());

    FallbackChecks checks(report, data);
    checks.Run();

    const CommandOutput drives = RunInGuest(cli + " drives");
    report.Check("aspi.cli.drives",
                 drives.code == 0 && drives.lines == std::vector<std::string>{drive, drive1},
                 drives.Text());
    const std::string row = "1      00:16   00:02:00  00:18:00  Daten";
    const CommandOutput toc = RunInGuest(cli + " toc");
    report.Check("aspi.cli.toc", toc.code == 0 && toc.lines.size() == 2 && toc.lines[1] == row,
                 toc.Text());
    const CommandOutput named = RunInGuest(cli + " toc --drive /dev/sg0");
    report.Check("aspi.cli.toc.sg0", named.code == 0 && named.lines == toc.lines, named.Text());
    // The door through the cdaudio device, which knows the drive by its listed name.
    const std::string tray = cli + " tray --drive /dev/sg0";
    const CommandOutput before = RunInGuest(tray);
    const CommandOutput open = RunInGuest(tray + " open");
    const CommandOutput opened = RunInGuest(tray);
    const CommandOutput close = RunInGuest(tray + " close");
    const CommandOutput closed = RunInGuest(tray);
    report.Check("aspi.cli.tray",
                 before.lines == std::vector<std::string>{"0"} && open.code == 0 &&
                     opened.lines == std::vector<std::string>{"1"} && close.code == 0 &&
                     closed.lines == std::vector<std::string>{"0"},
                 before.Text() + " open " + open.Text() + " " + opened.Text() + " close " +
                     close.Text() + " " + closed.Text());
    const CommandOutput empty = RunInGuest(cli + " toc --drive sg1");
    report.Check(
        "aspi.cli.toc.empty",
        empty.code == 1 && empty.lines == std::vector<std::string>{"Keine Disk im Laufwerk"},
        empty.Text());
}

void CheckNoTransport(Report& report, const std::string& self, const std::string& cli) {
    scsi::clsSPTI spti;
    scsi::clsASPI aspi;
    const bool none =
        !scsi::SelectTransport(window::CreatePassThroughTransport, window::CreateFallbackTransport);
    report.Check("aspi.none",
                 none && !spti.Installed() && aspi.Installed() && !aspi.Initialized() &&
                     aspi.DriveCount() == 0,
                 "selection " + std::string(none ? "none" : "made") + ", SPTI installed " +
                     std::to_string(spti.Installed()) + ", ASPI installed " +
                     std::to_string(aspi.Installed()) + " initialized " +
                     std::to_string(aspi.Initialized()));

    // The start shows the two-line message and ends.
    const CommandOutput start = RunInGuest(self + " --select");
    report.Check("aspi.start.none",
                 start.code == 1 &&
                     start.lines == std::vector<std::string>{"Kein funktionierendes Interface "
                                                             "gefunden!\r",
                                                             "Programm kann nicht verwendet "
                                                             "werden."},
                 start.Text());

    const CommandOutput named = RunInGuest(cli + " toc --drive /dev/sg0");
    report.Check("aspi.cli.none",
                 named.code == 1 && named.lines == std::vector<std::string>{"Kein optisches "
                                                                            "Laufwerk: /dev/sg0"},
                 named.Text());
}

}  // namespace plattmix::testbed
