// Runs inside the test bed's guest, next to two emulated IDE CD/DVD drives: drive 0 holds disc A,
// drive 1 is empty. It drives them through the pass-through transport and the MMC command
// functions exactly as the program does, and reports over the control port:
//   CHECK <name> PASS|FAIL <detail>   one per check
//   INFO <name> <text>                what a drive answered, for the record
//   REQUEST <n> <action> <drive> ...  asks the harness to work a drive through the QEMU monitor;
//                                     the harness answers "ACK <n> ok|error <text>"
//   DONE pass=<n> fail=<n>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "CommandLineChecks.h"
#include "ProbeChannel.h"
#include "ScsiStatus.h"
#include "TrayChecks.h"
#include "TreeChecks.h"
#include "clsSPTI.h"
#include "modMMC.h"
#include "modMSF.h"

namespace {

using namespace plattmix;
using testbed::Channel;
using testbed::Report;
namespace fs = std::filesystem;

constexpr size_t kSector = 2048;
constexpr size_t kRawSector = 2352;
constexpr uint8_t kReadCdUserData = 0x10;
constexpr uint8_t kReadCdRaw = 0xF8;  // sync, header, user data, EDC/ECC
constexpr uint8_t kMediaClass = 16;   // GET EVENT STATUS NOTIFICATION: media events

std::string Hex(std::span<const uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (uint8_t b : bytes) {
        text.push_back(kDigits[b >> 4]);
        text.push_back(kDigits[b & 15]);
    }
    return text;
}

std::string Hex2(uint8_t b) {
    return Hex(std::span<const uint8_t>(&b, 1));
}

// A generated disc: every sector starts with "PLATTMIX", the disc's tag and its LBA.
struct Disc {
    char tag = '?';
    std::vector<uint8_t> bytes;
    uint32_t Sectors() const { return static_cast<uint32_t>(bytes.size() / kSector); }
    std::span<const uint8_t> At(uint32_t lba, uint32_t count) const {
        return std::span<const uint8_t>(bytes).subspan(lba * kSector, count * kSector);
    }
};

Disc LoadDisc(const fs::path& path, char tag) {
    std::ifstream in(path, std::ios::binary);
    Disc disc{tag, std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {})};
    return disc;
}

// Whether data holds the sectors lba.. of disc, each carrying its own stamp.
bool SameSectors(const Disc& disc, uint32_t lba, std::span<const uint8_t> data, std::string& why) {
    const uint32_t count = static_cast<uint32_t>(data.size() / kSector);
    for (uint32_t i = 0; i < count; ++i) {
        const auto sector = data.subspan(i * kSector, kSector);
        const uint32_t stamped =
            modMSF::BytesToLong(sector[12], sector[13], sector[14], sector[15]);
        if (std::string_view(reinterpret_cast<const char*>(sector.data()), 8) != "PLATTMIX" ||
            sector[8] != static_cast<uint8_t>(disc.tag) || stamped != lba + i) {
            why = "sector " + std::to_string(lba + i) + " carries stamp " + Hex(sector.first(16));
            return false;
        }
        if (lba + i >= disc.Sectors() || !std::ranges::equal(sector, disc.At(lba + i, 1))) {
            why = "sector " + std::to_string(lba + i) + " differs from the image";
            return false;
        }
    }
    return true;
}

// One request's result as it was right after the request: status and the three sense bytes.
struct Answer {
    int32_t status = scsi::kStatusNotDelivered;
    uint8_t sk = 0, asc = 0, ascq = 0;

    bool Good() const { return status == scsi::kStatusGood; }
    // CHECK CONDITION, not ready, medium not present; the key from the byte's low four bits.
    bool NoMedium() const {
        return status == scsi::kStatusCheckCondition && (sk & 0x0F) == scsi::kSenseNotReady &&
               asc == scsi::kAscMediumNotPresent;
    }
    bool Sense(uint8_t key, uint8_t code) const {
        return status == scsi::kStatusCheckCondition && (sk & 0x0F) == key && asc == code;
    }
    // "status SK/ASC/ASCQ", the sense-key byte whole.
    std::string Text() const {
        return std::to_string(status) + " " + Hex2(sk) + "/" + Hex2(asc) + "/" + Hex2(ascq);
    }
};

