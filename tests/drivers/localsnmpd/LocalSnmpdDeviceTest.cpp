// A device with the real daemon, in a host that is a fake.

#include "drivers/localsnmpd/LocalSnmpdDevice.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "drivers/common/OffLineStatus.h"
#include "drivers/localsnmpd/DaemonStatus.h"
#include "drivers/localsnmpd/UdpPort.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/FakeHost.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/SmallDisk.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using Lines = std::vector<std::string>;
using State = h7::auto_com<H7XML::INode>;

const char kPath[] = "/etc/snmp/snmpd.conf.local";
const char kKitchen[] = "rwcommunity public\nsysName kitchen\n";
const char kCellar[] = "rwcommunity public\nsysName cellar\n";

// One device with its host.
struct Device {
  Device(const std::string& folder, const std::string& attributes = std::string(), const State& state = State(),
         const std::string& children = std::string())
      : driver(std::make_unique<drivers::LocalSnmpdDevice>(host.Instances())) {
    IDriver& asDriver = *driver;
    result = asDriver.Initialize(12, *ToNode("<config folder='" + folder + "' " + attributes + ">" + children + "</config>"),
                                 state.Get());
    asDriver.RegisterCommands();
  }

  ISupportSNMP* operator->() { return static_cast<ISupportSNMP*>(host.Instances().Query(ISupportSNMP_IID)); }

  State Keep() { return static_cast<IDriver&>(*driver).GetPersistState(0); }
  // One value of the reply to GetDaemon.
  std::string Tell(const std::string& name) {
    const std::string reply = host.Command("GetDaemon");
    const std::size_t at = reply.find(" " + name + "=");
    const std::size_t begin = at + name.size() + 2;
    return at == std::string::npos ? reply : reply.substr(begin, reply.find_first_of(" >", begin) - begin);
  }
  pid_t Pid() { return std::stoi(Tell("pid")); }
  std::string Get(const std::string& oid = kSysName, const std::string& community = "public") {
    return SnmpGet(Tell("address"), community, oid);
  }
  std::string SetOnline(const std::string& online) { return host.Command("SetOnline", {{"online", online}}); }
  std::string CopyOut() {
    std::string text = "nothing came";
    status = (*this)->CopyFrom(kPath, text);
    return text;
  }
  int CopyIn(const std::string& text) { return (*this)->CopyTo(kPath, text); }
  // CopyFrom and then CopyTo, as the agent does.
  int Change(const std::string& text) {
    CopyOut();
    return status == 0 || status == -9 ? CopyIn(text) : status;
  }

  FakeHost host;
  std::unique_ptr<drivers::LocalSnmpdDevice> driver;
  int result = 0;
  int status = 0;
};

class ALocalDevice : public testing::Test {
 protected:
  ALocalDevice() { std::filesystem::create_directory(Folder()); }
  ~ALocalDevice() override {
    EXPECT_EQ(0U, CountChildren());
    EXPECT_EQ(0U, devhost::LiveXmlObjects());
  }

  std::string Folder() const { return m_folder.Path("kitchen"); }
  std::string File() const { return m_folder.Read("kitchen/snmpd.conf"); }
  void WriteFile(const std::string& text) const { m_folder.Write("kitchen/snmpd.conf", text); }
  std::string Line(const std::string& text) const { return "3: SNMP device 12: " + text; }
  std::string CannotReplace(const std::string& why) const {
    return Line("cannot replace " + Folder() + "/snmpd.conf: " + why);
  }

  TemporaryFolder m_folder;
};

