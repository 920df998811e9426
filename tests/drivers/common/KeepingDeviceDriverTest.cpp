#include "drivers/common/KeepingDeviceDriver.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "tests/drivers/support/FakeHost.h"

namespace {

using Lines = std::vector<std::string>;
using State = h7::auto_com<H7XML::INode>;

// A device whose file is a string and whose controller goes off line on demand.
class KeptDevice final : public drivers::KeepingDeviceDriver {
 public:
  explicit KeptDevice(IInstanceManager& instanceManager) : KeepingDeviceDriver(instanceManager, "Kept") {}

  using KeepingDeviceDriver::IsOnline;
  using KeepingDeviceDriver::IsPending;
  using KeepingDeviceDriver::IsRestartDue;
  using KeepingDeviceDriver::KnownText;
  using KeepingDeviceDriver::NoteRestarted;
  using KeepingDeviceDriver::SetOnline;

  int Install() { return InstallPending("/d/snmpd.conf", Replacer()); }

  std::string file;
  int failing = 0;
  bool wasDueMeanwhile = false;
  std::string wrong;

 private:
  Replace Replacer() {
    return [this](const std::string& expected, const std::string& text) {
      wasDueMeanwhile = IsRestartDue();
      const int status = failing != 0 ? failing : file != expected ? drivers::kFileWasChanged : 0;
      file = status == 0 ? text : file;
      return status;
    };
  }

  std::string Prepare(const drivers::DeviceConfiguration&, const H7XML::INode&) override {
    if (wrong.empty()) {
      TakeStateBack();
    }
    return wrong;
  }
  std::string FilePath() const override { return "/d/snmpd.conf"; }
  int ReadFile(std::string& config) override {
    if (!IsOnline()) {
      return ReadOffLine(config);
    }
    config = file;
    NoteRead(config);
    return 0;
  }
  int WriteFile(const std::string& config) override {
    const int status = CheckWrite(config);
    return status != 0 ? status : IsOnline() ? WriteOnLine(config, Replacer()) : WriteOffLine(config);
  }
  int Reboot() override { return 0; }
  int StopDaemon() override { return 0; }
  int StartDaemon() override { return 0; }
};

class AKeepingDevice : public testing::Test {
 protected:
  AKeepingDevice() { Begin(State()); }

  int Begin(const State& state, const std::string& wrong = std::string()) {
    m_device = std::make_unique<KeptDevice>(m_host.Instances());
    m_device->wrong = wrong;
    IDriver& driver = *m_device;
    return driver.Initialize(12, *ToNode("<config folder='/d'><setting name='sysName' value='project'/></config>"),
                             state.Get());
  }
  State Keep() { return static_cast<IDriver&>(*m_device).GetPersistState(0); }
  std::string CopyOut() {
    std::string text = "nothing came";
    m_status = m_device->CopyFrom("", text);
    return text;
  }
  int CopyIn(const std::string& text) { return m_device->CopyTo("", text); }

