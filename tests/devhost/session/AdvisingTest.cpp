#include "devhost/session/Advising.h"

#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Truly;

class Advice : public SessionFixture {
 protected:
  Json Edit() const {
    return Json::parse(R"({
      "enabled": true, "readCommunity": {"value": "hidden1"}, "writeCommunity": {"keep": true}, "contact": "Ada",
      "usePrimaryContact": false, "location": "", "useOwnerAddress": false, "name": "kitchen", "useRoomDevice": false,
      "trapTargets": [{"target": "192.0.2.5", "community": {"value": "hidden2"}, "port": "162"}]})");
  }
  Json Findings(const Json& edit) { return Ask("POST", "/devices/12/advise", {{"settings", edit}}).body.at("findings"); }
  static auto Is(const std::string& rule, const std::string& field) {
    return Truly([=](const Json& finding) { return finding.at("rule") == rule && finding.at("field") == field; });
  }
};

TEST_F(Advice, NamesTheFieldThatItIsAbout) {
  Start();
  EXPECT_THAT(Findings(Edit()), IsEmpty());
  Json edit = Edit();
  edit["contact"] = "# nobody";
  edit["readCommunity"] = {{"value", "public"}};
  edit["trapTargets"].push_back({{"target", "192.0.2.6"}, {"community", {{"value", "hidden"}}}, {"port", "99999"}});
  edit["trapTargets"].push_back({{"target", std::string(300, 't')}, {"community", {{"value", ""}}}, {"port", ""}});
  edit["name"] = std::string(300, 'n');
  const Json findings = Findings(edit);
  EXPECT_THAT(findings,
              AllOf(Contains(Is("value-begins-with-hash", "contact")), Contains(Is("well-known-community", "readCommunity")),
                    Contains(Is("text-too-long", "name")), Contains(Is("trap-port-wrong", "trapTargets[1]")),
                    Contains(Is("value-wrong", "trapTargets[2].target"))));
  EXPECT_THAT(Said(), Not(HasSubstr("hidden")));
}

TEST_F(Advice, ChangesNothing) {
  Start();
  Findings(Edit());
  EXPECT_EQ(Ask("GET", "/devices/12").body.at("settings").at("name").at("value"), "");
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
}

TEST_F(Advice, IsRefusedForAnEditThatIsNotWholeOrCannotBeSent) {
  Start();
  Json edit = Edit();
  edit.erase("location");
  EXPECT_EQ(Ask("POST", "/devices/12/advise", {{"settings", edit}}).ErrorText(), "settings.location is missing");
  edit["location"] = "a\x01";
  EXPECT_THAT(Ask("POST", "/devices/12/advise", {{"settings", edit}}).ErrorText(), HasSubstr("that XML cannot carry"));
  EXPECT_EQ(Ask("POST", "/devices/12/advise").status, 422);
  EXPECT_EQ(Ask("POST", "/devices/99/advise", {{"settings", Edit()}}).status, 404);
}

TEST_F(Advice, MindsALineFeed) {
  Start();
  Json edit = Edit();
  edit["location"] = "attic\nrwcommunity hidden3";
  EXPECT_THAT(Findings(edit), Contains(Is("line-feed", "location")));
}

// A rule knows the communities of its own line alone.
TEST(AFindingOfASession, HidesWhatTheSessionKnows) {
  Masker secrets(false);
  secrets.Secret("hidden1");
  secrets.Secret("ab");
  const std::vector<Finding> shown =
      Shown({{"snmpd.conf", 3, Severity::Warning, "some-rule", "\"ab\" is near \"hidden1\"", "remove hidden1"}}, secrets);
  EXPECT_EQ(shown.at(0).reason, "\"*****\" is near \"*****\"");
  EXPECT_EQ(shown.at(0).remedy, "remove *****");
}

}  // namespace
}  // namespace devhost