TEST_F(ALocalDevice, HasADaemonThatIsStartedStoppedAndShown) {
  WriteFile(kKitchen);
  Device device(Folder());
  const std::string address = device.Tell("address");
  EXPECT_EQ(0U, address.find("udp:127.0.0.1:"));
  EXPECT_EQ("<daemon running=false pid=0 address=" + address + " online=true pending=false>",
            device.host.Command("GetDaemon"));
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ("kitchen", device.Get());
  EXPECT_EQ("true", device.Tell("running"));
  EXPECT_TRUE(IsAlive(device.Pid()));
  EXPECT_EQ(address, device.Tell("address"));
  EXPECT_EQ(0, device->StopMasterAgent());
  EXPECT_EQ("false", device.Tell("running"));
  EXPECT_EQ(address, device.Tell("address"));
  EXPECT_EQ(Lines(), device.host.log);
}

TEST_F(ALocalDevice, AppliesANewFileToADaemonThatRuns) {
  WriteFile(kKitchen);
  Device device(Folder());
  EXPECT_EQ(0, device->StartMasterAgent());
  const pid_t pid = device.Pid();
  EXPECT_EQ(0, device.Change(kCellar));
  EXPECT_EQ(kCellar, File());
  EXPECT_NE(pid, device.Pid());
  EXPECT_EQ("cellar", device.Get());
}

TEST_F(ALocalDevice, LeavesADaemonDownThatDoesNotRun) {
  Device device(Folder());
  EXPECT_EQ("", device.CopyOut());
  EXPECT_EQ(0, device.CopyIn(kKitchen));
  EXPECT_EQ(kKitchen, File());
  EXPECT_EQ("false", device.Tell("running"));
}

TEST_F(ALocalDevice, AnswersWithTheDaemonsStatusWhenTheNewFileStopsIt) {
  WriteFile(kKitchen);
  m_folder.Write("program", "#!/bin/sh\ngrep -q cellar /proc/self/fd/0 && exit 1\nexec /usr/sbin/snmpd \"$@\"\n");
  ASSERT_EQ(0, ::chmod(m_folder.Path("program").c_str(), 0755));
  Device device(Folder(), "program='" + m_folder.Path("program") + "'");
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ(drivers::kDaemonEndedAtStart, device.Change(kCellar));
  EXPECT_EQ(kCellar, File());
  EXPECT_EQ("false", device.Tell("running"));
  EXPECT_EQ(0, device.Change(kKitchen));
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ("kitchen", device.Get());
}

// Such a restart fails before the daemon is stopped, which then still serves the old file.
TEST_F(ALocalDevice, MakesUpWithTheNextStartForARestartThatFailed) {
  WriteFile(kKitchen);
  m_folder.Write("program", "#!/bin/sh\nexec /usr/sbin/snmpd \"$@\"\n");
  const std::string program = m_folder.Path("program");
  ASSERT_EQ(0, ::chmod(program.c_str(), 0755));
  Device device(Folder(), "program='" + program + "'");
  EXPECT_EQ(0, device->StartMasterAgent());
  ASSERT_EQ(0, ::chmod(program.c_str(), 0644));
  EXPECT_EQ(drivers::kDaemonNotInstalled, device.Change(kCellar));
  EXPECT_EQ("kitchen", device.Get());
  EXPECT_EQ(drivers::kDaemonNotInstalled, device->StartMasterAgent());
  ASSERT_EQ(0, ::chmod(program.c_str(), 0755));
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ("cellar", device.Get());
  const std::string pid = device.Tell("pid");
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ(pid, device.Tell("pid"));
}

TEST_F(ALocalDevice, NeverOverwritesWhatSomebodyChangedSinceItWasCopiedOut) {
  WriteFile("first");
  Device device(Folder());
  EXPECT_EQ(drivers::kFileWasChanged, device.CopyIn("too early"));
  EXPECT_EQ("first", device.CopyOut());
  WriteFile("by hand");
  EXPECT_EQ(drivers::kFileWasChanged, device.CopyIn("second"));
  EXPECT_EQ("by hand", File());
  EXPECT_EQ(0, device.Change("third"));
  EXPECT_EQ("third", File());
  // What it installed itself counts as copied out.
  EXPECT_EQ(0, device.CopyIn("fourth"));
  const std::string line = CannotReplace("somebody changed it since it was copied out; read it again (status -4)");
  EXPECT_EQ((Lines{line, line}), device.host.log);
}

