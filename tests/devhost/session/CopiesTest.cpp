#include "devhost/session/Copies.h"

#include <sys/stat.h>

#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Truly;

class ACopy : public SessionFixture {
 protected:
  ACopy() { means.projectFile = folder.Path("project.xml"); }

  Json Edit() const {
    return Json::parse(R"({
      "enabled": true, "readCommunity": {"value": "hidden1"}, "writeCommunity": {"keep": true}, "contact": "Ada",
      "usePrimaryContact": false, "location": "", "useOwnerAddress": false, "name": "kitchen", "useRoomDevice": false,
      "trapTargets": [{"target": "192.0.2.5", "community": {"value": "hidden2"}, "port": "162"}]})");
  }
  // A snapshot of the kitchen, as a change leaves it.
  void Keep(const std::string& before, const std::string& after) const {
    const auto settings = [](const std::string& name) {
      return "<managedDevice><snmpSysNameSetting>" + name + "</snmpSysNameSetting><deviceId>12</deviceId></managedDevice>";
    };
    SnapshotFolder snapshots(means.projectFile + ".snapshots", 12);
    const unsigned long number =
        snapshots.Begin("apply", "kitchen", {"sysName " + before + "\n", settings(before)}, 1790000000);
    if (!after.empty()) {
      snapshots.Finish(number, {"sysName " + after + "\n", settings(after)});
    }
  }
};

using AFile = ACopy;

