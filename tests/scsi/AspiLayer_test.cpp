// The generic-driver layer against a sysfs built here, with a stand-in for the ioctl: what real
// drives answer is proved in the drive test bed, here the refusals, the support answer's states
// and the completion event.
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
    AspiLayer::Options Options() const {
        // Every request GOOD, its first byte 0x05.
        return {(root / "class").string(), (root / "dev").string(), [](int, sg_io_hdr_t& h) {
                    if (h.dxferp != nullptr)
                        static_cast<uint8_t*>(h.dxferp)[0] = 0x05;
                    return 0;
                }};
    }
};

uint8_t Status(const uint8_t* srb) {
    return std::atomic_ref<uint8_t>(const_cast<uint8_t&>(srb[kSrbStatusByte]))
        .load(std::memory_order_acquire);
}

// Waits (bounded, ten seconds) until the layer has published the block's final status.
bool Finished(const uint8_t* srb) {
    for (int i = 0; i < 10000 && Status(srb) == kSrbPending; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return Status(srb) != kSrbPending;
}

bool Signalled(int descriptor) {
    pollfd p{descriptor, POLLIN, 0};
    return ::poll(&p, 1, 0) == 1;
}

std::array<uint8_t, kExecSrbSize> Exec(SrbAddress address, std::vector<uint8_t> cdb,
                                       uint8_t* buffer, uint32_t length, int event) {
    std::array<uint8_t, kExecSrbSize> srb{};
    BuildExecSrb(srb, {address, true, length, reinterpret_cast<uintptr_t>(buffer), event, cdb,
                       static_cast<uint8_t>(cdb.size())});
    return srb;
}

}  // namespace

TEST(AspiLayer, DrivesFromSysfs) {
    const fs::path folder = plattmix::test::ScratchFolder("aspi");
    const FakeSystem system(folder);
    const GenericDevices devices = ScanGenericDevices((folder / "class").string());
    EXPECT_TRUE(devices.driverPresent);
    EXPECT_EQ(devices.hosts, (std::set<unsigned>{0, 2}));
    ASSERT_EQ(devices.drives.size(), 3u);  // the disk is left out
    EXPECT_EQ(devices.drives[1].node, 1u);
    EXPECT_EQ(devices.drives[1].target, 1u);
    EXPECT_EQ(devices.drives[2].node, 3u);
    EXPECT_EQ(devices.drives[2].channel, 1u);
    EXPECT_EQ(devices.AdapterCount(), 3);
    EXPECT_EQ(devices.Find({2, 0, 0}), nullptr);
    for (const char* bad : {"0:0:0", "0:0:0:0:", "a:0:0:0"})
        EXPECT_FALSE(ParseHctl(bad)) << bad;
    EXPECT_EQ(ParseHctl("12:0:3:1")->host, 12u);
}

TEST(AspiLayer, SupportAnswer) {
    const fs::path folder = plattmix::test::ScratchFolder("aspi");
    FakeSystem system(folder);
    AspiLayer layer(system.Options());
    EXPECT_EQ(layer.SupportInfo(), 0x0103u);  // complete, hosts up to 2
    // Each query reads the drives anew.
    fs::create_directories(folder / "class/scsi_host/host5");
    system.Node("sg4", "5:0:0:0", "5");
    EXPECT_EQ(layer.SupportInfo(), 0x0106u);

    // Without the generic driver; with it but without a host.
    EXPECT_EQ(AspiLayer(FakeSystem(folder / "no-driver", false).Options()).SupportInfo(), 0xE400u);
    fs::create_directories(folder / "no-host/class/scsi_generic");
    AspiLayer noHost({(folder / "no-host/class").string(), (folder / "no-host/dev").string(), {}});
    EXPECT_EQ(noHost.SupportInfo(), 0xE800u);
}