TEST_F(ALocalDevice, ReadsThroughALinkAndRefusesToReplaceIt) {
  m_folder.Write("elsewhere", kKitchen);
  std::filesystem::create_symlink("../elsewhere", Folder() + "/snmpd.conf");
  Device device(Folder());
  EXPECT_EQ(kKitchen, device.CopyOut());
  EXPECT_EQ(0, device.status);
  EXPECT_EQ(drivers::kFileIsSymbolicLink, device.CopyIn(kCellar));
  EXPECT_EQ(kKitchen, m_folder.Read("elsewhere"));
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ("kitchen", device.Get());
}

TEST_F(ALocalDevice, KeepsFileAndDaemonWhereTheFolderCannotBeWritten) {
  ASSERT_EQ(0, ::chmod(m_folder.Path().c_str(), 0777));
  const int changed = 1000;
  EXPECT_EQ(drivers::FileStatusOfErrno(EACCES), ResultAsOrdinaryUser([this] {
              // A folder of that user's own, who takes the right away from himself.
              const std::string own = m_folder.Path("own");
              std::filesystem::create_directory(own);
              m_folder.Write("own/snmpd.conf", kKitchen);
              Device device(own);
              if (device->StartMasterAgent() != 0) {
                return changed;
              }
              ::chmod(own.c_str(), 0555);
              const int status = device.Change(kCellar);
              ::chmod(own.c_str(), 0755);
              return m_folder.Read("own/snmpd.conf") == kKitchen && device.Get() == "kitchen" ? status : changed + 1;
            }));
}

TEST_F(ALocalDevice, KeepsFileAndDaemonOnAFullDisk) {
  const int cannotMount = 1;
  Child child([this]() -> int {
    if (!MountSmallDisk(Folder())) {
      return cannotMount;
    }
    WriteFile(kKitchen);
    Device device(Folder());
    if (device->StartMasterAgent() != 0) {
      return 2;
    }
    const int status = device.Change(std::string(100000, '#'));
    return File() == kKitchen && device.Get() == "kitchen" ? status : 3;
  });
  const std::optional<int> result = child.Result();
  if (result == cannotMount) {
    GTEST_SKIP() << "no disk can be mounted here; the folder without write permission stands for it";
  }
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOSPC), result);
}

TEST_F(ALocalDevice, RebootsDownAndUpAgainWhenItRanBefore) {
  WriteFile(kKitchen);
  Device device(Folder(), "rebootPause='0'");
  EXPECT_EQ(0, device->RebootController());
  EXPECT_EQ("false", device.Tell("running"));
  EXPECT_EQ(0, device->StartMasterAgent());
  const pid_t pid = device.Pid();
  WriteFile(kCellar);
  EXPECT_EQ(0, device->RebootController());
  EXPECT_NE(pid, device.Pid());
  EXPECT_EQ("cellar", device.Get());
  WriteFile("");
  std::filesystem::remove(Folder() + "/snmpd.conf");
  std::filesystem::create_directory(Folder() + "/snmpd.conf");
  EXPECT_EQ(drivers::kFileIsNotRegular, device->RebootController());
  EXPECT_EQ("false", device.Tell("running"));
}

TEST_F(ALocalDevice, NoticesADaemonThatWasKilledAtTheNextOperation) {
  WriteFile(kKitchen);
  Device device(Folder());
  EXPECT_EQ(0, device->StartMasterAgent());
  const pid_t pid = device.Pid();
  ::kill(pid, SIGKILL);
  EXPECT_TRUE(Eventually([pid] { return !IsAlive(pid); }));
  EXPECT_EQ(Lines(), device.host.log);
  // Between the daemon's end and the keepers' word of it, operations still find it running.
  EXPECT_TRUE(Eventually([&device] { return device.CopyOut() != kKitchen || !device.host.log.empty(); }));
  EXPECT_EQ(kKitchen, device.CopyOut());
  EXPECT_EQ((Lines{Line("the daemon (process " + std::to_string(pid) + ") ended by itself: killed by signal 9 (SIGKILL)")}),
            device.host.log);
  EXPECT_EQ(0, device->StopMasterAgent());
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ("kitchen", device.Get());
  EXPECT_EQ(1U, device.host.log.size());
}

