// The daemon serves over SNMP what somebody edits in the tool.
#include <gmock/gmock.h>
#include <sys/utsname.h>

#include "tests/e2e/RealSystem.h"

namespace e2e {
namespace {

using testing::EndsWith;
using testing::IsSupersetOf;
using testing::Pair;
using testing::StrEq;

using TheDaemon = ARealSystem;
using Communities = ARealSystem;
using RemovedSettings = ARealSystem;
using ForeignText = ARealSystem;

Settings Kitchen() {
  Settings settings;
  settings.read = "our house";
  settings.write = "k3tchen";
  settings.contact = "Ada \"Countess\" L., ext. 5 # no comment";
  settings.location =
      "K\xC3\xBC"
      "che, links neben der T\xC3\xBCr";
  settings.name = "kitchen controller";
  return settings;
}

// The name of the first process that a proc line watches.
constexpr char kWatched[] = ".1.3.6.1.4.1.2021.2.1.2.1";

TEST_F(TheDaemon, ServesWhatTheToolSent) {
  Begin();
  Serve(kKitchen, Kitchen());
  EXPECT_EQ(As("our house").Get(kSysContact).value, Kitchen().contact);
  EXPECT_EQ(As("our house").Get(kSysLocation).value, Kitchen().location);
  EXPECT_EQ(As("our house").Get(kSysName).value, Kitchen().name);
  EXPECT_THAT(As("our house").Walk(kSystemGroup),
              IsSupersetOf({Pair(StrEq(kSysContact), Kitchen().contact), Pair(StrEq(kSysName), Kitchen().name),
                            Pair(StrEq(kSysObjectId), std::string(".1.3.6.1.4.1." SNMP_ENTERPRISE_NUMBER)),
                            Pair(StrEq(kSysServices), std::string("72"))}));
}

TEST_F(TheDaemon, ServesAChangeAtOnceWhenItRuns) {
  Begin();
  Serve(kKitchen, Kitchen());
  Settings changed = Kitchen();
  changed.name = "pantry";
  changed.read = "new house";
  ASSERT_EQ(SetState(kKitchen, changed), "<Success/>");
  EXPECT_EQ(As("new house").Get(kSysName).value, "pantry");
  EXPECT_TRUE(Refuses("our house", As("new house")));
}

TEST_F(TheDaemon, ServesTheOldSectionOfADeviceThatIsNewToTheTool) {
  Begin();
  Serve(kKitchen, Kitchen());
  // Another device, which holds nothing yet, gets the same file.
  folder.Write("bath/snmpd.conf", File(kKitchen));
  LoadDevice(kBath);
  host->Command(kAgent, "GetDeviceList", {});
  ASSERT_EQ(Action(kBath, "StartMasterAgent"), "<Success/>");
  EXPECT_EQ(As("our house", kBath).Get(kSysLocation).value, Kitchen().location);
  EXPECT_EQ(As("k3tchen", kBath).Set(kFailureTraps, "i", "1").error, "");
}

TEST_F(TheDaemon, ServesTheSettingsThatItKeptAfterARestartOfTheHost) {
  Begin();
  Serve(kKitchen, Kitchen());
  RestartHost();
  LoadAgent();
  LoadDevice(kKitchen);
  EXPECT_FALSE(GetDaemon(kKitchen).running);
  ASSERT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  EXPECT_EQ(As("our house").Get(kSysContact).value, Kitchen().contact);
}

TEST_F(Communities, WithSpacesOrLettersBeyondAsciiOpenTheDaemon) {
  Begin();
  Settings settings = Kitchen();
  settings.read = "our house  at the lake";
  settings.write = "schl\xC3\xBCssel";
  Serve(kKitchen, settings);
  for (const std::string& community : {settings.read, settings.write}) {
    EXPECT_EQ(As(community).Get(kSysName).value, settings.name) << community;
  }
}

TEST_F(Communities, ForReadingCannotWrite) {
  Begin();
  Serve(kKitchen, Kitchen());
  EXPECT_EQ(As("our house").Set(kFailureTraps, "i", "1").error, "noAccess");
  EXPECT_EQ(As("our house").Get(kFailureTraps).value, "2");
  EXPECT_EQ(As("k3tchen").Set(kFailureTraps, "i", "1").error, "");
  EXPECT_EQ(As("our house").Get(kFailureTraps).value, "1");
}

TEST_F(Communities, ForWritingChangeANameOnlyWhereTheToolGaveNone) {
  Begin();
  Settings settings = Kitchen();
  Serve(kKitchen, settings);
  EXPECT_EQ(As("k3tchen").Set(kSysName, "s", "by snmpset").error, "notWritable");
  settings.name.clear();
  ASSERT_EQ(SetState(kKitchen, settings), "<Success/>");
  EXPECT_EQ(As("k3tchen").Set(kSysName, "s", "by snmpset").error, "");
  EXPECT_EQ(As("our house").Get(kSysName).value, "by snmpset");
}

TEST_F(Communities, ThatAreWrongGetNothing) {
  Begin();
  Serve(kKitchen, Kitchen());
  for (const char* const wrong : {"public", "our", "our house ", "Our house", "\"our house\"", "k3tchen2"}) {
    EXPECT_TRUE(Refuses(wrong, As("our house"))) << wrong;
  }
}

TEST_F(Communities, ThatAreEmptyAdmitOnlyWhomTheOwnersLinesAdmit) {
  Begin("rocommunity owner\n");
  Settings settings = Kitchen();
  settings.read.clear();
  settings.write.clear();
  Serve(kKitchen, settings);
  for (const char* const nobody : {"", "our house", "k3tchen"}) {
    EXPECT_TRUE(Refuses(nobody, As("owner"))) << nobody;
  }
  EXPECT_EQ(As("owner").Get(kSysName).value, settings.name);
}

TEST_F(RemovedSettings, GoBackToTheDaemonsDefault) {
  Begin();
  Settings bare;
  bare.read = "our house";
  Serve(kKitchen, bare);
  const Answer contact = As("our house").Get(kSysContact);
  const Answer location = As("our house").Get(kSysLocation);
  utsname machine = {};
  ASSERT_EQ(::uname(&machine), 0);
  EXPECT_EQ(As("our house").Get(kSysName).value, machine.nodename);

  ASSERT_EQ(SetState(kKitchen, Kitchen()), "<Success/>");
  EXPECT_EQ(As("our house").Get(kSysContact).value, Kitchen().contact);
  EXPECT_EQ(As("our house").Get(kSysLocation).value, Kitchen().location);
  EXPECT_EQ(As("our house").Get(kSysName).value, Kitchen().name);

  ASSERT_EQ(SetState(kKitchen, bare), "<Success/>");
  EXPECT_EQ(As("our house").Get(kSysContact).value, contact.value);
  EXPECT_EQ(As("our house").Get(kSysLocation).value, location.value);
  EXPECT_EQ(As("our house").Get(kSysName).value, machine.nodename);
}

TEST_F(ForeignText, BelowTheSectionKeepsWorking) {
  const std::string foreign =
      "# by hand\nextend greeting /bin/echo good morning\n\nproc sshd\n# the last line has no line feed";
  Begin(foreign);
  Serve(kKitchen, Kitchen());
  EXPECT_EQ(As("our house").Get(kWatched).value, "sshd");
  Settings changed = Kitchen();
  changed.name = "pantry";
  ASSERT_EQ(SetState(kKitchen, changed), "<Success/>");
  EXPECT_EQ(As("our house").Get(kWatched).value, "sshd");
  EXPECT_EQ(As("our house").Get(kSysName).value, "pantry");
  EXPECT_THAT(File(kKitchen), EndsWith("\n" + foreign));
}

TEST_F(ForeignText, ThatNamesTheDeviceAgainWinsOverTheSection) {
  Begin("sysName by hand\n");
  Serve(kKitchen, Kitchen());
  EXPECT_EQ(As("our house").Get(kSysName).value, "by hand");
}

}  // namespace
}  // namespace e2e