  FakeHost m_host;
  std::unique_ptr<KeptDevice> m_device;
  int m_status = 0;
};

TEST_F(AKeepingDevice, HandsOutTheLastTextOffLineAndKeepsANewOneForLater) {
  m_device->file = "first";
  EXPECT_EQ("first", CopyOut());
  m_device->SetOnline(false);
  EXPECT_EQ("first", CopyOut());
  EXPECT_EQ(-9, m_status);
  EXPECT_EQ(-9, CopyIn("second"));
  EXPECT_EQ("second", CopyOut());
  EXPECT_EQ(-9, m_status);
  EXPECT_EQ("first", m_device->file);
  EXPECT_TRUE(m_device->IsPending());
  EXPECT_EQ(0, m_device->Install());
  EXPECT_EQ("second", m_device->file);
  EXPECT_EQ("second", m_device->KnownText());
  EXPECT_FALSE(m_device->IsPending());
  EXPECT_EQ((Lines{"3: SNMP device 12: the text that was accepted off line is in /d/snmpd.conf"}), m_host.log);
}

TEST_F(AKeepingDevice, KnowsNoTextBeforeItHasReadOne) {
  m_device->SetOnline(false);
  EXPECT_EQ("nothing came", CopyOut());
  EXPECT_EQ(-21, m_status);
  EXPECT_EQ(drivers::kFileWasChanged, CopyIn("second"));
  EXPECT_FALSE(m_device->IsPending());
}

TEST_F(AKeepingDevice, RefusesATextThatCouldNeverBeReadAgain) {
  CopyOut();
  EXPECT_EQ(drivers::kTextTooLarge, CopyIn(std::string(drivers::ConfigFile::kMaximumSize + 1, 'x')));
}

TEST_F(AKeepingDevice, DropsATextThatWaitedWhenSomebodyChangedTheFileAndSaysSo) {
  m_device->file = "first";
  CopyOut();
  m_device->SetOnline(false);
  EXPECT_EQ(-9, CopyIn("second"));
  m_device->file = "by hand";
  EXPECT_EQ(drivers::kFileWasChanged, m_device->Install());
  EXPECT_EQ("by hand", m_device->file);
  EXPECT_FALSE(m_device->IsPending());
  EXPECT_EQ((Lines{"3: SNMP device 12: the text that was accepted off line is dropped: somebody changed /d/snmpd.conf "
                   "meanwhile; the settings stay, send them again"}),
            m_host.log);
}

TEST_F(AKeepingDevice, KeepsATextThatCannotBeInstalledYet) {
  CopyOut();
  m_device->SetOnline(false);
  EXPECT_EQ(-9, CopyIn("second"));
  m_device->failing = -128;
  EXPECT_EQ(-128, m_device->Install());
  EXPECT_TRUE(m_device->IsPending());
  EXPECT_EQ(
      (Lines{"3: SNMP device 12: cannot install the text that was accepted off line in /d/snmpd.conf: No space left on "
             "device (status -128)"}),
      m_host.log);
  m_device->failing = 0;
  EXPECT_EQ(0, m_device->Install());
  EXPECT_EQ("second", m_device->file);
}

// Whoever made the new text has seen the one that waits.
TEST_F(AKeepingDevice, WritesATextMadeFromAPendingOneOverWhatThatOneWasMadeFrom) {
  m_device->file = "first";
  CopyOut();
  m_device->SetOnline(false);
  EXPECT_EQ(-9, CopyIn("second"));
  EXPECT_EQ(-9, CopyIn("third"));
  m_device->SetOnline(true);
  EXPECT_EQ(0, CopyIn("fourth"));
  EXPECT_EQ("fourth", m_device->file);
  EXPECT_FALSE(m_device->IsPending());
}

TEST_F(AKeepingDevice, FindsItsTextsAndSettingsAgainInTheNextLife) {
  m_device->file = "first";
  CopyOut();
  m_device->SetOnline(false);
  EXPECT_EQ(-9, CopyIn("second"));
  m_device->SetSysNameSetting("cellar");
  const State state = Keep();
  EXPECT_EQ("Kept", state->GetName());
  EXPECT_EQ(0, Begin(state));
  EXPECT_FALSE(m_device->IsOnline());
  EXPECT_EQ("cellar", m_device->GetSysNameSetting());
  EXPECT_EQ(drivers::kFileWasChanged, CopyIn("third"));
  EXPECT_EQ("second", CopyOut());
  m_device->file = "first";
  EXPECT_EQ(0, m_device->Install());
  EXPECT_EQ("second", m_device->file);
}

TEST_F(AKeepingDevice, HasARestartDueFromBeforeItsFileIsReplacedUntilTheDaemonWasTold) {
  CopyOut();
  EXPECT_FALSE(m_device->IsRestartDue());
  EXPECT_EQ(0, CopyIn("second"));
  EXPECT_TRUE(m_device->wasDueMeanwhile);
  EXPECT_TRUE(m_device->IsRestartDue());
  m_device->NoteRestarted();
  EXPECT_FALSE(m_device->IsRestartDue());
}

TEST_F(AKeepingDevice, HasNoRestartDueWhenItsFileWasNotReplaced) {
  CopyOut();
  m_device->failing = -128;
  EXPECT_EQ(-128, CopyIn("second"));
  EXPECT_FALSE(m_device->IsRestartDue());
  m_device->SetOnline(false);
  EXPECT_EQ(-9, CopyIn("third"));
  EXPECT_FALSE(m_device->IsRestartDue());
  m_device->failing = 0;
  EXPECT_EQ(0, m_device->Install());
  EXPECT_TRUE(m_device->IsRestartDue());
  m_device->failing = -128;
  m_device->SetOnline(true);
  EXPECT_EQ(-128, CopyIn("fourth"));
  EXPECT_TRUE(m_device->IsRestartDue());
}

TEST_F(AKeepingDevice, HasARestartDueInItsNextLifeToo) {
  CopyOut();
  EXPECT_EQ(0, CopyIn("second"));
  EXPECT_EQ(0, Begin(Keep()));
  EXPECT_TRUE(m_device->IsRestartDue());
  const int before = m_host.invalidations;
  m_device->NoteRestarted();
  EXPECT_EQ(before + 1, m_host.invalidations);
  EXPECT_EQ(0, Begin(Keep()));
  EXPECT_FALSE(m_device->IsRestartDue());
}

TEST_F(AKeepingDevice, ReturnsTheStateAsItIsWhileItsConfigurationIsInvalid) {
  const State state = Keep();
  EXPECT_EQ(1, Begin(state, "the port is wrong"));
  EXPECT_EQ(state.Get(), Keep().Get());
}

TEST_F(AKeepingDevice, KeepsAStateOfAnotherKindInTheNextOne) {
  EXPECT_EQ(0, Begin(ToNode("<Other version='1'>precious</Other>")));
  EXPECT_EQ("project", m_device->GetSysNameSetting());
  EXPECT_NE(std::string::npos, ToText(*Keep()).find("<refused><Other version=1>precious")) << ToText(*Keep());
  EXPECT_EQ(1U, m_host.log.size());
}

TEST_F(AKeepingDevice, SaysOnceThatItsStateChangedUntilItIsAskedForIt) {
  const int before = m_host.invalidations;
  m_device->file = "first";
  CopyOut();
  m_device->SetOnline(false);
  EXPECT_EQ(before + 1, m_host.invalidations);
  Keep();
  m_device->SetOnline(true);
  EXPECT_EQ(before + 2, m_host.invalidations);
  m_device->SetOnline(true);
  CopyOut();
  EXPECT_EQ(before + 2, m_host.invalidations);
}

}  // namespace