TEST_F(ALocalDevice, IsOneOfManyOnOneMachine) {
  WriteFile(kKitchen);
  std::filesystem::create_directory(m_folder.Path("cellar"));
  m_folder.Write("cellar/snmpd.conf", kCellar);
  Device kitchen(Folder());
  EXPECT_EQ(0, kitchen->StartMasterAgent());
  // The host's log goes to the newer one; each has its own directory.
  Device cellar(m_folder.Path("cellar"));
  EXPECT_EQ(0, cellar->StartMasterAgent());
  EXPECT_EQ("kitchen", kitchen.Get());
  EXPECT_EQ("cellar", cellar.Get());
  EXPECT_NE(kitchen.Tell("address"), cellar.Tell("address"));
  cellar.driver.reset();
  EXPECT_EQ("kitchen", kitchen.Get());
}

TEST_F(ALocalDevice, TakesItsDaemonWithItWhenItGoes) {
  WriteFile("master agentx\n");
  Device device(Folder());
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_TRUE(std::filesystem::exists(Folder() + "/daemon/agentx"));
  const pid_t pid = device.Pid();
  device.driver.reset();
  EXPECT_FALSE(IsAlive(pid));
  // Gently: it had the time to take its socket away.
  EXPECT_FALSE(std::filesystem::exists(Folder() + "/daemon/agentx"));
}

TEST_F(ALocalDevice, RepeatsNothingOfALineThatItDoesNotKnow) {
  WriteFile("rocommunity public\nhush x\ntrap2sink 127.0.0.1 loud 65535\nloud x\n");
  Device device(Folder(), "", State(), "<setting name='communityWrite' value='hush'/>");
  EXPECT_EQ(0, device->StartMasterAgent());
  const std::string what = "the driver does not know this directive; the daemon does not get this line";
  EXPECT_EQ((Lines{Line("snmpd.conf:2: " + what), Line("snmpd.conf:4: " + what)}), device.host.log);
}

TEST_F(ALocalDevice, HandsOutTheLastTextOffLineAndAcceptsANewOneForLater) {
  WriteFile(kKitchen);
  Device device(Folder());
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ(kKitchen, device.CopyOut());
  EXPECT_EQ("<Success>", device.SetOnline("false"));
  const pid_t pid = device.Pid();
  EXPECT_EQ(kKitchen, device.CopyOut());
  EXPECT_EQ(-9, device.status);
  device->SetIsConfigDirty(true);
  EXPECT_EQ(-9, device.CopyIn("rocommunity other\n"));
  EXPECT_EQ("rocommunity other\n", device.CopyOut());
  EXPECT_EQ(-9, device.status);
  EXPECT_EQ(-9, device.CopyIn(kCellar));
  EXPECT_EQ("true", device.Tell("pending"));
  EXPECT_EQ(kKitchen, File());
  EXPECT_EQ(pid, device.Pid());
  EXPECT_EQ("kitchen", device.Get());
  EXPECT_EQ("<Success>", device.SetOnline("true"));
  EXPECT_EQ(kCellar, File());
  EXPECT_EQ("cellar", device.Get());
  EXPECT_FALSE(device->GetIsConfigDirty());
  EXPECT_EQ("false", device.Tell("pending"));
  EXPECT_EQ((Lines{Line("the text that was accepted off line is in " + Folder() + "/snmpd.conf")}), device.host.log);
  EXPECT_EQ("<Success>", device.SetOnline("true"));
  // What it installed itself counts as copied out.
  EXPECT_EQ(0, device.CopyIn(kKitchen));
}

