#include "devhost/console/Front.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/devhost/console/RunningServer.h"

namespace devhost {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

TEST(TheFront, SaysWhatTheConsoleIs) {
  const RunningServer server;
  const Json session = Json::parse(server.AwaitState("up"));
  EXPECT_EQ(session["version"], "1.2.3");
  EXPECT_EQ(session["contract"], 1);
  EXPECT_EQ(session["project"], "project.xml");
  EXPECT_EQ(session["readOnly"], false);
  EXPECT_EQ(session["showsSecrets"], false);
  EXPECT_EQ(session["host"]["reason"], "");
  EXPECT_TRUE(session["host"]["job"].is_null());
}

TEST(TheFront, AnswersWhileTheHostProcessWorks) {
  const RunningServer server;
  server.AwaitState("up");
  Client client(server.Port());
  client.Send(server.Request("GET", "/devices/9"));
  const Json session = Json::parse(server.AwaitState("busy"));
  EXPECT_EQ(session["host"]["job"]["path"], "/devices/9");
  EXPECT_EQ(session["host"]["job"]["method"], "GET");
  EXPECT_GT(session["host"]["job"]["since"], 1'000'000'000'000);
  EXPECT_EQ(client.Read().status, 200);
}

TEST(TheFront, AsksTheHostProcessWithAllOfTheRequest) {
  const RunningServer server;
  const Received answer = server.Exchange(server.Request("PUT", "/devices/1/settings?against=before",
                                                         R"({"settings":{"contact":"\u00e4"}})", "If-Match: \"abc\"\r\n"));
  EXPECT_EQ(answer.status, 200);
  Json asked = Json::parse(answer.body);
  asked.erase("id");
  EXPECT_EQ(asked, Json::parse(R"({"method":"PUT","path":"/devices/1/settings","query":{"against":"before"},"ifMatch":"abc",
                                   "body":{"settings":{"contact":"ä"}}})"));
}

TEST(TheFront, RefusesABodyThatIsNoObject) {
  const RunningServer server;
  for (const char* const body : {"[]", "1", "{", "{}{}", "null", "{\"a\":\"\xff\"}"}) {
    EXPECT_EQ(server.Exchange(server.Request("POST", "/command", body)).status, 422) << body;
  }
  EXPECT_EQ(server.Exchange(server.Request("POST", "/command", "{}")).status, 200);
  EXPECT_EQ(server.Exchange(server.Request("DELETE", "/devices/1/managed")).status, 200);
}

TEST(TheFront, RefusesABodyThatNestsTooDeepForTheHostProcess) {
  const RunningServer server;
  const auto body = [](std::size_t levels) {
    return "{\"a\":" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
  };
  EXPECT_EQ(server.Exchange(server.Request("POST", "/command", body(30))).status, 200);
  for (const std::size_t levels : {std::size_t{31}, std::size_t{40}, std::size_t{200'000}}) {
    EXPECT_EQ(server.Exchange(server.Request("POST", "/command", body(levels))).status, 422) << levels;
  }
  EXPECT_EQ(server.Exchange(server.Request("POST", "/command", std::string(200'000, '['))).status, 422);
  server.AwaitState("up");
}

TEST(TheFront, RefusesAQueryThatSaysSomethingTwice) {
  const RunningServer server;
  for (const char* const query : {"?a", "?a=1&a=2", "?=1", "?a=1&&b=2"}) {
    EXPECT_EQ(server.Get(std::string("/devices") + query).status, 400) << query;
  }
}

TEST(TheFront, StartsTheHostProcessAgain) {
  const RunningServer server;
  server.Get("/devices/3");
  EXPECT_THAT(server.AwaitState("ended"), HasSubstr("during Initialize of driver 3"));
  EXPECT_EQ(server.Get("/devices").status, 409);
  EXPECT_EQ(server.Exchange(server.Request("POST", "/host/restart", "{}")).body, "{}");
  server.AwaitState("up");
  EXPECT_EQ(server.Get("/devices").status, 200);
}

// Nothing of a device is changed by that, and without it the page would be dead.
TEST(TheFront, StartsTheHostProcessAgainWhereItIsReadOnly) {
  RunningServer::Setup setup;
  setup.isReadOnly = true;
  const RunningServer server(setup);
  server.AwaitState("up");
  EXPECT_THAT(server.Exchange(server.Request("POST", "/host/restart", "{}")).body, HasSubstr("its host is up"));
  server.Get("/devices/3");
  server.AwaitState("ended");
  EXPECT_EQ(server.Exchange(server.Request("POST", "/host/restart", "{}")).status, 200);
  server.AwaitState("up");
  EXPECT_EQ(server.Get("/devices").status, 200);
}

TEST(TheFront, CountsWhatHappensToDevices) {
  const RunningServer server;
  server.Get("/devices/10");
  server.Get("/devices/404");
  const Json activity = Json::parse(server.Get("/activity").body);
  ASSERT_EQ(activity["devices"].size(), 1U);
  const Json& device = activity["devices"][0];
  EXPECT_EQ(device["name"], "kitchen");
  int requests = 0;
  for (const Json& count : device["requests"]) {
    requests += count.get<int>();
  }
  EXPECT_EQ(requests, 1);
  EXPECT_THAT(device["probeMs"].dump(), HasSubstr("3.5"));
}

TEST(TheFront, NamesAnEventThatIsTooLarge) {
  const RunningServer server;
  Client client(server.Port());
  client.Send(server.Request("GET", "/events"));
  client.ReadUntil("\r\n\r\n");
  server.Get("/devices/8");
  const std::string event = client.ReadUntil("\"omitted\"");
  EXPECT_LT(event.size(), 1000U);
  EXPECT_THAT(event, HasSubstr("\"omitted\""));
}

}  // namespace
}  // namespace devhost
