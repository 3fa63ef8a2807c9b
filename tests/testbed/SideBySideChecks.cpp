#include "SideBySideChecks.h"

#include <array>
#include <vector>

#include "ScsiStatus.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace plattmix::testbed {

namespace {

using Bytes = std::vector<uint8_t>;
constexpr size_t kSector = 2048;
constexpr size_t kRawSector = 2352;
constexpr size_t kEdcEccAt = 2064;  // after sync, header and user data
constexpr uint8_t kReadCdUserData = 0x10;
constexpr uint8_t kReadCdRaw = 0xF8;  // sync, header, user data, EDC/ECC
constexpr uint8_t kMediaClass = 16;
constexpr uint32_t kDiscASectors = 1200, kDiscBSectors = 700;  // as the harness makes them

struct Answer {
    int32_t status = scsi::kStatusNotDelivered;
    uint8_t key = 0, asc = 0, ascq = 0;
    Bytes reply;
    std::string Sense() const {
        const std::array<uint8_t, 3> sense{key, asc, ascq};
        return std::to_string(status) + " " + Hex(sense);
    }
    std::string Text() const {
        return Sense() + " " + Hex(std::span(reply).first(std::min<size_t>(reply.size(), 24)));
    }
    // Status and sense alike. Without a medium QEMU leaves the qualifier 0, where a real drive
    // tells a closed tray (01) from an open one (02), as the image drive does.
    bool SameSense(const Answer& other) const {
        return status == other.status && key == other.key && asc == other.asc &&
               (ascq == other.ascq || asc == scsi::kAscMediumNotPresent);
    }
};

Answer Send(scsi::ISCSI& drive, std::string handle, std::span<const uint8_t> cdb, size_t length) {
    Answer answer;
    answer.reply.assign(length, 0);
    auto cdblen = static_cast<uint8_t>(cdb.size());
    int32_t direction = 0;
    int16_t timeOut = modMMC::kCommandTimeOut;
    answer.status = drive.ExecCMD(handle, cdb, cdblen, direction, answer.reply.data(),
                                  static_cast<int32_t>(length), timeOut);
    answer.key = drive.LastSK() & 0x0F;
    answer.asc = drive.LastASC();
    answer.ascq = drive.LastASCQ();
    return answer;
}

// Fields a real drive may answer differently, cleared or brought to one form in each reply
// (image: the image drive's) before the replies are compared.
using Mask = void (*)(Bytes& reply, bool image);

// QEMU marks the lead-out "copy permitted" (control 6) where drives repeat the last track's
// control; only ADR and the data-track bit of the lead-out's byte count.
void LeadOutControl(Bytes& toc, bool) {
    const size_t end = 2 + ((size_t{toc[0]} << 8) | toc[1]);
    if (end >= 12 && end <= toc.size())
        toc[end - 7] &= 0xF4;
}

// QEMU leaves the descriptor's ADR/control and track number 0; drives, like the image drive,
// give those of the last session's first track (0x14, 1). Header and address count.
void SessionTrack(Bytes& session, bool) {
    session[5] = session[6] = 0;
}

// The length field: QEMU counts the bytes after the four-byte header, the image drive those
// after the field itself; the program only needs it not to be 0. The event code: the guest's
// kernel polls the drive for media events itself and takes them first.
void EventLengthAndCode(Bytes& event, bool) {
    event[0] = event[1] = event[4] = 0;
}

// QEMU leaves EDC/ECC zero and writes the header's address in binary; a real drive, like the
// image drive, gives the codes and the address as the disc holds it, in BCD.
void RawSector(Bytes& raw, bool image) {
    for (size_t at = 0; at + kRawSector <= raw.size(); at += kRawSector) {
        std::fill(raw.begin() + long(at + kEdcEccAt), raw.begin() + long(at + kRawSector), 0);
        for (size_t i = at + 12; image && i < at + 15; ++i)
            raw[i] = static_cast<uint8_t>((raw[i] >> 4) * 10 + (raw[i] & 0x0F));
    }
}

class SideBySide {
  public:
    SideBySide(Report& report, Channel& channel, scsi::ISCSI& real, const std::string& prefix,
               const std::string& data)
        : report_(report), channel_(channel), real_(real), prefix_(prefix + "same."), data_(data) {
        int16_t one = 1, two = 2;
        realHandles_ = {real.DriveHandle(one), real.DriveHandle(two)};
        images_ = {image_.AddDrive(data + "/disc-a.iso").Value(), image_.AddDrive("").Value()};
    }