TEST_F(ALocalDevice, RefusesActionsOffLineAndDoesNothing) {
  WriteFile(kKitchen);
  Device device(Folder());
  EXPECT_EQ(0, device->StartMasterAgent());
  const pid_t pid = device.Pid();
  EXPECT_EQ("<Success>", device.SetOnline("false"));
  EXPECT_EQ(drivers::kControllerOffLine, device->StartMasterAgent());
  EXPECT_EQ(drivers::kControllerOffLine, device->StopMasterAgent());
  EXPECT_EQ(drivers::kControllerOffLine, device->RebootController());
  EXPECT_EQ(pid, device.Pid());
  EXPECT_EQ((Lines{Line("cannot start the daemon: the controller is off line (status -20)"),
                   Line("cannot stop the daemon: the controller is off line (status -20)"),
                   Line("cannot reboot the controller: the controller is off line (status -20)")}),
            device.host.log);
}

TEST_F(ALocalDevice, OffLineFailsWhenItKnowsNoText) {
  WriteFile(kKitchen);
  Device device(Folder());
  EXPECT_EQ("<Success>", device.SetOnline("false"));
  EXPECT_EQ("nothing came", device.CopyOut());
  EXPECT_EQ(drivers::kNoTextKnown, device.status);
  EXPECT_EQ(drivers::kFileWasChanged, device.CopyIn(kCellar));
  EXPECT_EQ("false", device.Tell("pending"));
  EXPECT_EQ("<Success>", device.SetOnline("true"));
  EXPECT_EQ(kKitchen, File());
}

TEST_F(ALocalDevice, RefusesATextThatCouldNeverBeReadAgainAlsoOffLine) {
  WriteFile(kKitchen);
  Device device(Folder());
  device.CopyOut();
  const std::string text(drivers::ConfigFile::kMaximumSize + 1, 'x');
  EXPECT_EQ(drivers::kTextTooLarge, device.CopyIn(text));
  device.SetOnline("false");
  EXPECT_EQ(drivers::kTextTooLarge, device.CopyIn(text));
  EXPECT_EQ("false", device.Tell("pending"));
  EXPECT_EQ(kKitchen, File());
}

TEST_F(ALocalDevice, DropsWhatItAcceptedWhenTheFileWasChangedMeanwhile) {
  WriteFile(kKitchen);
  Device device(Folder());
  device.CopyOut();
  device.SetOnline("false");
  device->SetIsConfigDirty(true);
  EXPECT_EQ(-9, device.CopyIn(kCellar));
  WriteFile("by hand");
  const std::string dropped = "the text that was accepted off line is dropped: somebody changed " + Folder() +
                              "/snmpd.conf meanwhile; the settings stay, send them again";
  EXPECT_EQ("<Fail>" + dropped, device.SetOnline("true"));
  EXPECT_EQ((Lines{Line(dropped)}), device.host.log);
  EXPECT_EQ("by hand", File());
  EXPECT_TRUE(device->GetIsConfigDirty());
  EXPECT_EQ("true", device.Tell("online"));
  EXPECT_EQ("false", device.Tell("pending"));
  EXPECT_EQ(drivers::kFileWasChanged, device.CopyIn(kCellar));
  EXPECT_EQ("by hand", device.CopyOut());
}

TEST_F(ALocalDevice, StaysOffLineWithWhatItAcceptedWhereThatCannotBeInstalled) {
  WriteFile(kKitchen);
  Device device(Folder());
  device.CopyOut();
  device.SetOnline("false");
  EXPECT_EQ(-9, device.CopyIn(kCellar));
  std::filesystem::create_directory(Folder() + "/.snmpd.conf.new");
  EXPECT_NE("<Success>", device.SetOnline("true"));
  EXPECT_EQ("false", device.Tell("online"));
  EXPECT_EQ(kCellar, device.CopyOut());
  std::filesystem::remove(Folder() + "/.snmpd.conf.new");
  EXPECT_EQ("<Success>", device.SetOnline("true"));
  EXPECT_EQ(kCellar, File());
}

