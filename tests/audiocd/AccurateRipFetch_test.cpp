// Asking for AccurateRip records through the real HTTP transfer: the messages when there is none
// (the record found, or not known, in the secure mode's tests).
#include "AccurateRipFetch.h"

#include <gtest/gtest.h>

#include "CurlHttpGet.h"
#include "common/LocalHttpServer.h"

namespace plattmix::audiocd {
namespace {

TEST(AccurateRipFetch, NamesTheServersStatusAndAMissingServer) {
    const AccurateRipIds disc{2, 0x0000168au, 0x00002d14u, 0x0a000502u};
    test::LocalHttpServer server;
    server.Set("/accuraterip/a/8/6/dBAR-002-0000168a-00002d14-0a000502.bin", {503, ""});
    EXPECT_EQ(FetchAccurateRipRecord(server.Url() + "accuraterip", disc, CurlHttpGet).error,
              "AccurateRip antwortet mit dem Status 503.");
    ASSERT_EQ(server.Requests().size(), 1u);
    EXPECT_NE(server.Requests()[0].find("User-Agent: Plattmix/"), std::string::npos);

    std::string downUrl;
    {
        test::LocalHttpServer gone;
        downUrl = gone.Url();
    }
    const AccurateRipRecord offline = FetchAccurateRipRecord(downUrl, disc, CurlHttpGet);
    EXPECT_FALSE(offline.Found());
    EXPECT_TRUE(offline.error.starts_with("AccurateRip: Keine Verbindung zum Server"))
        << offline.error;
}

}  // namespace
}  // namespace plattmix::audiocd
