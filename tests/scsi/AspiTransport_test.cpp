#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <vector>

#include "AspiLibrary.h"
#include "AspiSrb.h"
#include "ScsiStatus.h"
#include "clsASPI.h"
#include "scsi/FakeAspiState.h"

using namespace plattmix::scsi;
using plattmix::test::FakeAspiState;

namespace {

class AspiTransportTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // Held for the whole test, so the script outlives each transport's own unloading.
        library = ::dlopen(PLATTMIX_FAKE_ASPI_LIBRARY, RTLD_NOW);
        ASSERT_NE(library, nullptr) << ::dlerror();
        auto* control = reinterpret_cast<FakeAspiState* (*)()>(::dlsym(library, "FakeAspiControl"));
        ASSERT_NE(control, nullptr);
        fake = control();
        fake->Reset();
        fake->Type(0, 1, 0) = 5;
    }
    void TearDown() override {
        if (library != nullptr)
            ::dlclose(library);
    }

    // Sends cdb to the handle through a new transport's ExecCMD; the caller's time-out after.
    struct Sent {
        int32_t status = -1;
        int16_t timeOut = 0;
        uint8_t sk = 0, asc = 0, ascq = 0;
    };
    Sent Exec(clsASPI& aspi, std::string handle, int16_t timeOut, int32_t direction = 0,
              std::span<uint8_t> buffer = {}) {
        const std::array<uint8_t, 12> cdb{0xBE, 0, 0, 0, 0, 0x10, 0, 0, 1, 0x10, 0xEE, 0xEE};
        uint8_t cdblen = 10;
        Sent sent;
        sent.timeOut = timeOut;
        sent.status = aspi.ExecCMD(handle, cdb, cdblen, direction, buffer.data(),
                                   static_cast<int32_t>(buffer.size()), sent.timeOut);
        sent.sk = aspi.LastSK();
        sent.asc = aspi.LastASC();
        sent.ascq = aspi.LastASCQ();
        return sent;
    }

    void* library = nullptr;
    FakeAspiState* fake = nullptr;
    const std::string drive{'\0', '\1', '\0'};
};

std::vector<uint8_t> Bytes(std::span<const uint8_t> span) {
    return {span.begin(), span.end()};
}

}  // namespace

TEST_F(AspiTransportTest, ScanReachesOneAdapterMoreThanReported) {
    fake->supportInfo = 0x0102;  // complete, two adapters
    fake->Type(0, 1, 0) = 5;
    fake->Type(0, 2, 0) = 0;  // a disk
    fake->Type(1, 3, 2) = 5;
    fake->Type(2, 7, 7) = 5;  // on the adapter beyond the reported count
    fake->Type(3, 0, 0) = 5;  // beyond that
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    EXPECT_EQ(aspi.Interface(), "ASPI");
    EXPECT_TRUE(aspi.Installed());
    EXPECT_TRUE(aspi.Initialized());
    EXPECT_EQ(fake->highestAdapterAsked, 2u);
    EXPECT_EQ(fake->deviceTypeQueries, 3u * 8 * 8);
    ASSERT_EQ(aspi.DriveCount(), 3);
    int16_t one = 1, two = 2, three = 3, four = 4, zero = 0;
    EXPECT_EQ(aspi.DriveHandle(one), std::string({'\0', '\1', '\0'}));
    const std::string second = aspi.DriveHandle(two);
    EXPECT_EQ(second, "\x01\x03\x02");
    EXPECT_EQ(aspi.DriveHandle(three), "\x02\x07\x07");
    EXPECT_EQ(aspi.DriveHandle(four), "");
    EXPECT_EQ(aspi.DriveHandle(zero), "");
    EXPECT_EQ(aspi.HostAdapter(second), 1);
    EXPECT_EQ(aspi.TargetId(second), 3);
    EXPECT_EQ(aspi.LUN(second), 2);
    EXPECT_EQ(aspi.HostAdapter("ab"), 0);

    // Anything but "complete" in the status byte: not initialized, yet installed.
    fake->supportInfo = 0xE803;
    EXPECT_FALSE(aspi.Initialized());
    EXPECT_TRUE(aspi.Installed());
}