TEST_F(ALocalDevice, SaysWhatIsWrongWithItsCommands) {
  Device device(Folder());
  EXPECT_EQ("<Fail>online is \"\"; allowed are true and false", device.host.Command("SetOnline"));
  EXPECT_EQ("<Fail>online is \"maybe\"; allowed are true and false", device.SetOnline("maybe"));
  EXPECT_EQ("true", device.Tell("online"));
  Device wrong(Folder(), "port='80'");
  EXPECT_EQ("<Fail>the configuration of the device is invalid; see the log", wrong.SetOnline("true"));
  EXPECT_EQ("<Fail>the configuration of the device is invalid; see the log", wrong.host.Command("GetDaemon"));
}

TEST_F(ALocalDevice, KeepsSettingsFlagsAndTextsForItsNextLife) {
  WriteFile(kKitchen);
  State state;
  {
    Device device(Folder(), "", State(), "<setting name='sysName' value='project'/>");
    device->SetSysNameSetting("mine");
    device->SetSysContactSetting("Ada");
    device->SetSysContactSetting("");
    device->AddTrapTargetSetting("10.0.0.5", "public", "162");
    device.CopyOut();
    device.SetOnline("false");
    EXPECT_EQ(-9, device.CopyIn(kCellar));
    state = device.Keep();
  }
  Device device(Folder(), "", state, "<setting name='sysName' value='project'/><setting name='sysContact' value='Bob'/>");
  EXPECT_EQ("mine", device->GetSysNameSetting());
  EXPECT_EQ("", device->GetSysContactSetting());
  EXPECT_TRUE(device->GetWasSysContactSettingErased());
  ASSERT_EQ(1U, device->GetTrapTargetsSetting().size());
  EXPECT_EQ("false", device.Tell("online"));
  EXPECT_EQ("true", device.Tell("pending"));
  // Copied out by an earlier life is not copied out by this one.
  EXPECT_EQ(drivers::kFileWasChanged, device.CopyIn("too early"));
  EXPECT_EQ(kCellar, device.CopyOut());
  EXPECT_EQ("<Success>", device.SetOnline("true"));
  EXPECT_EQ(kCellar, File());
}

TEST_F(ALocalDevice, OffLineKnowsTheTextOfItsFormerLife) {
  WriteFile(kKitchen);
  State state;
  {
    Device device(Folder());
    device.CopyOut();
    state = device.Keep();
  }
  Device device(Folder(), "", state);
  device.SetOnline("false");
  EXPECT_EQ(kKitchen, device.CopyOut());
  EXPECT_EQ(-9, device.status);
  EXPECT_EQ(-9, device.CopyIn(kCellar));
  EXPECT_EQ("<Success>", device.SetOnline("true"));
  EXPECT_EQ(kCellar, File());
}

TEST_F(ALocalDevice, StartsWithTheProjectsSettingsWhenItsStateIsDamaged) {
  Device device(Folder(), "", ToNode("<SNMPState/>"), "<setting name='sysName' value='project'/>");
  EXPECT_EQ("project", device->GetSysNameSetting());
  EXPECT_EQ(
      (Lines{Line("the saved state cannot be used: it is an element SNMPState of version \"\", not LocalSnmpd of "
                  "version 1; the settings of the project are used, and the state is kept in the next one, as the element "
                  "refused")}),
      device.host.log);
}

TEST_F(ALocalDevice, KeepsAStateThatItCannotUseInItsNextOnes) {
  const auto xmlOf = [](const H7XML::INode& node) { return devhost::XmlText(node, devhost::XmlStyle::Compact); };
  const std::string refused = "<LocalSnmpd version=\"2\"><pending>precious</pending></LocalSnmpd>";
  State state = ToNode(refused);
  for (int life = 0; life < 3; ++life) {
    Device device(Folder(), "", state);
    EXPECT_EQ(life == 0 ? 1U : 0U, device.host.log.size());
    for (int time = 0; time < 2; ++time) {
      state = device.Keep();
      EXPECT_NE(std::string::npos, xmlOf(*state).find("<refused>" + refused + "</refused>")) << xmlOf(*state);
    }
  }
  // A second one that cannot be used holds the first.
  state->SetNamedString("online", "maybe");
  const std::string second = xmlOf(*state);
  Device device(Folder(), "", state);
  EXPECT_NE(std::string::npos, xmlOf(*device.Keep()).find("<refused>" + second + "</refused>"));
}

