// The HTTP transfer's own limits against a local server (its answers and the server that is not
// there are asked through the AccurateRip look-up's tests).
#include "CurlHttpGet.h"

#include <gtest/gtest.h>

#include "common/LocalHttpServer.h"

namespace plattmix::audiocd {
namespace {

TEST(CurlHttpGet, ASlowServerAndALongAnswerAreErrorTexts) {
    test::LocalHttpServer server;
    server.Set("/slow", {200, "late", std::chrono::milliseconds(800)});
    HttpRequest impatient(server.Url() + "slow", "Plattmix");
    impatient.timeout = std::chrono::milliseconds(200);
    HttpReply reply = CurlHttpGet(impatient);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.error, "Der Server antwortet nicht (Zeitüberschreitung).");

    server.Set("/big", {200, std::string(1000, 'x')});
    HttpRequest small(server.Url() + "big", "Plattmix");
    small.maxBytes = 100;
    EXPECT_EQ(CurlHttpGet(small).error, "Die Antwort des Servers ist zu lang.");
}

}  // namespace
}  // namespace plattmix::audiocd