class Probe {
  public:
    Probe(Channel& channel, Report& report, const fs::path& data)
        : channel_(channel),
          report_(report),
          discA_(LoadDisc(data / "disc-a.iso", 'A')),
          discB_(LoadDisc(data / "disc-b.iso", 'B')) {}

    void Run() {
        DriveList();
        Inquiry();
        UnitReady();
        Capacity();
        Toc();
        ReadCd();
        ReadTen();
        Handles();
        Addresses();
        EventStatus();
        Configuration();
        DoorByCommand();
        TrayByMonitor();
        MediumByMonitor();
    }

  private:
    Answer Snap(int32_t status) const {
        return Answer{status, spti_.LastSK(), spti_.LastASC(), spti_.LastASCQ()};
    }

    Answer Exec(std::string handle, std::span<const uint8_t> cdb, std::span<uint8_t> buffer) {
        uint8_t cdblen = static_cast<uint8_t>(cdb.size());
        int32_t direction = 0;
        int16_t timeOut = modMMC::kCommandTimeOut;
        return Snap(spti_.ExecCMD(handle, cdb, cdblen, direction, buffer.data(),
                                  static_cast<int32_t>(buffer.size()), timeOut));
    }

    Answer Tur(std::string handle) { return Snap(modMMC::TestUnitReady(spti_, handle)); }

    // TEST UNIT READY until the drive is ready, as the program does after a medium change:
    // a changed medium first reports "no medium", then the unit attention, then ready.
    Answer ReadyWithRetries(const std::string& handle, std::string& trace) {
        Answer answer;
        for (int attempt = 0; attempt < 8 && !answer.Good(); ++attempt) {
            answer = Tur(handle);
            if (!trace.empty())
                trace += ',';
            trace += answer.Text();
        }
        return answer;
    }

    // GET EVENT STATUS NOTIFICATION, media class; the reply or nothing.
    std::optional<std::array<uint8_t, 8>> MediaEvent(const std::string& handle) {
        std::array<uint8_t, 8> reply{};
        const auto cdb =
            modMMC::BuildGetEventStatus(kMediaClass, static_cast<uint16_t>(reply.size()));
        if (!Exec(handle, cdb, reply).Good())
            return std::nullopt;
        return reply;
    }
    static bool TrayOpen(const std::optional<std::array<uint8_t, 8>>& event) {
        return event && ((*event)[5] & 1) != 0;
    }
    static bool MediumPresent(const std::optional<std::array<uint8_t, 8>>& event) {
        return event && ((*event)[5] & 2) != 0;
    }
    static std::string EventText(const std::optional<std::array<uint8_t, 8>>& event) {
        return event ? Hex(*event) : "failed";
    }

    // The harness's view of a drive: "ok open|closed medium|no-medium".
    std::string Monitor(const std::string& request) {
        return channel_.Request(request).value_or("no answer");
    }

    // READ CD (user data) or READ(10) of count sectors compared with the image.
    bool ReadMatches(bool readCd, const std::string& handle, const Disc& disc, uint32_t lba,
                     uint32_t count, std::string& why) {
        std::vector<uint8_t> buffer(count * kSector);
        std::string h = handle;
        const Answer answer =
            Snap(readCd ? modMMC::ReadCD(spti_, h, lba, count, buffer, kReadCdUserData)
                        : modMMC::Read10(spti_, h, lba, static_cast<uint16_t>(count), buffer));
        if (!answer.Good()) {
            why = std::string(readCd ? "READ CD " : "READ(10) ") + answer.Text();
            return false;
        }
        return SameSectors(disc, lba, buffer, why);
    }

    void DriveList() {
        int16_t one = 1, two = 2, three = 3;
        const std::string first = spti_.DriveHandle(one), second = spti_.DriveHandle(two);
        const bool installed = spti_.Installed();
        report_.Check("drives.count", spti_.DriveCount() == 2,
                      "DriveCount " + std::to_string(spti_.DriveCount()));
        report_.Check("drives.order",
                      first == "/dev/sr0" && second == "/dev/sr1" && spti_.DriveHandle(three) == "",
                      "DriveHandle 1 '" + first + "', 2 '" + second + "'");
        report_.Check("drives.installed",
                      installed && spti_.Initialized() && spti_.Interface() == "SPTI",
                      "Installed " + std::to_string(installed) + " Interface " + spti_.Interface());
        const std::string c0 = spti_.DriveChar("/dev/sr0"), c1 = spti_.DriveChar("/dev/sr1");
        report_.Check("drives.char", c0 == "sr0" && c1 == "sr1",
                      "DriveChar '" + c0 + "' '" + c1 + "'");
    }

