#include <gtest/gtest.h>

#include <array>

#include "clsCDECL.h"

using plattmix::scsi::clsCDECL;

TEST(Cdecl, CallsExportsByName) {
    clsCDECL dll;
    ASSERT_TRUE(dll.DllLoad(PLATTMIX_CDECL_TEST_LIBRARY)) << dll.LastError();
    EXPECT_TRUE(dll.Loaded());
    EXPECT_EQ(dll.CallFunc("Answer"), 42u);
    EXPECT_EQ(dll.LastError(), "");

    const std::array<uintptr_t, 6> six{1, 10, 100, 1000, 10000, 100000};
    EXPECT_EQ(dll.CallFunc("Weighted", six), 1u + 20 + 300 + 4000 + 50000 + 600000);

    // A pointer goes through as its address.
    uint32_t target = 0;
    const std::array<uintptr_t, 2> store{reinterpret_cast<uintptr_t>(&target), 0xCAFE};
    EXPECT_EQ(dll.CallFunc("Store", store), 0xCAFFu);
    EXPECT_EQ(target, 0xCAFEu);
}

TEST(Cdecl, FailuresAreNamed) {
    clsCDECL dll;
    EXPECT_EQ(dll.CallFunc("Answer"), 0u);
    EXPECT_EQ(dll.LastError(), "no library loaded");
    EXPECT_FALSE(dll.DllUnload());

    EXPECT_FALSE(dll.DllLoad("/nonexistent/libnothing.so"));
    EXPECT_FALSE(dll.Loaded());
    EXPECT_NE(dll.LastError().find("libnothing.so"), std::string::npos);

    ASSERT_TRUE(dll.DllLoad(PLATTMIX_CDECL_TEST_LIBRARY));
    EXPECT_EQ(dll.CallFunc("NoSuchExport"), 0u);
    EXPECT_NE(dll.LastError().find("NoSuchExport"), std::string::npos);
    const std::array<uintptr_t, 7> seven{};
    EXPECT_EQ(dll.CallFunc("Weighted", seven), 0u);
    EXPECT_EQ(dll.LastError(), "too many arguments for Weighted");
    // The error of one call does not stay after the next.
    EXPECT_EQ(dll.CallFunc("Answer"), 42u);
    EXPECT_EQ(dll.LastError(), "");

    EXPECT_TRUE(dll.DllUnload());
    EXPECT_EQ(dll.CallFunc("Answer"), 0u);
    // Loaded again after unloading; a second load replaces the first.
    ASSERT_TRUE(dll.DllLoad(PLATTMIX_CDECL_TEST_LIBRARY));
    ASSERT_TRUE(dll.DllLoad(PLATTMIX_CDECL_TEST_LIBRARY));
    EXPECT_EQ(dll.CallFunc("Answer"), 42u);
}