TEST(AspiLayer, BlocksRefusedAtOnce) {
    const FakeSystem system(plattmix::test::ScratchFolder("aspi"));
    AspiLayer layer(system.Options());
    std::array<uint8_t, kDeviceTypeSrbSize> type{};
    for (const auto& [address, status] : {std::pair{SrbAddress{2, 0, 0}, kSrbNoDevice},  // disk
                                          std::pair{SrbAddress{1, 0, 0}, kSrbInvalidHostAdapter},
                                          std::pair{SrbAddress{3, 0, 0}, kSrbInvalidHostAdapter}}) {
        BuildDeviceTypeSrb(type, address);
        EXPECT_EQ(layer.Send(type.data()), status);
        EXPECT_EQ(type[kSrbStatusByte], status);
    }
    std::array<uint8_t, kDiskInfoSrbSize> disk{};
    BuildDiskInfoSrb(disk, {0, 7, 0});
    EXPECT_EQ(layer.Send(disk.data()), kSrbNoDevice);
    // A time-out block that neither sets nor gets.
    std::array<uint8_t, kTimeoutSrbSize> timeOut{};
    BuildTimeoutSrb(timeOut, {0, 1, 0}, 10);
    timeOut[kSrbFlagsByte] = 0;
    EXPECT_EQ(layer.Send(timeOut.data()), kSrbInvalidSrb);
    std::array<uint8_t, kDeviceTypeSrbSize> unknown{0x03};
    EXPECT_EQ(layer.Send(unknown.data()), kSrbInvalidCommand);
    EXPECT_EQ(layer.Send(nullptr), kSrbInvalidSrb);

    // Execute blocks that cannot be carried out: answered before Send returns, event signalled.
    const int event = ::eventfd(0, EFD_CLOEXEC);
    for (const auto& [address, cdb, status] :
         {std::tuple{SrbAddress{1, 0, 0}, std::vector<uint8_t>(6, 0), kSrbInvalidHostAdapter},
          std::tuple{SrbAddress{2, 0, 0}, std::vector<uint8_t>(6, 0), kSrbNoDevice},
          std::tuple{SrbAddress{0, 0, 0}, std::vector<uint8_t>{}, kSrbInvalidSrb}}) {
        auto srb = Exec(address, cdb, nullptr, 0, event);
        EXPECT_EQ(layer.Send(srb.data()), status);
        EXPECT_EQ(srb[kSrbStatusByte], status);
    }
    EXPECT_TRUE(Signalled(event));
    ::close(event);
}

TEST(AspiLayer, ExecuteCompletesLaterAndSignalsOnlyAnEvent) {
    const fs::path folder = plattmix::test::ScratchFolder("aspi");
    const FakeSystem system(folder);
    AspiLayer layer(system.Options());
    const int event = ::eventfd(0, EFD_CLOEXEC);
    std::array<uint8_t, 36> reply{};
    auto srb = Exec({2, 3, 0}, {0x12, 0, 0, 0, 36, 0}, reply.data(), 36, event);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_EQ(Status(srb.data()), kSrbComplete);
    EXPECT_TRUE(Signalled(event));
    EXPECT_EQ(reply[0], 0x05);
    ::close(event);

    // The post-processing field names a pipe's writing end: nothing is written to it.
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    srb = Exec({0, 0, 0}, {0, 0, 0, 0, 0, 0}, nullptr, 0, pipeEnds[1]);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_FALSE(Signalled(pipeEnds[0]));
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);

    // A node that cannot be opened: aborted, the device not reached.
    fs::remove(folder / "dev/sg1");
    srb = Exec({0, 1, 0}, {0, 0, 0, 0, 0, 0}, nullptr, 0, -1);
    EXPECT_EQ(layer.Send(srb.data()), kSrbPending);
    ASSERT_TRUE(Finished(srb.data()));
    EXPECT_EQ(Status(srb.data()), kSrbAborted);
    EXPECT_EQ(srb[kExecHostStatusAt], kHostSelectionTimeOut);
}