TEST_F(AFile, IsMaskedAndSaysWhereItsSectionIs) {
  folder.Write("kitchen/snmpd.conf",
               "# Halvoren Section Start\nrocommunity hidden1\n# Halvoren Section End\nsysName elsewhere");
  project.drivers.push_back(Device(13, "attic"));
  Start();
  EXPECT_EQ(Ask("GET", "/devices/13/file").body, Json::parse(R"({"text":"# by hand\n","lines":1,"section":null})"));
  folder.Write("kitchen/snmpd.conf",
               "# Halvoren Section Start\nrocommunity hidden1\n# Halvoren Section End\nsysName elsewhere");
  const Json file = Ask("GET", "/devices/12/file").body;
  EXPECT_EQ(file.at("lines"), 4);
  EXPECT_EQ(file.at("section"), Json::parse(R"({"first":1,"last":3})"));
  EXPECT_THAT(file.at("text").get<std::string>(), AllOf(HasSubstr("\nrocommunity *****\n"), HasSubstr("sysName elsewhere")));
  EXPECT_THAT(Said(), Not(HasSubstr("hidden1")));
}

TEST_F(AFile, HidesAShortCommunityWhereverItIsAWord) {
  folder.Write("kitchen/snmpd.conf", "rocommunity Zq\nsysContact by Zq\nmadeUp Zq\nsysServices Zq\n");
  Start();
  EXPECT_THAT(Ask("GET", "/devices/12/file").body.at("text").get<std::string>(), HasSubstr("\nsysContact by *****\n"));
  EXPECT_EQ(Ask("GET", "/devices/12/findings").status, 200);
  EXPECT_EQ(Ask("POST", "/devices/12/preview", {{"settings", Edit()}, {"accepted", Json::array()}}).status, 200);
  EXPECT_THAT(Said(), Not(HasSubstr("Zq")));
}

TEST_F(AFile, IsJudgedByTheRulesOfCheck) {
  folder.Write("kitchen/snmpd.conf", "rocommunity public\n");
  Start();
  const Json findings = Ask("GET", "/devices/12/findings").body.at("findings");
  ASSERT_THAT(findings, Contains(Truly([](const Json& each) { return each.at("rule") == "well-known-community"; })));
  EXPECT_EQ(findings[0].at("file"), "snmpd.conf of kitchen");
  EXPECT_EQ(findings[0].at("line"), 1);
}

TEST_F(AFile, IsJudgedWithoutAPathOnThisMachineToo) {
  project.drivers.push_back(TestDriver(
      20, "odd_device", "<config file='" + folder.Write("odd.conf", "rocommunity public\n") + "' announce='Initialize'/>"));
  Start();
  const Reply reply = Ask("GET", "/devices/20/findings");
  EXPECT_EQ(reply.status, 200);
  EXPECT_THAT(reply.body.at("findings"),
              Contains(Truly([](const Json& each) { return each.at("rule") == "well-known-community"; })));
}

TEST_F(AFile, ThatADeviceDoesNotGiveIsAnErrorWithTheReason) {
  project.drivers.push_back(TestDriver(20, "odd_device", "<config file='/nowhere' copyFrom='throw' announce='never'/>"));
  Start();
  const Reply reply = Ask("GET", "/devices/20/file");
  EXPECT_EQ(reply.status, 503);
  EXPECT_THAT(reply.ErrorText(), HasSubstr("an exception came out of CopyFrom"));
  EXPECT_THAT(reply.ErrorText(), Not(HasSubstr("held by the driver")));
}

// An empty text in its place would be a lie, and a change on top of it would write over what nobody has seen.
TEST_F(AFile, ThatCannotBeReadIsNeitherShownNorJudgedNorChanged) {
  Start();
  Ask("GET", "/devices");
  Keep("one", "two");
  Tell(12, "FailOperation", {{"operation", "CopyFrom"}, {"status", "-2"}});
  for (const char* const path : {"/file", "/findings", "/history/1"}) {
    const Reply reply = Ask("GET", std::string("/devices/12") + path);
    EXPECT_EQ(reply.status, 503) << path;
    EXPECT_EQ(reply.ErrorCode(), "unread-file") << path;
    EXPECT_THAT(reply.ErrorText(), HasSubstr("the device does not give its file: CopyFrom gave -2")) << path;
  }
  const Json shown = Ask("GET", "/devices/12").body;
  EXPECT_THAT(shown.at("fileProblem").get<std::string>(), HasSubstr("CopyFrom gave -2"));
  const Json edit = {{"settings", Edit()}, {"accepted", Json::array()}};
  EXPECT_EQ(Ask("POST", "/devices/12/preview", edit).body.at("verdict"), "stopped");
  EXPECT_EQ(Ask("PUT", "/devices/12/settings", edit, shown.at("base")).body.at("verdict"), "stopped");
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
  Tell(12, "FailOperation", {{"operation", "CopyFrom"}, {"status", "0"}});
  EXPECT_EQ(Ask("GET", "/devices/12/file").body.at("lines"), 1);
  EXPECT_EQ(Ask("GET", "/devices/12").body.at("fileProblem"), "");
}

using AHistory = ACopy;

TEST_F(AHistory, ListsSnapshotsAndThoseThatAreDamaged) {
  Keep("one", "two");
  Keep("two", "");
  folder.Write("project.xml.snapshots/driver-12/3/before.conf", "");
  Start();
  const Json history = Ask("GET", "/devices/12/history").body;
  ASSERT_EQ(history.at("snapshots").size(), 2U);
  EXPECT_EQ(history.at("snapshots")[0].at("number"), 1);
  EXPECT_EQ(history.at("snapshots")[0].at("time"), "2026-09-21T14:13:20Z");
  EXPECT_EQ(history.at("snapshots")[0].at("operation"), "apply");
  EXPECT_EQ(history.at("snapshots")[0].at("finished"), true);
  EXPECT_EQ(history.at("snapshots")[1].at("finished"), false);
  ASSERT_EQ(history.at("damaged").size(), 1U);
  EXPECT_EQ(history.at("damaged")[0].at("number"), 3);
  project.drivers.clear();
}

TEST_F(AHistory, ComparesWithWhatAChangeHasLeftWithNowAndWithAnother) {
  Keep("one", "two");
  Keep("two", "");
  Start();
  const auto compare = [this](const std::string& number, const Json& query) {
    session->Play(
        Json{{"id", ++asked}, {"method", "GET"}, {"path", "/devices/12/history/" + number}, {"query", query}}.dump());
    const Json answer = Lines().back();
    return answer.at("status") == 200 ? answer.at("body").at("difference").get<std::string>() : answer.at("status").dump();
  };
  EXPECT_THAT(compare("1", {{"against", "before"}}), HasSubstr("\n-sysName one\n+sysName two\n"));
  EXPECT_THAT(compare("1", {{"against", "now"}}), HasSubstr("\n-sysName one\n+# by hand\n"));
  EXPECT_THAT(compare("1", {{"against", "2"}}), HasSubstr("\n-sysName one\n+sysName two\n"));
  EXPECT_EQ(compare("2", {{"against", "before"}}), "409");
  EXPECT_EQ(compare("2", {{"against", "7"}}), "404");
  EXPECT_EQ(compare("7", {{"against", "now"}}), "404");
  EXPECT_EQ(compare("0", {{"against", "now"}}), "404");
}

TEST_F(AHistory, SaysWhatIsWrongWithANumber) {
  Keep("one", "two");
  Start();
  for (const char* const against : {"-1", "0", "1x", "", "4294967297"}) {
    session->Play(
        Json{{"id", ++asked}, {"method", "GET"}, {"path", "/devices/12/history/1"}, {"query", {{"against", against}}}}
            .dump());
    EXPECT_EQ(Lines().back().at("status"), 400) << against;
  }
  for (const char* const path : {"/devices/12/undo", "/devices/12/undo/preview"}) {
    const Reply none = Ask("POST", path, {{"snapshot", 0U}, {"accepted", Json::array()}}, "base");
    EXPECT_EQ(none.status, 400) << path;
    EXPECT_EQ(none.ErrorText(), "snapshot is 0; allowed: the number of a snapshot, from 1 on");
    EXPECT_EQ(Ask("POST", path, {{"snapshot", 7U}, {"accepted", Json::array()}}, "base").status, 404) << path;
  }
}

// 404 would say that there was nothing.
TEST_F(AHistory, SaysWhatIsWrongWithASnapshotOrItsFolder) {
  Keep("one", "two");
  folder.Write("project.xml.snapshots/driver-12/2/before.conf", "");
  Start();
  const Reply damaged = Ask("GET", "/devices/12/history/2");
  EXPECT_EQ(damaged.status, 409);
  EXPECT_EQ(damaged.ErrorCode(), "snapshots");
  EXPECT_THAT(damaged.ErrorText(), HasSubstr("driver-12/2"));
  EXPECT_EQ(Ask("POST", "/devices/12/undo", {{"snapshot", 2U}, {"accepted", Json::array()}}, "base").status, 409);
  ::chmod(folder.Path("project.xml.snapshots").c_str(), 0777);
  const Reply foreign = Ask("GET", "/devices/12/history");
  EXPECT_EQ(foreign.status, 409);
  EXPECT_THAT(foreign.ErrorText(), HasSubstr("project.xml.snapshots"));
  ::chmod(folder.Path("project.xml.snapshots").c_str(), 0700);
}

}  // namespace
}  // namespace devhost