    void Run() {
        // After the boot QEMU's loaded drive may first report a unit attention.
        const std::string settled = Settle(0, false);
        report_.Check(prefix_ + "ready", settled.ends_with(" 0 000000"), "QEMU" + settled);
        Compare("tur.empty", 1, modMMC::BuildTestUnitReady());
        Compare("tur.loaded", 0, modMMC::BuildTestUnitReady());
        Compare("capacity", 0, modMMC::BuildReadCapacity(), 8);
        Compare("toc.lba", 0, modMMC::BuildReadTOC(false), modMMC::kTocReplyLength, LeadOutControl);
        Compare("toc.msf", 0, modMMC::BuildReadTOC(true), modMMC::kTocReplyLength, LeadOutControl);
        // QEMU reads the format only from byte 9's upper bits, its older place; drives read
        // byte 2. Both are set.
        auto session = modMMC::BuildReadTOCFormat(false, 1, 0, 12);
        session[9] = 0x40;
        Compare("toc.session", 0, session, 12, SessionTrack);
        Compare("readcd.raw", 0, modMMC::BuildReadCD(16, 2, kReadCdRaw), 2 * kRawSector, RawSector);
        const uint32_t last = kDiscASectors - 1;
        for (const auto& [lba, count] : {std::pair{0u, 1u}, {1u, 16u}, {517u, 27u}, {last, 1u}})
            Compare("readcd." + std::to_string(lba), 0,
                    modMMC::BuildReadCD(lba, count, kReadCdUserData), count * kSector);
        Compare("read10", 0, modMMC::BuildRead10(100, 32), 32 * kSector);
        Compare("read10.out-of-range", 0, modMMC::BuildRead10(last + 1, 1), kSector);
        Compare("gesn.loaded", 0, Event(), 8, EventLengthAndCode);
        Compare("gesn.empty", 1, Event(), 8, EventLengthAndCode);

        // The tray opened by the program's command, closed from outside.
        Compare("door.open", 0, modMMC::BuildStartStopUnit(true, false), 0, nullptr, "",
                "ok open medium");
        Compare("tur.open", 0, modMMC::BuildTestUnitReady());
        Compare("gesn.open", 0, Event(), 8, EventLengthAndCode);
        const std::string closed = Monitor("close-tray 0", "ok closed medium");
        image_.CloseTray(images_[0]);
        CompareSettling("close", 0, closed);

        // Disc B into the empty drive, then taken out again.
        const std::string inserted = Monitor("change 1 disc-b", "ok closed medium");
        image_.InsertMedium(images_[1], data_ + "/disc-b.iso");
        CompareSettling("insert", 1, inserted);
        Compare("toc.inserted", 1, modMMC::BuildReadTOC(false), modMMC::kTocReplyLength,
                LeadOutControl);
        Compare("read10.inserted", 1, modMMC::BuildRead10(kDiscBSectors - 4, 4), 4 * kSector);
        const std::string ejected = Monitor("eject 1", "ok open no-medium");
        image_.OpenTray(images_[1]);
        image_.RemoveMedium(images_[1]);
        Compare("tur.ejected", 1, modMMC::BuildTestUnitReady(), 0, nullptr, ejected);
        Compare("gesn.ejected", 1, Event(), 8, EventLengthAndCode);
        const std::string emptied = Monitor("close-tray 1", "ok closed no-medium");
        image_.CloseTray(images_[1]);
        Compare("tur.emptied", 1, modMMC::BuildTestUnitReady(), 0, nullptr, emptied);
    }

  private:
    static modMMC::Cdb10 Event() { return modMMC::BuildGetEventStatus(kMediaClass, 8); }

    // Works a QEMU drive through the monitor; empty when it answered as expected, else why not.
    std::string Monitor(const std::string& request, const std::string& expected) {
        const std::string answer = channel_.Request(request).value_or("no answer");
        return answer.starts_with(expected) ? "" : request + ": " + answer;
    }

    // Sends the command to both drives; one check for the answers, failed by the monitor's
    // problem (moved) if there was one, or by drive 0's tray not being where tray0 says after.
    void Compare(const std::string& what, size_t drive, std::span<const uint8_t> cdb,
                 size_t length = 0, Mask mask = nullptr, std::string moved = "",
                 const char* tray0 = nullptr) {
        Answer qemu = Send(real_, realHandles_[drive], cdb, length);
        Answer image = Send(image_, images_[drive], cdb, length);
        const std::string detail = "QEMU " + qemu.Text() + ", image drive " + image.Text();
        if (tray0 != nullptr)
            moved += Monitor("tray 0", tray0);
        if (mask != nullptr) {
            mask(qemu.reply, false);
            mask(image.reply, true);
        }
        // The bytes of a failed command mean nothing: the SCSI generic driver copies its buffer
        // back all the same, with an earlier command's bytes in it.
        const bool good = qemu.status == scsi::kStatusGood;
        report_.Check(
            prefix_ + what,
            moved.empty() && qemu.SameSense(image) && (!good || qemu.reply == image.reply),
            moved.empty() ? detail : moved + "; " + detail);
    }

    // TEST UNIT READY until the drive is ready, at most eight times: the answers from the unit
    // attention on (QEMU loads a disc only on the first command after the tray closed, which
    // still finds no medium; a real drive reports that it is becoming ready instead).
    std::string Settle(size_t drive, bool image) {
        std::string trace;
        for (int attempt = 0; attempt < 8; ++attempt) {
            const Answer a =
                image ? Send(image_, images_[drive], modMMC::BuildTestUnitReady(), 0)
                      : Send(real_, realHandles_[drive], modMMC::BuildTestUnitReady(), 0);
            if (a.asc == scsi::kAscMediumNotPresent && trace.empty())
                continue;
            trace += " " + a.Sense();
            if (a.status == scsi::kStatusGood)
                break;
        }
        return trace;
    }

    void CompareSettling(const std::string& what, size_t drive, const std::string& moved) {
        const std::string qemu = Settle(drive, false), image = Settle(drive, true);
        report_.Check(prefix_ + what, moved.empty() && qemu == image && qemu.ends_with(" 0 000000"),
                      moved + " QEMU" + qemu + ", image drive" + image);
    }

    Report& report_;
    Channel& channel_;
    scsi::ISCSI& real_;
    const std::string prefix_;
    const std::string data_;
    scsi::imagedrive::clsImageDrive image_;
    std::array<std::string, 2> realHandles_;
    std::array<std::string, 2> images_;
};

}  // namespace

void CheckSideBySide(Report& report, Channel& channel, scsi::ISCSI& real, const std::string& prefix,
                     const std::string& data) {
    SideBySide(report, channel, real, prefix, data).Run();
}

}  // namespace plattmix::testbed