TEST_F(AspiTransportTest, WithoutTheLibraryNothingIsThere) {
    clsASPI aspi("/nonexistent/libplattmix_aspi.so");
    EXPECT_FALSE(aspi.Installed());
    EXPECT_FALSE(aspi.Initialized());
    EXPECT_EQ(aspi.DriveCount(), 0);
    EXPECT_EQ(Exec(aspi, drive, 5).status, kStatusNotDelivered);
    EXPECT_EQ(aspi.DriveChar(drive), "");
}

TEST_F(AspiTransportTest, TimeOutBlockThenTheCommand) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    std::array<uint8_t, 2048> buffer{};
    Sent sent = Exec(aspi, "\x02\x03\x01", 5, 0, buffer);
    EXPECT_EQ(sent.status, 0);
    EXPECT_EQ(Bytes(fake->timeOutSrb), (std::vector<uint8_t>{0x08, 0x00, 0x02, 0x10, 0, 0, 0, 0,
                                                             0x03, 0x01, 0x0A, 0x00, 0x00, 0x00}));
    const auto& exec = fake->execSrb;
    EXPECT_EQ(Bytes(std::span(exec).first(16)),
              (std::vector<uint8_t>{0x02, 0x00, 0x02, 0x08, 0, 0, 0, 0, 0x03, 0x01, 0, 0, 0x00,
                                    0x08, 0x00, 0x00}));
    EXPECT_EQ(exec[kExecSenseLengthAt], 14);
    EXPECT_EQ(exec[kExecCdbLengthAt], 10);
    EXPECT_EQ(Bytes(std::span(exec).subspan(kExecCdbAt, 12)),
              (std::vector<uint8_t>{0xBE, 0, 0, 0, 0, 0x10, 0, 0, 1, 0x10, 0, 0}));
    const uint64_t address =
        uint64_t{ReadLittle32(exec, kExecBufferHighAt)} << 32 | ReadLittle32(exec, kExecBufferAt);
    EXPECT_EQ(address, reinterpret_cast<uintptr_t>(buffer.data()));
    EXPECT_GE(static_cast<int32_t>(ReadLittle32(exec, kExecEventAt)), 0);

    // TimeOut 0: the default in half-seconds; the caller's variable is left at 0.
    sent = Exec(aspi, drive, 0);
    EXPECT_EQ(ReadLittle32(fake->timeOutSrb, kTimeoutAt), 108000u);
    EXPECT_EQ(sent.timeOut, 0);
    // Every direction but 0 sends data to the device.
    for (int32_t direction : {1, 16, -1}) {
        Exec(aspi, drive, 5, direction);
        EXPECT_EQ(fake->execSrb[kSrbFlagsByte], kSrbDataOut) << direction;
    }
}

TEST_F(AspiTransportTest, StatusAndSenseBytes) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    // CHECK CONDITION: the target status, the sense key's low four bits only.
    fake->execStatus = kSrbError;
    fake->targetStatus = 0x02;
    fake->sense[0] = 0x70;
    fake->sense[2] = 0xE2;  // filemark, end of medium and length flags over "not ready"
    fake->sense[12] = 0x3A;
    fake->sense[13] = 0x01;
    Sent sent = Exec(aspi, drive, 5);
    EXPECT_EQ(sent.status, 2);
    EXPECT_EQ(sent.sk, 0x02);
    EXPECT_EQ(sent.asc, 0x3A);
    EXPECT_EQ(sent.ascq, 0x01);

    // Aborted: 255, whatever the target status says.
    fake->execStatus = kSrbAborted;
    fake->targetStatus = 0;
    EXPECT_EQ(Exec(aspi, drive, 5).status, kStatusNotDelivered);
    // Refused by the layer (no such device): 255 too.
    fake->execStatus = kSrbNoDevice;
    EXPECT_EQ(Exec(aspi, drive, 5).status, kStatusNotDelivered);

    // A request without sense data clears the three bytes.
    fake->execStatus = kSrbComplete;
    fake->sense = {};
    sent = Exec(aspi, drive, 5);
    EXPECT_EQ(sent.status, 0);
    EXPECT_EQ(sent.sk + sent.asc + sent.ascq, 0);

    // A handle that is not three characters is not sent at all; the sense bytes stay.
    fake->sense[2] = 0x05;
    Exec(aspi, drive, 5);
    const unsigned sentBefore = fake->execCount;
    fake->sense[2] = 0x06;
    sent = Exec(aspi, "/dev/sg0", 5);
    EXPECT_EQ(sent.status, kStatusNotDelivered);
    EXPECT_EQ(sent.sk, 0x05);
    EXPECT_EQ(fake->execCount, sentBefore);
}