    void Inquiry() {
        for (std::string handle : {sr0_, sr1_}) {
            std::array<uint8_t, modMMC::kInquiryLength> reply{};
            const Answer answer = Snap(modMMC::Inquiry(spti_, handle, reply));
            const auto ident = modMMC::ParseInquiry(reply);
            const std::string text = modMMC::InquiryIdentText(reply);
            const std::string name = "inquiry." + spti_.DriveChar(handle);
            report_.Info(name, "'" + text + "' " + Hex(reply));
            const bool ok = answer.Good() && ident.vendor == "QEMU    " &&
                            ident.product == "QEMU DVD-ROM    " && text.size() == 28 &&
                            (reply[0] & 0x1F) == 5;
            report_.Check(name, ok,
                          answer.Text() + " vendor '" + ident.vendor + "' product '" +
                              ident.product + "' revision '" + ident.revision + "'");
        }
    }

    void UnitReady() {
        const Answer empty = Tur(sr1_);
        report_.Check("tur.empty", empty.NoMedium(), "sr1 " + empty.Text());

        // A request that returns without sense clears the three bytes.
        std::array<uint8_t, modMMC::kInquiryLength> reply{};
        std::string handle = sr1_;
        const Answer inquiry = Snap(modMMC::Inquiry(spti_, handle, reply));
        report_.Check("sense.cleared",
                      inquiry.Good() && inquiry.sk == 0 && inquiry.asc == 0 && inquiry.ascq == 0,
                      "INQUIRY after no-medium: " + inquiry.Text());

        std::string trace;
        const Answer loaded = ReadyWithRetries(sr0_, trace);
        report_.Check("tur.loaded", loaded.Good(), "sr0 " + trace);
    }

    void Capacity() {
        std::array<uint8_t, 8> reply{};
        const Answer answer = Exec(sr0_, modMMC::BuildReadCapacity(), reply);
        const uint32_t last = modMSF::BytesToLong(reply[0], reply[1], reply[2], reply[3]);
        const uint32_t block = modMSF::BytesToLong(reply[4], reply[5], reply[6], reply[7]);
        report_.Check("readcapacity",
                      answer.Good() && last + 1 == discA_.Sectors() && block == 2048,
                      answer.Text() + " last LBA " + std::to_string(last) + " block " +
                          std::to_string(block));
    }

    void Toc() {
        for (const bool msf : {false, true}) {
            std::array<uint8_t, modMMC::kTocReplyLength> reply{};
            std::string handle = sr0_;
            const Answer answer = Snap(modMMC::ReadTOC(spti_, handle, msf, reply));
            const auto toc = modMMC::ParseTOC(reply);
            const std::string name = msf ? "toc.msf" : "toc.lba";
            report_.Info(name, answer.Text() + " " + Hex(std::span(reply).first(20)));
            bool ok = answer.Good() && toc && toc->firstTrack == 1 && toc->lastTrack == 1 &&
                      toc->descriptors.size() == 2;
            if (ok) {
                const auto start = [&](const modMMC::TocDescriptor& d) {
                    return msf ? modMSF::MSFToLBA(modMSF::MakeMSF(d.address))
                               : static_cast<int32_t>(modMSF::BytesToLong(d.address));
                };
                const auto& track = toc->descriptors[0];
                const auto& leadOut = toc->descriptors[1];
                ok = track.track == 1 && (track.adrControl & 0x04) != 0 && start(track) == 0 &&
                     leadOut.track == modMMC::kLeadOutTrack &&
                     start(leadOut) == static_cast<int32_t>(discA_.Sectors());
            }
            report_.Check(name, ok,
                          "data track 1 at 0, lead-out at " + std::to_string(discA_.Sectors()) +
                              ": " + answer.Text());
        }
    }

