#include "AspiLayer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
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
        fs::create_directories(root / "class/scsi_generic");
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
    std::string SysClass() const { return (root / "class").string(); }
    std::string Dev() const { return (root / "dev").string(); }
};

uint8_t Status(const uint8_t* srb) {
    return std::atomic_ref<uint8_t>(const_cast<uint8_t&>(srb[kSrbStatusByte]))
        .load(std::memory_order_acquire);
}

// Waits (bounded) until the layer has published the block's final status.
bool Finished(const uint8_t* srb) {
    for (int i = 0; i < 10000 && Status(srb) == kSrbPending; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return Status(srb) != kSrbPending;
}

bool Signalled(int event) {
    pollfd p{event, POLLIN, 0};
    return ::poll(&p, 1, 0) == 1;
}

// What the executor saw of one request.
struct Seen {
    std::string node;
    std::vector<uint8_t> cdb;
    unsigned timeout = 0;
    int direction = 0;
    unsigned length = 0;
};

class AspiLayerTest : public ::testing::Test {
  protected:
    void SetUp() override { folder = plattmix::test::ScratchFolder("aspi"); }

    AspiLayer::Options Options(const FakeSystem& system) {
        AspiLayer::Options options;
        options.sysClass = system.SysClass();
        options.devDir = system.Dev();
        options.execute = [this](int fd, sg_io_hdr_t& h) {
            std::array<char, 256> path{};
            const std::string link = "/proc/self/fd/" + std::to_string(fd);
            const ssize_t n = ::readlink(link.c_str(), path.data(), path.size() - 1);
            std::lock_guard guard(lock);
            seen.push_back(
                {fs::path(std::string(path.data(), n > 0 ? size_t(n) : 0)).filename().string(),
                 {h.cmdp, h.cmdp + h.cmd_len},
                 h.timeout,
                 h.dxfer_direction,
                 h.dxfer_len});
            return answer(h);
        };
        return options;
    }

    fs::path folder;
    std::mutex lock;
    std::vector<Seen> seen;
    std::function<int(sg_io_hdr_t&)> answer = [](sg_io_hdr_t&) { return 0; };
};

std::array<uint8_t, kExecSrbSize> Exec(SrbAddress address, std::vector<uint8_t> cdb,
                                       uint8_t* buffer, uint32_t length, int event) {
    std::array<uint8_t, kExecSrbSize> srb{};
    BuildExecSrb(srb, {address, true, length, reinterpret_cast<uintptr_t>(buffer), event, cdb,
                       static_cast<uint8_t>(cdb.size())});
    return srb;
}

}  // namespace

TEST_F(AspiLayerTest, DrivesFromSysfs) {
    const FakeSystem system(folder);
    const GenericDevices devices = ScanGenericDevices(system.SysClass());
    EXPECT_TRUE(devices.driverPresent);
    EXPECT_EQ(devices.hosts, (std::set<unsigned>{0, 2}));
    ASSERT_EQ(devices.drives.size(), 3u);  // the disk is left out
    EXPECT_EQ(devices.drives[0].node, 0u);
    EXPECT_EQ(devices.drives[1].node, 1u);
    EXPECT_EQ(devices.drives[1].target, 1u);
    EXPECT_EQ(devices.drives[2].node, 3u);
    EXPECT_EQ(devices.drives[2].channel, 1u);
    EXPECT_EQ(devices.AdapterCount(), 3);
    ASSERT_NE(devices.Find({2, 3, 0}), nullptr);
    EXPECT_EQ(devices.Find({2, 0, 0}), nullptr);

    EXPECT_FALSE(ParseHctl("0:0:0"));
    EXPECT_FALSE(ParseHctl("0:0:0:0:"));
    EXPECT_FALSE(ParseHctl("a:0:0:0"));
    EXPECT_EQ(ParseHctl("12:0:3:1")->host, 12u);

    const GenericDevices none = ScanGenericDevices((folder / "nothing").string());
    EXPECT_FALSE(none.driverPresent);
    EXPECT_EQ(none.AdapterCount(), 0);
}