TEST_F(AspiTransportTest, WaitsForALaterAnswer) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    std::array<uint8_t, 16> buffer{};
    fake->completeAfterMs = 20;
    fake->replyByte = 0x5A;
    // Time-out block accepted: the status byte is polled.
    EXPECT_EQ(Exec(aspi, drive, 5, 0, buffer).status, 0);
    EXPECT_EQ(buffer[0], 0x5A);

    // Time-out block refused, TimeOut 0: polled as well.
    fake->timeOutStatus = kSrbError;
    fake->execStatus = kSrbError;
    fake->targetStatus = 0x08;
    EXPECT_EQ(Exec(aspi, drive, 0, 0, buffer).status, 0x08);

    // Time-out block refused, TimeOut given: the event ends the wait.
    fake->execStatus = kSrbComplete;
    fake->targetStatus = 0;
    buffer[0] = 0;
    EXPECT_EQ(Exec(aspi, drive, 5, 0, buffer).status, 0);
    EXPECT_EQ(buffer[0], 0x5A);
}

TEST_F(AspiTransportTest, AWaitThatRunsOutGives255) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    std::array<uint8_t, 16> buffer{};
    fake->timeOutStatus = kSrbError;
    fake->completeAfterMs = 1500;  // beyond the one second waited
    fake->replyByte = 0x77;
    EXPECT_EQ(Exec(aspi, drive, 1, 0, buffer).status, kStatusNotDelivered);
    // The transport returned only once the layer had finished with the buffer.
    EXPECT_EQ(buffer[0], 0x77);
}

TEST_F(AspiTransportTest, DriveCharIsTheGenericNode) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    fake->diskInfoDrive = 4;
    EXPECT_EQ(aspi.DriveChar(drive), "sg4");
    EXPECT_EQ(aspi.DriveChar("\x00\x05\x00"), "");  // no such device
    EXPECT_EQ(aspi.DriveChar("sg4"), "");           // a name, not a handle
}

TEST(AspiLibrary, TheBuildsLayerIsFoundAndAnswers) {
    const std::string found = FindAspiLibrary();
    EXPECT_TRUE(std::filesystem::is_regular_file(found)) << found;
    EXPECT_EQ(std::filesystem::path(found).filename(), "libplattmix_aspi.so");
    clsCDECL dll;
    ASSERT_TRUE(dll.DllLoad(found)) << dll.LastError();
    dll.CallFunc(kAspiSupportInfoExport);
    EXPECT_EQ(dll.LastError(), "");
    std::array<uint8_t, 12> unknown{0x03};
    const std::array<uintptr_t, 1> argument{reinterpret_cast<uintptr_t>(unknown.data())};
    EXPECT_EQ(dll.CallFunc(kAspiSendCommandExport, argument), kSrbInvalidCommand);
    EXPECT_EQ(unknown[kSrbStatusByte], kSrbInvalidCommand);
    EXPECT_TRUE(clsASPI().Installed());

    const auto candidates = AspiLibraryCandidates("/opt/plattmix/bin");
    ASSERT_EQ(candidates.size(), 4u);
    EXPECT_EQ(candidates[0], "/opt/plattmix/bin/libplattmix_aspi.so");
    EXPECT_TRUE(candidates[1].starts_with("/opt/plattmix/lib")) << candidates[1];
    EXPECT_TRUE(candidates[1].ends_with("/plattmix/libplattmix_aspi.so")) << candidates[1];
    EXPECT_EQ(std::filesystem::path(candidates[3]).parent_path(),
              std::filesystem::path(found).parent_path());
}
