// The fall-back transport over a library that answers late (FakeAspiLibrary.cpp), and the
// build's real layer found and loaded; the layer's answers from real drives are proved in the
// drive test bed.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>

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
        // Held for the whole test, so the state outlives each transport's own unloading.
        library = ::dlopen(PLATTMIX_FAKE_ASPI_LIBRARY, RTLD_NOW);
        ASSERT_NE(library, nullptr) << ::dlerror();
        auto* control = reinterpret_cast<FakeAspiState* (*)()>(::dlsym(library, "FakeAspiControl"));
        ASSERT_NE(control, nullptr);
        fake = control();
        *fake = FakeAspiState{};
    }
    void TearDown() override {
        if (library != nullptr)
            ::dlclose(library);
    }

    // READ CD to the scanned drive with the caller's time-out.
    int32_t Exec(clsASPI& aspi, int16_t timeOut) {
        const std::array<uint8_t, 10> cdb{0xBE, 0, 0, 0, 0, 0x10, 0, 0, 1, 0x10};
        uint8_t cdblen = 10;
        int32_t direction = 0;
        int16_t one = 1;
        std::string handle = aspi.DriveHandle(one);
        return aspi.ExecCMD(handle, cdb, cdblen, direction, buffer.data(),
                            static_cast<int32_t>(buffer.size()), timeOut);
    }

    void* library = nullptr;
    FakeAspiState* fake = nullptr;
    std::array<uint8_t, 16> buffer{};
};

}  // namespace

TEST_F(AspiTransportTest, WaitsForALaterAnswer) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    ASSERT_EQ(aspi.DriveCount(), 1);  // found one adapter beyond the reported count
    fake->replyByte = 0x5A;
    // Time-out block accepted: the status byte is polled.
    EXPECT_EQ(Exec(aspi, 5), 0);
    EXPECT_EQ(buffer[0], 0x5A);

    // Time-out block refused, TimeOut 0: polled as well. CHECK CONDITION: the target status,
    // the sense key's low four bits only.
    fake->timeOutStatus = kSrbError;
    fake->execStatus = kSrbError;
    fake->targetStatus = 0x02;
    fake->sense[2] = 0xE2;  // filemark, end of medium and length flags over "not ready"
    fake->sense[12] = 0x3A;
    fake->sense[13] = 0x01;
    EXPECT_EQ(Exec(aspi, 0), 2);
    EXPECT_EQ(aspi.LastSK(), 0x02);
    EXPECT_EQ(aspi.LastASC(), 0x3A);
    EXPECT_EQ(aspi.LastASCQ(), 0x01);

    // Time-out block refused, TimeOut given: the event ends the wait. Aborted: 255, whatever
    // the target status says.
    fake->execStatus = kSrbAborted;
    fake->targetStatus = 0;
    buffer[0] = 0;
    EXPECT_EQ(Exec(aspi, 5), kStatusNotDelivered);
    EXPECT_EQ(buffer[0], 0x5A);
}

TEST_F(AspiTransportTest, AWaitThatRunsOutGives255) {
    clsASPI aspi(PLATTMIX_FAKE_ASPI_LIBRARY);
    fake->timeOutStatus = kSrbError;
    fake->completeAfterMs = 1500;  // beyond the one second waited
    fake->replyByte = 0x77;
    EXPECT_EQ(Exec(aspi, 1), kStatusNotDelivered);
    // The transport returned only once the layer had finished with the buffer.
    EXPECT_EQ(buffer[0], 0x77);
}

TEST_F(AspiTransportTest, WithoutTheLibraryNothingIsThere) {
    clsASPI aspi("/nonexistent/libplattmix_aspi.so");
    EXPECT_FALSE(aspi.Installed());
    EXPECT_FALSE(aspi.Initialized());
    EXPECT_EQ(aspi.DriveCount(), 0);
    EXPECT_EQ(Exec(aspi, 5), kStatusNotDelivered);
}

TEST(AspiLibrary, TheBuildsLayerIsFoundAndAnswers) {
    const std::string found = FindAspiLibrary();
    EXPECT_EQ(std::filesystem::path(found).filename(), "libplattmix_aspi.so");
    EXPECT_TRUE(clsASPI().Installed());
}
