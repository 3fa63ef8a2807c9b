#include "CurlHttpGet.h"

#include <gtest/gtest.h>

#include "common/LocalHttpServer.h"

namespace plattmix::audiocd {
namespace {

using test::LocalHttpServer;

TEST(CurlHttpGet, AnswersBodyStatusAndSendsTheUserAgent) {
    LocalHttpServer server;
    server.Set("/a/b.bin?x=1", {200, std::string("\x01\x00\x02", 3)});
    HttpReply reply = CurlHttpGet({server.Url() + "a/b.bin?x=1", "Plattmix/9.9"});
    EXPECT_TRUE(reply.Ok());
    EXPECT_EQ(reply.body, std::string("\x01\x00\x02", 3));
    ASSERT_EQ(server.Requests().size(), 1u);
    EXPECT_NE(server.Requests()[0].find("User-Agent: Plattmix/9.9"), std::string::npos);

    reply = CurlHttpGet({server.Url() + "missing", "Plattmix"});
    EXPECT_EQ(reply.status, 404);
    EXPECT_TRUE(reply.error.empty());
    EXPECT_FALSE(reply.Ok());
}

TEST(CurlHttpGet, NoReplyIsAnErrorText) {
    std::string downUrl;
    {
        LocalHttpServer gone;
        downUrl = gone.Url();
    }
    HttpReply reply = CurlHttpGet({downUrl + "x", "Plattmix"});
    EXPECT_EQ(reply.status, 0);
    EXPECT_NE(reply.error.find("Keine Verbindung zum Server"), std::string::npos) << reply.error;

    LocalHttpServer slow;
    slow.Set("/slow", {200, "late", std::chrono::milliseconds(800)});
    HttpRequest impatient(slow.Url() + "slow", "Plattmix");
    impatient.timeout = std::chrono::milliseconds(200);
    reply = CurlHttpGet(impatient);
    EXPECT_EQ(reply.error, "Der Server antwortet nicht (Zeitüberschreitung).");

    slow.Set("/big", {200, std::string(1000, 'x')});
    HttpRequest small(slow.Url() + "big", "Plattmix");
    small.maxBytes = 100;
    EXPECT_EQ(CurlHttpGet(small).error, "Die Antwort des Servers ist zu lang.");
}

}  // namespace
}  // namespace plattmix::audiocd
