#include "devhost/session/Session.h"

#include <tuple>

#include "devhost/console/Routes.h"
#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;

using ASession = SessionFixture;

// The path of a route with the kitchen's number in its braces.
std::string PathOf(const Route& route) {
  std::string path(route.path);
  for (std::size_t brace = path.find('{'); brace != std::string::npos; brace = path.find('{')) {
    path.replace(brace, path.find('}') + 1 - brace, "12");
  }
  return path;
}

TEST_F(ASession, SaysThatItIsReadyOnceAndAfterAllDriversAreLoaded) {
  Start();
  const std::vector<Json> said = Lines();
  EXPECT_EQ(said.back(), Json::parse(R"({"ready":true})"));
  EXPECT_EQ(Events("load").size(), 2U);
  EXPECT_EQ(Events("event").at(0).at("name"), "OnProjectLoaded");
}

TEST_F(ASession, AnswersWhatIsNotARequestAndGoesOn) {
  Start();
  for (const char* const line : {"", "garbage", "[]", "null", "\xff\xfe", "{\"id\":-1}", "{\"id\":\"7\"}", "{}"}) {
    session->Play(line);
    const Json answer = Lines().back();
    EXPECT_EQ(answer.at("status"), 400) << line;
    EXPECT_TRUE(answer.at("id").is_null()) << line;
  }
  EXPECT_EQ(Ask("GET", "/devices").status, 200);
}

TEST_F(ASession, SaysWhichPathOrMethodThereIsNot) {
  Start();
  EXPECT_EQ(Ask("GET", "/nothing").ErrorCode(), "not-found");
  EXPECT_EQ(Ask("GET", "/devices/12/nothing").status, 404);
  EXPECT_EQ(Ask("GET", "/devices/kitchen").status, 404);
  EXPECT_EQ(Ask("GET", "/devices/4294967308").status, 404);  // 12 with a bit above the 32
  EXPECT_EQ(Ask("POST", "/devices").status, 405);
  EXPECT_EQ(Ask("GET", "devices").status, 400);
}

// A route of the table that nobody does the work of would end here.
TEST_F(ASession, DoesTheWorkOfEveryRouteOfItsOwn) {
  Start();
  for (const Route& route : Routes()) {
    const Reply reply = Ask(std::string(route.method), PathOf(route));
    const std::string error = reply.status == 200 ? "" : reply.ErrorText();
    EXPECT_NE(reply.status, 405) << route.path;
    EXPECT_NE(reply.status, 500) << route.path << ": " << error;
    EXPECT_EQ(error == "there is no such path", route.by == Answerer::Front) << route.path;
  }
}

TEST_F(ASession, ThatOnlyReadsRefusesEveryChange) {
  means.isReadOnly = true;
  Start();
  EXPECT_EQ(Ask("GET", "/devices").status, 200);
  for (const Route& route : Routes()) {
    EXPECT_EQ(Ask(std::string(route.method), PathOf(route)).status == 403, route.access == Access::Change) << route.path;
  }
}

// A driver that is asked may install a text that waits for its controller.
TEST_F(ASession, ThatOnlyReadsAsksNoDriverForItsState) {
  folder.Write("odd.conf", "# by hand\n");
  project.drivers[1] = TestDriver(
      12, "odd_device",
      "<config file='" + folder.Path("odd.conf") + "' journal='" + folder.Path("journal") + "' announce='Initialize'/>");
  for (const bool isReadOnly : {true, false}) {
    means.isReadOnly = isReadOnly;
    Start();
    EXPECT_EQ(Ask("GET", "/devices/12").status, 200);
    session->Stop();
    session.reset();
    EXPECT_EQ(folder.Read("journal").find("GetPersistState") == std::string::npos, isReadOnly);
  }
}

TEST_F(ASession, TakesALineOfAMebibyte) {
  Start();
  const std::string xml = "<managedDevice>" + std::string(std::size_t{1} << 20, ' ') + "</managedDevice>";
  const Reply reply = Tell(1, "SetDeviceState", {{"xml", xml}});
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body.at("reply"), "<Fail/>");
}

TEST_F(ASession, WithoutAnAgentShowsDevicesAndSaysWhatEachOtherRequestLacks) {
  project.drivers.erase(project.drivers.begin());
  Start();
  EXPECT_EQ(Ask("GET", "/devices").body.at("devices").size(), 1U);
  EXPECT_EQ(Ask("GET", "/devices/12").status, 200);
  EXPECT_EQ(Ask("GET", "/devices/12/file").status, 200);
  const Json undo = {{"snapshot", 1U}, {"accepted", Json::array()}};
  for (const auto& [method, path, body] : std::vector<std::tuple<std::string, std::string, Json>>{
           {"PUT", "/devices/12/managed", Json::object()},
           {"DELETE", "/devices/12/managed", Json::object()},
           {"POST", "/devices/12/actions", {{"action", "reboot"}, {"device", "kitchen"}}},
           {"GET", "/devices/12/findings", Json::object()},
           {"GET", "/devices/12/history", Json::object()},
           {"GET", "/devices/12/history/1", Json::object()},
           {"POST", "/devices/12/preview", Json::object()},
           {"PUT", "/devices/12/settings", Json::object()},
           {"POST", "/devices/12/undo", undo},
           {"POST", "/devices/12/undo/preview", undo},
           {"GET", "/devices/12/effective", Json::object()},
           {"POST", "/devices/12/test-trap", Json::object()},
           {"GET", "/devices/12/drift", Json::object()}}) {
    const Reply reply = Ask(method, path, body);
    EXPECT_EQ(reply.status, 409) << method << " " << path;
    EXPECT_EQ(reply.ErrorCode(), "no-agent") << method << " " << path;
    EXPECT_THAT(reply.ErrorText(), HasSubstr("snmp_configuration_agent.so"));
  }
  EXPECT_EQ(Ask("GET", "/devices/99/history").status, 404);
}

TEST_F(ASession, NamesTheDriverThatHasThrownAndGoesOn) {
  project.drivers.push_back(TestDriver(20, "faulty_device", "<config fault='throw'/>"));
  Start();
  const Reply reply = Tell(1, "GetDeviceList");
  EXPECT_EQ(reply.status, 500);
  EXPECT_EQ(reply.ErrorCode(), "driver-failed");
  EXPECT_THAT(reply.ErrorText(), AllOf(HasSubstr("faulty_device20"), HasSubstr("no file today")));
  EXPECT_EQ(Ask("GET", "/variables").status, 200);
}

TEST_F(ASession, KeepsItsDriversStatesAtTheEnd) {
  project.variables = {{5, 7, "lamp", false, false, false}};
  Start();
  EXPECT_EQ(Ask("PUT", "/variables/5/7", {{"trapEnabled", true}}).status, 200);
  session->Stop();
  session.reset();
  const h7::auto_com<H7XML::INode> state = states.Load(1);
  ASSERT_TRUE(state);
  EXPECT_THAT(XmlText(*state, XmlStyle::Compact), HasSubstr("snmpTrapEnabled=\"true\""));
}

TEST_F(ASession, ThatCannotStartLeavesNothingLoaded) {
  project.drivers.push_back(TestDriver(30, "no_factory"));
  EXPECT_THROW(Start(), HostError);
  session.reset();
  project.drivers.pop_back();
  Start();
  EXPECT_EQ(Ask("GET", "/devices").status, 200);
}

}  // namespace
}  // namespace devhost