TEST_F(ALocalDevice, GivesItsStateBackUnreadWhereItsConfigurationIsWrong) {
  State state;
  {
    Device device(Folder());
    device->SetSysNameSetting("mine");
    state = device.Keep();
  }
  Device device(Folder(), "port='80'", state);
  EXPECT_NE(0, device.result);
  EXPECT_EQ(state.Get(), device.Keep().Get());
  Device empty(Folder(), "port='80'");
  EXPECT_FALSE(empty.Keep());
}

TEST_F(ALocalDevice, NotifiesTheHostOfWhatIsToBeSaved) {
  WriteFile(kKitchen);
  Device device(Folder(), "", State(), "<setting name='sysName' value='project'/>");
  int former = device.host.invalidations;
  EXPECT_EQ(0, former);
  // As a host that asks for the state when it was notified.
  const auto notified = [&] {
    device.Keep();
    return std::exchange(former, device.host.invalidations) != device.host.invalidations;
  };
  device->SetSysNameSetting("project");
  EXPECT_FALSE(notified());
  device->SetSysNameSetting("mine");
  EXPECT_TRUE(notified());
  device.CopyOut();
  EXPECT_TRUE(notified());
  device.CopyOut();
  EXPECT_FALSE(notified());
  device.CopyIn(kCellar);
  EXPECT_TRUE(notified());
  device.SetOnline("true");
  EXPECT_FALSE(notified());
  device.SetOnline("false");
  EXPECT_TRUE(notified());
  device.CopyIn(kKitchen);
  EXPECT_TRUE(notified());
  device.SetOnline("true");
  EXPECT_TRUE(notified());
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_FALSE(notified());
}

TEST_F(ALocalDevice, NotifiesTheHostOnceUntilItIsAsked) {
  WriteFile(kKitchen);
  Device device(Folder());
  device->SetSysNameSetting("one");
  device->SetSysNameSetting("two");
  device->SetEnabledSetting(true);
  EXPECT_EQ(1, device.host.invalidations);
  device.Keep();
  device->SetSysNameSetting("three");
  EXPECT_EQ(2, device.host.invalidations);
}

TEST_F(ALocalDevice, SaysWhatIsWrongWithItsConfiguration) {
  Device device(Folder(), "port='1023'");
  EXPECT_NE(0, device.result);
  EXPECT_EQ((Lines{Line("invalid configuration: port is \"1023\"; allowed are auto and whole numbers from 1024 to 65535")}),
            device.host.log);
  EXPECT_EQ(0, Device(Folder(), "port='65535' program='/no' rebootPause='60000' startDeadline='600'").result);
  EXPECT_EQ("udp:127.0.0.1:65535", Device(Folder(), "port='65535'").Tell("address"));
  EXPECT_EQ(0, Device(Folder(), "port='auto'").result);
}

TEST_F(ALocalDevice, WithoutItsFolderSaysSoAndAnswersAStatusUntilItIsThere) {
  std::filesystem::remove(Folder());
  Device device(Folder());
  EXPECT_EQ(
      (Lines{Line("the folder " + Folder() + " is missing (No such file or directory); make it, the device does not")}),
      device.host.log);
  device.CopyOut();
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOENT), device.status);
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOENT), device->StartMasterAgent());
  std::filesystem::create_directory(Folder());
  EXPECT_EQ(0, device.Change(kKitchen));
  EXPECT_EQ(0, device->StartMasterAgent());
  EXPECT_EQ("kitchen", device.Get());
}

}  // namespace