TEST_F(AspiLayerTest, SupportAnswer) {
    FakeSystem system(folder);
    AspiLayer layer(Options(system));
    EXPECT_EQ(layer.SupportInfo(), 0x0103u);  // complete, hosts up to 2
    // Each query reads the drives anew.
    fs::create_directories(folder / "class/scsi_host/host5");
    system.Node("sg4", "5:0:0:0", "5");
    EXPECT_EQ(layer.SupportInfo(), 0x0106u);
    std::array<uint8_t, kDeviceTypeSrbSize> type{};
    BuildDeviceTypeSrb(type, {5, 0, 0});
    EXPECT_EQ(layer.Send(type.data()), kSrbComplete);

    // Without the generic driver; with it but without a host.
    const FakeSystem noDriver(folder / "no-driver", false);
    EXPECT_EQ(AspiLayer(Options(noDriver)).SupportInfo(), 0xE400u);
    fs::create_directories(folder / "no-host/class/scsi_generic");
    AspiLayer noHost({(folder / "no-host/class").string(), (folder / "no-host/dev").string(), {}});
    EXPECT_EQ(noHost.SupportInfo(), 0xE800u);
}

TEST_F(AspiLayerTest, DeviceTypeDiskInfoAndTimeOuts) {
    const FakeSystem system(folder);
    AspiLayer layer(Options(system));

    std::array<uint8_t, kDeviceTypeSrbSize> type{};
    BuildDeviceTypeSrb(type, {0, 1, 0});
    EXPECT_EQ(layer.Send(type.data()), kSrbComplete);
    EXPECT_EQ(type[kSrbStatusByte], kSrbComplete);
    EXPECT_EQ(type[kDeviceTypeAt], 5);
    BuildDeviceTypeSrb(type, {2, 0, 0});  // the disk
    EXPECT_EQ(layer.Send(type.data()), kSrbNoDevice);
    EXPECT_EQ(type[kDeviceTypeAt], 0);
    BuildDeviceTypeSrb(type, {1, 0, 0});  // no host 1
    EXPECT_EQ(layer.Send(type.data()), kSrbInvalidHostAdapter);
    BuildDeviceTypeSrb(type, {3, 0, 0});
    EXPECT_EQ(layer.Send(type.data()), kSrbInvalidHostAdapter);

    // The drive number is the generic node's number.
    std::array<uint8_t, kDiskInfoSrbSize> disk{};
    BuildDiskInfoSrb(disk, {2, 3, 0});
    EXPECT_EQ(layer.Send(disk.data()), kSrbComplete);
    EXPECT_EQ(disk[kDiskInfoDriveAt], 3);
    BuildDiskInfoSrb(disk, {0, 7, 0});
    EXPECT_EQ(layer.Send(disk.data()), kSrbNoDevice);

    // A time-out is kept per drive; one never set reads as the default.
    std::array<uint8_t, kTimeoutSrbSize> timeOut{};
    BuildTimeoutSrb(timeOut, {0, 1, 0}, 10);
    EXPECT_EQ(layer.Send(timeOut.data()), kSrbComplete);
    const auto get = [&](SrbAddress address) {
        BuildTimeoutSrb(timeOut, address, 0);
        timeOut[kSrbFlagsByte] = kSrbDataIn;
        const uint32_t status = layer.Send(timeOut.data());
        return std::pair{status, ReadLittle32(timeOut, kTimeoutAt)};
    };
    EXPECT_EQ(get({0, 1, 0}), (std::pair<uint32_t, uint32_t>{kSrbComplete, 10}));
    EXPECT_EQ(get({0, 0, 0}), (std::pair<uint32_t, uint32_t>{kSrbComplete, 108000}));
    EXPECT_EQ(get({0, 5, 0}).first, kSrbNoDevice);
    BuildTimeoutSrb(timeOut, {0, 1, 0}, 10);
    timeOut[kSrbFlagsByte] = 0;
    EXPECT_EQ(layer.Send(timeOut.data()), kSrbInvalidSrb);

    std::array<uint8_t, kDeviceTypeSrbSize> unknown{0x03};
    EXPECT_EQ(layer.Send(unknown.data()), kSrbInvalidCommand);
    EXPECT_EQ(unknown[kSrbStatusByte], kSrbInvalidCommand);
    EXPECT_EQ(layer.Send(nullptr), kSrbInvalidSrb);
}

