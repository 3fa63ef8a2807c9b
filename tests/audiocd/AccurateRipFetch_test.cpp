// Asking a local server for AccurateRip records through the real HTTP transfer.
#include "AccurateRipFetch.h"

#include <gtest/gtest.h>

#include "AccurateRipFile.h"
#include "CurlHttpGet.h"
#include "common/LocalHttpServer.h"

namespace plattmix::audiocd {
namespace {

using test::LocalHttpServer;

const AccurateRipIds kDisc{2, 0x0000168au, 0x00002d14u, 0x0a000502u};

TEST(AccurateRipFetch, FindsTheRecordAndNamesEveryReasonForNone) {
    LocalHttpServer server;
    const AccurateRipResponse response{kDisc, {{12, 0xe5f61ed9u, 0}, {3, 0xbcb9ac0au, 0}}};
    const std::string path = "/accuraterip/a/8/6/dBAR-002-0000168a-00002d14-0a000502.bin";
    server.Set(path, {200, discgen::MakeAccurateRipFile({&response, 1})});
    const AccurateRipRecord record =
        FetchAccurateRipRecord(server.Url() + "accuraterip", kDisc, CurlHttpGet);
    ASSERT_TRUE(record.Found()) << record.error;
    EXPECT_EQ(record.responses.at(0).tracks.at(1).crc, 0xbcb9ac0au);
    ASSERT_EQ(server.Requests().size(), 1u);
    EXPECT_NE(server.Requests()[0].find("GET " + path + " "), std::string::npos);
    EXPECT_NE(server.Requests()[0].find("User-Agent: Plattmix/"), std::string::npos);

    AccurateRipIds unknown = kDisc;
    unknown.id2 = 1;
    EXPECT_EQ(FetchAccurateRipRecord(server.Url(), unknown, CurlHttpGet).error,
              kAccurateRipUnknownDisc);

    server.Set(path, {503, ""});
    EXPECT_EQ(FetchAccurateRipRecord(server.Url() + "accuraterip/", kDisc, CurlHttpGet).error,
              "AccurateRip antwortet mit dem Status 503.");

    std::string downUrl;
    {
        LocalHttpServer gone;
        downUrl = gone.Url();
    }
    const AccurateRipRecord offline = FetchAccurateRipRecord(downUrl, kDisc, CurlHttpGet);
    EXPECT_FALSE(offline.Found());
    EXPECT_EQ(offline.error.rfind("AccurateRip: Keine Verbindung zum Server", 0), 0u)
        << offline.error;
}

}  // namespace
}  // namespace plattmix::audiocd
