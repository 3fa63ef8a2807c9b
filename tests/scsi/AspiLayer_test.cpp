// The generic-driver layer against a sysfs built here, with a stand-in for the ioctl: what real
// drives answer is proved in the drive test bed; here the support answer's states, the blocks
// refused, the request made of a block, the kernel's failures and the completion event. A disk
// is left out (2:0:0 has no device), a drive on a second channel is found (2:3:0 answers).
#include "AspiLayer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "common/ScratchFolder.h"

using namespace plattmix::scsi;
using namespace plattmix::scsi::aspi;
namespace fs = std::filesystem;

namespace {

// A sysfs with hosts 0 and 2 and these generic nodes: sg0 a drive at 0:0:0:0, sg1 a drive at
// 0:0:1:0, sg2 a disk at 2:0:0:0, sg3 a drive at 2:1:3:0 (second channel); a node per drive.
struct FakeSystem {
    fs::path root;
    explicit FakeSystem(const fs::path& folder, bool withGeneric = true) : root(folder) {
        for (const char* host : {"host0", "host2"})
            fs::create_directories(root / "class/scsi_host" / host);
        fs::create_directories(root / "dev");
        if (!withGeneric)
            return;
        Node("sg0", "0:0:0:0", "5");
        Node("sg1", "0:0:1:0", "5\n");
        Node("sg2", "2:0:0:0", "0");
        Node("sg3", "2:1:3:0", "5");
        fs::create_directories(root / "class/scsi_generic/other");
    }
    void Node(const std::string& name, const std::string& hctl, const std::string& type) {
        const fs::path device = root / "devices" / hctl;
        fs::create_directories(device);
        std::ofstream(device / "type") << type;
        fs::create_directories(root / "class/scsi_generic" / name);
        fs::create_directory_symlink(device, root / "class/scsi_generic" / name / "device");
        std::ofstream(root / "dev" / name) << "";
    }
    // Every request GOOD unless the kernel stand-in is given.
    AspiLayer::Options Options(AspiLayer::Executor kernel = {}) const {
        if (!kernel)
            kernel = [](int, sg_io_hdr_t&) { return 0; };
        return {(root / "class").string(), (root / "dev").string(), kernel};
    }
};

uint8_t Status(const uint8_t* srb) {
    return std::atomic_ref<uint8_t>(const_cast<uint8_t&>(srb[kSrbStatusByte]))
        .load(std::memory_order_acquire);
}

bool Signalled(int descriptor) {
    pollfd p{descriptor, POLLIN, 0};
    return ::poll(&p, 1, 0) == 1;
}

using Srb = std::array<uint8_t, kExecSrbSize>;

Srb Exec(SrbAddress address, std::vector<uint8_t> cdb, uint8_t* buffer, uint32_t length,
         int event = -1) {
    Srb srb{};
    BuildExecSrb(srb, {address, true, length, reinterpret_cast<uintptr_t>(buffer), event, cdb,
                       static_cast<uint8_t>(cdb.size())});
    return srb;
}

// The layer over the sysfs, its kernel stand-in answering with `answer` and keeping the request.
class AspiLayerTest : public ::testing::Test {
  protected:
    // Sends the block and waits (bounded, ten seconds) for its final status.
    uint8_t Run(Srb& srb) {
        EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
        for (int i = 0; i < 10000 && Status(srb.data()) == kSrbPending; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return Status(srb.data());
    }

    const fs::path folder = plattmix::test::ScratchFolder("aspi");
    const FakeSystem system{folder};
    sg_io_hdr_t seen{};
    std::function<int(sg_io_hdr_t&)> answer = [](sg_io_hdr_t&) { return 0; };
    AspiLayer layer{system.Options([this](int, sg_io_hdr_t& h) {
        seen = h;
        return answer(h);
    })};
    std::array<uint8_t, 4096> buffer{};
};

const std::vector<uint8_t> kTur(6, 0);
const std::vector<uint8_t> kReadCd{0xBE, 0, 0, 0, 0, 16, 0, 0, 2, 0x10};

}  // namespace

TEST_F(AspiLayerTest, SupportAnswer) {
    EXPECT_EQ(layer.SupportInfo(), 0x0103u);  // complete, hosts up to 2
    // Each query reads the drives anew.
    fs::create_directories(folder / "class/scsi_host/host5");
    FakeSystem(folder, false).Node("sg4", "5:0:0:0", "5");
    EXPECT_EQ(layer.SupportInfo(), 0x0106u);

    // Without the generic driver; with it but without a host.
    EXPECT_EQ(AspiLayer(FakeSystem(folder / "no-driver", false).Options()).SupportInfo(), 0xE400u);
    fs::create_directories(folder / "no-host/class/scsi_generic");
    AspiLayer noHost({(folder / "no-host/class").string(), (folder / "no-host/dev").string(), {}});
    EXPECT_EQ(noHost.SupportInfo(), 0xE800u);

    for (const char* bad : {"0:0:0", "0:0:0:0:", "a:0:0:0"})
        EXPECT_FALSE(ParseHctl(bad)) << bad;
}

// Blocks the layer cannot carry out are answered before Send returns; nothing reaches the kernel.
TEST_F(AspiLayerTest, BlocksRefusedAtOnce) {
    // A time-out block that neither sets nor gets.
    std::array<uint8_t, kTimeoutSrbSize> timeOut{};
    BuildTimeoutSrb(timeOut, {0, 1, 0}, 10);
    timeOut[kSrbFlagsByte] = 0;
    EXPECT_EQ(layer.Send(timeOut.data()), kSrbInvalidSrb);
    std::array<uint8_t, kDeviceTypeSrbSize> unknown{0x03};
    EXPECT_EQ(layer.Send(unknown.data()), kSrbInvalidCommand);
    EXPECT_EQ(layer.Send(nullptr), kSrbInvalidSrb);

    // Execute blocks: no host, the disk, no command, a command too long, data without a
    // direction or without a buffer. Their event is signalled all the same.
    const int event = ::eventfd(0, EFD_CLOEXEC);
    Srb longCdb = Exec({0, 0, 0}, kTur, nullptr, 0, event);
    longCdb[kExecCdbLengthAt] = 17;
    Srb noDirection = Exec({0, 0, 0}, kReadCd, buffer.data(), 2048, event);
    noDirection[kSrbFlagsByte] = 0;
    const std::pair<Srb, uint8_t> refused[] = {
        {Exec({1, 0, 0}, kTur, nullptr, 0, event), kSrbInvalidHostAdapter},
        {Exec({2, 0, 0}, kTur, nullptr, 0, event), kSrbNoDevice},
        {Exec({0, 0, 0}, {}, nullptr, 0, event), kSrbInvalidSrb},
        {longCdb, kSrbInvalidSrb},
        {noDirection, kSrbInvalidSrb},
        {Exec({0, 0, 0}, kReadCd, nullptr, 2048, event), kSrbInvalidSrb},  // no buffer
    };
    for (auto [srb, status] : refused) {
        EXPECT_EQ(layer.Send(srb.data()), status);
        EXPECT_EQ(srb[kSrbStatusByte], status);
    }
    EXPECT_TRUE(Signalled(event));
    EXPECT_EQ(seen.interface_id, 0);  // nothing reached the kernel
    ::close(event);
}

TEST_F(AspiLayerTest, TheRequestFollowsTheBlock) {
    // Time-outs in half-seconds: as set for the drive, else 108000; beyond what the kernel
    // takes, as long as it allows.
    std::array<uint8_t, kTimeoutSrbSize> timeOut{};
    BuildTimeoutSrb(timeOut, {0, 1, 0}, 10);
    ASSERT_EQ(layer.Send(timeOut.data()), kSrbComplete);
    BuildTimeoutSrb(timeOut, {2, 3, 0}, 0xFFFFFFFE);
    ASSERT_EQ(layer.Send(timeOut.data()), kSrbComplete);
    for (const auto& [address, milliseconds] :
         {std::pair{SrbAddress{0, 1, 0}, 5000u}, std::pair{SrbAddress{0, 0, 0}, 54000000u},
          std::pair{SrbAddress{2, 3, 0}, 0xFFFFFFFFu}}) {
        Srb srb = Exec(address, kReadCd, buffer.data(), 4096);
        EXPECT_EQ(Run(srb), kSrbComplete);
        EXPECT_EQ(seen.timeout, milliseconds);
    }
    EXPECT_EQ(seen.dxfer_direction, SG_DXFER_FROM_DEV);
    EXPECT_EQ(seen.mx_sb_len, 14);

    // Both direction flags: no data moves. A sense area asked larger than the block's is cut.
    Srb write = Exec({0, 0, 0}, {0x2A, 0, 0, 0, 0, 0, 0, 0, 1, 0}, buffer.data(), 2048);
    write[kSrbFlagsByte] = kSrbDataIn | kSrbDataOut;
    write[kExecSenseLengthAt] = 40;
    EXPECT_EQ(Run(write), kSrbComplete);
    EXPECT_EQ(seen.dxfer_direction, SG_DXFER_NONE);
    EXPECT_EQ(seen.dxferp, nullptr);
    EXPECT_EQ(seen.mx_sb_len, 16);
    // Without data the direction does not matter.
    Srb tur = Exec({0, 0, 0}, kTur, nullptr, 0);
    tur[kSrbFlagsByte] = 0;
    EXPECT_EQ(Run(tur), kSrbComplete);
}

TEST_F(AspiLayerTest, TheKernelsAnswerInTheBlock) {
    // CHECK CONDITION with 18 bytes of sense: the status as the drive gave it and only the
    // fourteen sense bytes the block asked for; the driver's "sense present" is no failure.
    answer = [](sg_io_hdr_t& h) {
        h.status = 0x02;
        h.driver_status = 0x08;
        h.sb_len_wr = 18;
        for (uint8_t i = 0; i < 18; ++i)
            h.sbp[i] = 0xA0 + i;
        return 0;
    };
    Srb srb = Exec({0, 0, 0}, kTur, nullptr, 0);
    EXPECT_EQ(Run(srb), kSrbError);
    EXPECT_EQ(srb[kExecTargetStatusAt], 0x02);
    EXPECT_EQ(srb[kExecSenseAt], 0xA0);
    EXPECT_EQ(srb[kExecSenseAt + 13], 0xAD);
    EXPECT_EQ(srb[kExecSenseAt + 14], 0x00);

    // A READ that left blocks out is aborted as an underrun, though the drive said GOOD.
    answer = [](sg_io_hdr_t& h) {
        h.resid = 2048;
        return 0;
    };
    srb = Exec({0, 0, 0}, kReadCd, buffer.data(), 4096);
    EXPECT_EQ(Run(srb), kSrbAborted);
    EXPECT_EQ(srb[kExecHostStatusAt], kHostDataUnderrun);

    // Not carried to its end: aborted, with the host status saying why.
    struct Case {
        int ioctl;
        unsigned short host, driver;
        uint8_t hostStatus;
    };
    for (const Case c :
         {Case{-1, 0, 0, kHostSelectionTimeOut}, Case{0, 0x03, 0, kHostCommandTimeOut},
          Case{0, 0, 0x06, kHostCommandTimeOut}, Case{0, 0x08, 0, kHostBusReset},
          Case{0, 0x01, 0, kHostSelectionTimeOut}}) {
        answer = [c](sg_io_hdr_t& h) {
            h.host_status = c.host;
            h.driver_status = c.driver;
            h.status = 0x02;
            return c.ioctl;
        };
        srb = Exec({0, 0, 0}, kTur, nullptr, 0);
        EXPECT_EQ(Run(srb), kSrbAborted) << c.host;
        EXPECT_EQ(srb[kExecHostStatusAt], c.hostStatus) << c.host << " " << c.driver;
        EXPECT_EQ(srb[kExecTargetStatusAt], 0);
    }

    // A node that cannot be opened: aborted, the device not reached.
    fs::remove(folder / "dev/sg1");
    srb = Exec({0, 1, 0}, kTur, nullptr, 0);
    EXPECT_EQ(Run(srb), kSrbAborted);
    EXPECT_EQ(srb[kExecHostStatusAt], kHostSelectionTimeOut);
}

// The data a drive sends reaches the buffer in the drive test bed.
TEST_F(AspiLayerTest, CompletionSignalsOnlyAnEvent) {
    const int event = ::eventfd(0, EFD_CLOEXEC);
    Srb srb = Exec({2, 3, 0}, kTur, nullptr, 0, event);
    EXPECT_EQ(Run(srb), kSrbComplete);
    EXPECT_TRUE(Signalled(event));
    ::close(event);

    // The post-processing field names a pipe's writing end: nothing is written to it.
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    srb = Exec({0, 0, 0}, kTur, nullptr, 0, pipeEnds[1]);
    EXPECT_EQ(Run(srb), kSrbComplete);
    EXPECT_FALSE(Signalled(pipeEnds[0]));
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
}