TEST_F(AspiLayerTest, ExecuteCompletesLaterAndSignalsItsEvent) {
    const FakeSystem system(folder);
    answer = [](sg_io_hdr_t& h) {
        auto* data = static_cast<uint8_t*>(h.dxferp);
        data[0] = 0x05;
        data[8] = 'Q';
        return 0;
    };
    AspiLayer layer(Options(system));
    std::array<uint8_t, kTimeoutSrbSize> timeOut{};
    BuildTimeoutSrb(timeOut, {2, 3, 0}, 10);
    ASSERT_EQ(layer.Send(timeOut.data()), kSrbComplete);

    const int event = ::eventfd(0, EFD_CLOEXEC);
    std::array<uint8_t, 36> reply{};
    auto srb = Exec({2, 3, 0}, {0x12, 0, 0, 0, 36, 0}, reply.data(), 36, event);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_EQ(Status(srb.data()), kSrbComplete);
    EXPECT_TRUE(Signalled(event));
    EXPECT_EQ(reply[0], 0x05);
    EXPECT_EQ(reply[8], 'Q');
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].node, "sg3");
    EXPECT_EQ(seen[0].cdb, (std::vector<uint8_t>{0x12, 0, 0, 0, 36, 0}));
    EXPECT_EQ(seen[0].timeout, 5000u);
    EXPECT_EQ(seen[0].direction, SG_DXFER_FROM_DEV);
    EXPECT_EQ(seen[0].length, 36u);

    // CHECK CONDITION: the target status and the sense data in the block.
    answer = [](sg_io_hdr_t& h) {
        h.status = 0x02;
        h.sb_len_wr = 18;
        h.sbp[0] = 0x70;
        h.sbp[2] = 0x02;
        h.sbp[12] = 0x3A;
        h.sbp[13] = 0x01;
        return 0;
    };
    srb = Exec({0, 0, 0}, {0, 0, 0, 0, 0, 0}, nullptr, 0, -1);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_EQ(Status(srb.data()), kSrbError);
    EXPECT_EQ(srb[kExecTargetStatusAt], 0x02);
    EXPECT_EQ(srb[kExecSenseAt + 2], 0x02);
    EXPECT_EQ(srb[kExecSenseAt + 12], 0x3A);
    EXPECT_EQ(seen.back().node, "sg0");
    EXPECT_EQ(seen.back().timeout, 54000000u);  // never set: the default

    // The kernel's time-out: aborted.
    answer = [](sg_io_hdr_t& h) {
        h.host_status = 0x03;
        return 0;
    };
    srb = Exec({0, 1, 0}, {0, 0, 0, 0, 0, 0}, nullptr, 0, event);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_EQ(Status(srb.data()), kSrbAborted);
    EXPECT_EQ(srb[kExecHostStatusAt], kHostCommandTimeOut);
    ::close(event);
}

TEST_F(AspiLayerTest, ExecuteRefusedAtOnce) {
    const FakeSystem system(folder);
    AspiLayer layer(Options(system));
    const int event = ::eventfd(0, EFD_CLOEXEC);
    const struct {
        SrbAddress address;
        std::vector<uint8_t> cdb;
        uint8_t status;
    } cases[] = {
        {{1, 0, 0}, {0, 0, 0, 0, 0, 0}, kSrbInvalidHostAdapter},
        {{2, 0, 0}, {0, 0, 0, 0, 0, 0}, kSrbNoDevice},  // the disk
        {{0, 0, 0}, {}, kSrbInvalidSrb},
    };
    for (const auto& c : cases) {
        auto srb = Exec(c.address, c.cdb, nullptr, 0, event);
        EXPECT_EQ(layer.Send(srb.data()), c.status);
        EXPECT_EQ(srb[kSrbStatusByte], c.status);
    }
    EXPECT_TRUE(Signalled(event));
    EXPECT_TRUE(seen.empty());
    ::close(event);

    // A node that cannot be opened: aborted, the device not reached.
    fs::remove(folder / "dev/sg1");
    auto srb = Exec({0, 1, 0}, {0, 0, 0, 0, 0, 0}, nullptr, 0, -1);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_EQ(Status(srb.data()), kSrbAborted);
    EXPECT_EQ(srb[kExecHostStatusAt], kHostSelectionTimeOut);
}

TEST_F(AspiLayerTest, OnlyAnEventIsSignalled) {
    const FakeSystem system(folder);
    AspiLayer layer(Options(system));
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    // The post-processing field names the pipe's writing end: nothing is written to it.
    auto srb = Exec({0, 0, 0}, {0, 0, 0, 0, 0, 0}, nullptr, 0, pipeEnds[1]);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_FALSE(Signalled(pipeEnds[0]));
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
}