    void ReadCd() {
        const uint32_t last = discA_.Sectors() - 1;
        const std::array<std::pair<uint32_t, uint32_t>, 4> ranges{
            {{0, 1}, {1, 16}, {517, 27}, {last, 1}}};
        bool ok = true;
        std::string why = "4 ranges match the image";
        for (const auto& [lba, count] : ranges) {
            if (!ReadMatches(true, sr0_, discA_, lba, count, why)) {
                ok = false;
                break;
            }
        }
        report_.Check("readcd.user-data", ok, "flags 10, cdblen 10: " + why);

        // Raw sectors: sync pattern, header, the user data, then EDC/ECC.
        constexpr uint32_t kLba = 16;
        std::vector<uint8_t> raw(2 * kRawSector);
        std::string handle = sr0_;
        const Answer answer = Snap(modMMC::ReadCD(spti_, handle, kLba, 2, raw, kReadCdRaw));
        const bool eccZero =
            std::all_of(raw.begin() + 2064, raw.begin() + 2352, [](uint8_t b) { return b == 0; });
        report_.Info("readcd.raw", answer.Text() + " header " + Hex(std::span(raw).subspan(12, 4)) +
                                       " EDC/ECC all zero " + std::to_string(eccZero));
        static constexpr std::array<uint8_t, 12> kSync{0,    0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                       0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
        ok = answer.Good();
        why = "2 sectors: sync, binary MSF header, mode 1, user data";
        for (uint32_t i = 0; ok && i < 2; ++i) {
            const auto sector = std::span<const uint8_t>(raw).subspan(i * kRawSector, kRawSector);
            const auto msf = modMSF::LBAToMSF(static_cast<int32_t>(kLba + i));
            ok = std::ranges::equal(sector.first(12), kSync) && sector[15] == 1 &&
                 sector[12] == msf.minute && sector[13] == msf.second && sector[14] == msf.frame &&
                 SameSectors(discA_, kLba + i, sector.subspan(16, kSector), why);
        }
        report_.Check("readcd.raw", ok, "flags F8, cdblen 10: " + answer.Text() + ", " + why);

        // The same READ CD with all twelve command bytes sent: tells a fault of the drive's
        // answer apart from a fault of how the command reaches it.
        std::vector<uint8_t> full(kSector);
        const auto cdb10 = modMMC::BuildReadCD(kLba, 1, kReadCdUserData);
        std::array<uint8_t, 12> cdb12{};
        std::copy(cdb10.begin(), cdb10.end(), cdb12.begin());
        const Answer whole = Exec(sr0_, cdb12, full);
        why = "sector 16 matches";
        ok = whole.Good() && SameSectors(discA_, kLba, full, why);
        report_.Check("readcd.cdblen12", ok, "flags 10, cdblen 12: " + whole.Text() + ", " + why);
    }

    void ReadTen() {
        std::string why = "LBA 100, 32 blocks match the image";
        const bool ok = ReadMatches(false, sr0_, discA_, 100, 32, why);
        report_.Check("read10", ok, why);

        std::vector<uint8_t> one(kSector);
        std::string handle = sr0_;
        const Answer beyond = Snap(modMMC::Read10(spti_, handle, discA_.Sectors(), 1, one));
        report_.Check("read10.out-of-range",
                      beyond.Sense(scsi::kSenseIllegalRequest, scsi::kAscLbaOutOfRange),
                      "LBA " + std::to_string(discA_.Sectors()) + ": " + beyond.Text());
    }

    void Handles() {
        // The sense bytes of the last delivered request stay when no handle is found.
        const Answer before = Tur(sr1_);
        const Answer sr9 = Tur("/dev/sr9");
        const Answer sda = Tur("sda");
        const uint8_t host = spti_.HostAdapter("/dev/sr9");
        const bool kept = sda.sk == before.sk && sda.asc == before.asc && sda.ascq == before.ascq;
        report_.Check(
            "handle.not-a-drive",
            sr9.status == scsi::kStatusNoDevice && sda.status == scsi::kStatusNoDevice && kept &&
                host == 0,
            "/dev/sr9 " + sr9.Text() + ", sda " + sda.Text() + ", before " + before.Text());

        // Upper and lower case name the same drive: the empty one answers "no medium".
        const Answer upper1 = Tur("SR1");
        const Answer upper0 = Tur("/DEV/SR0");
        const Answer mixed1 = Tur("/dev/Sr1");
        const std::string letter = spti_.DriveChar("/DEV/SR1");
        report_.Check("handle.case",
                      upper1.NoMedium() && upper0.Good() && mixed1.NoMedium() && letter == "sr1",
                      "SR1 " + upper1.Text() + ", /DEV/SR0 " + upper0.Text() + ", /dev/Sr1 " +
                          mixed1.Text() + ", DriveChar " + letter);

        // TimeOut 0 selects the default and hands it back; another value stays as it was.
        const auto cdb = modMMC::BuildTestUnitReady();
        uint8_t cdblen = 6;
        int32_t direction = 0;
        int16_t zero = 0, five = 5;
        std::string handle = sr0_;
        const int32_t a = spti_.ExecCMD(handle, cdb, cdblen, direction, nullptr, 0, zero);
        const int32_t b = spti_.ExecCMD(handle, cdb, cdblen, direction, nullptr, 0, five);
        report_.Check(
            "timeout.default", a == 0 && b == 0 && zero == scsi::kSptiDefaultTimeOut && five == 5,
            "TimeOut 0 became " + std::to_string(zero) + ", 5 stayed " + std::to_string(five));
    }

    void Addresses() {
        for (const std::string& handle : {sr0_, sr1_}) {
            const std::string name = spti_.DriveChar(handle);
            std::error_code ec;
            const std::string hctl =
                fs::read_symlink("/sys/class/block/" + name + "/device", ec).filename().string();
            const std::string ours = std::to_string(spti_.HostAdapter(handle)) +
                                     ":?:" + std::to_string(spti_.TargetId(handle)) + ":" +
                                     std::to_string(spti_.LUN(handle));
            // Both drives sit on the first IDE channel: master target 0, slave target 1.
            const std::string expected =
                hctl.substr(0, hctl.find(':')) + ":?:" + (handle == sr0_ ? "0" : "1") + ":0";
            report_.Check("address." + name, !ec && ours == expected,
                          "sysfs " + hctl + ", HostAdapter:?:TargetId:LUN " + ours);
        }
    }

    void EventStatus() {
        for (const std::string& handle : {sr0_, sr1_}) {
            const bool loaded = handle == sr0_;
            const auto event = MediaEvent(handle);
            const std::string name = "gesn." + spti_.DriveChar(handle);
            report_.Info(name, EventText(event));
            const bool ok = event && ((*event)[0] || (*event)[1]) && ((*event)[2] & 7) == 4 &&
                            !TrayOpen(event) && MediumPresent(event) == loaded;
            report_.Check(name, ok,
                          std::string("media class, tray closed, ") +
                              (loaded ? "medium present: " : "no medium: ") + EventText(event));
        }
    }

    void Configuration() {
        // GET CONFIGURATION header with the current profile, for the record.
        for (const std::string& handle : {sr0_, sr1_}) {
            std::array<uint8_t, 8> reply{};
            const std::array<uint8_t, 10> cdb{0x46, 0x02, 0, 0, 0, 0, 0, 0, 8, 0};
            const Answer answer = Exec(handle, cdb, reply);
            report_.Info("getconfiguration." + spti_.DriveChar(handle),
                         answer.Text() + " " + Hex(reply));
        }
    }

    void DoorByCommand() {
        std::string handle = sr0_;
        const Answer open = Snap(modMMC::StartStopUnit(spti_, handle, true, false));
        const Answer tur = Tur(sr0_);
        const auto event = MediaEvent(sr0_);
        const std::string host = Monitor("tray 0");
        report_.Info("tray.open-by-command", "TUR " + tur.Text() + ", GESN " + EventText(event));
        report_.Check(
            "tray.open-by-command",
            open.Good() && tur.NoMedium() && TrayOpen(event) && host.starts_with("ok open medium"),
            "START STOP UNIT " + open.Text() + ", TUR " + tur.Text() + ", GESN " +
                EventText(event) + ", QEMU " + host);

        const Answer close = Snap(modMMC::StartStopUnit(spti_, handle, true, true));
        std::string trace, why = "sector 0 matches";
        const Answer ready = ReadyWithRetries(sr0_, trace);
        const bool read = ReadMatches(false, sr0_, discA_, 0, 1, why);
        const std::string after = Monitor("tray 0");
        report_.Check(
            "tray.close-by-command",
            close.Good() && ready.Good() && read && after.starts_with("ok closed medium"),
            "START STOP UNIT " + close.Text() + ", TUR " + trace + ", " + why + ", QEMU " + after);
    }

    void TrayByMonitor() {
        const std::string opened = Monitor("open-tray 0");
        const Answer tur = Tur(sr0_);
        auto event = MediaEvent(sr0_);
        report_.Check("monitor.open-tray",
                      opened.starts_with("ok open medium") && tur.NoMedium() && TrayOpen(event),
                      "QEMU " + opened + ", TUR " + tur.Text() + ", GESN " + EventText(event));

        const std::string closed = Monitor("close-tray 0");
        std::string trace, why = "sector 0 matches";
        const Answer ready = ReadyWithRetries(sr0_, trace);
        const bool read = ReadMatches(false, sr0_, discA_, 0, 1, why);
        report_.Check("monitor.close-tray",
                      closed.starts_with("ok closed medium") && ready.Good() && read,
                      "QEMU " + closed + ", TUR " + trace + ", " + why);

        const std::string ejected = Monitor("eject 0");
        const Answer gone = Tur(sr0_);
        event = MediaEvent(sr0_);
        report_.Check("monitor.eject",
                      ejected.starts_with("ok open no-medium") && gone.NoMedium() &&
                          TrayOpen(event) && !MediumPresent(event),
                      "QEMU " + ejected + ", TUR " + gone.Text() + ", GESN " + EventText(event));
    }

    void MediumByMonitor() {
        // Disc B into the empty drive: readable after the unit attention.
        const std::string changed = Monitor("change 1 disc-b");
        std::string trace;
        const Answer ready = ReadyWithRetries(sr1_, trace);
        const bool sawAttention = trace.find(" 06/28/") != std::string::npos;
        std::array<uint8_t, modMMC::kTocReplyLength> reply{};
        std::string handle = sr1_;
        const Answer tocAnswer = Snap(modMMC::ReadTOC(spti_, handle, false, reply));
        const auto toc = modMMC::ParseTOC(reply);
        const bool leadOut = tocAnswer.Good() && toc && toc->descriptors.size() == 2 &&
                             modMSF::BytesToLong(toc->descriptors[1].address) == discB_.Sectors();
        std::string why = "disc B read back";
        const bool read = ReadMatches(false, sr1_, discB_, 0, 8, why) &&
                          ReadMatches(false, sr1_, discB_, discB_.Sectors() - 4, 4, why);
        report_.Check("monitor.insert",
                      changed.starts_with("ok closed medium") && ready.Good() && sawAttention &&
                          leadOut && read,
                      "QEMU " + changed + ", TUR " + trace + ", TOC " + tocAnswer.Text() +
                          " lead-out " + (leadOut ? "right" : "wrong") + ", " + why);

        // Disc A back into drive 0.
        const std::string back = Monitor("change 0 disc-a");
        trace.clear();
        why = "disc A read back";
        const Answer again = ReadyWithRetries(sr0_, trace);
        const bool readA = ReadMatches(false, sr0_, discA_, 1000, 16, why);
        report_.Check("monitor.reinsert",
                      back.starts_with("ok closed medium") && again.Good() && readA,
                      "QEMU " + back + ", TUR " + trace + ", " + why);
    }

    Channel& channel_;
    Report& report_;
    Disc discA_;
    Disc discB_;
    scsi::clsSPTI spti_;
    const std::string sr0_ = "/dev/sr0";
    const std::string sr1_ = "/dev/sr1";
};

}  // namespace

int main(int argc, char** argv) {
    std::string control, data = "/testbed", variant = "drives";
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view key = argv[i];
        if (key == "--control")
            control = argv[i + 1];
        if (key == "--data")
            data = argv[i + 1];
        if (key == "--variant")
            variant = argv[i + 1];
    }
    Channel channel(control);
    Report report(channel);
    if (variant == "drives") {
        // The command line first, while the drives are as the guest booted them.
        testbed::CheckCommandLine(report, data + "/plattmix-cli");
        Probe probe(channel, report, data);
        probe.Run();
        // Last: it leaves drive 1 empty.
        testbed::CheckTray(report, channel, data + "/plattmix-cli");
    } else {
        // The other driver set-ups boot and list what the transport finds.
        scsi::clsSPTI spti;
        report.Info("variant", variant + " DriveCount " + std::to_string(spti.DriveCount()));
        // With ISO 9660 at hand: the images the harness put into the drives, as the kernel
        // mounts them, against the listings of their source trees.
        if (variant == "mount")
            testbed::CheckMountedTrees(report, data);
    }
    report.Done();
    return report.Failed() == 0 ? 0 : 1;
}
