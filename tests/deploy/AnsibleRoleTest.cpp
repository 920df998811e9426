// The role for Ansible, played on this machine by the distribution's ansible-playbook.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "devhost/system/RunProgram.h"
#include "tests/support/ScratchFolder.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr char kPlaybook[] = R"(- hosts: localhost
  gather_facts: false
  roles:
    - role: snmp_settings
      snmp_settings: "{{ lookup('file', 'settings.xml') }}"
      snmp_settings_file: "{{ playbook_dir }}/snmpd.conf"
      snmp_settings_restart_command: "{{ playbook_dir }}/restart"
  handlers:
    - name: Tell of the change
      listen: SNMP settings changed
      ansible.builtin.command: touch {{ playbook_dir }}/told
)";

std::string Settings(const std::string& contact, const std::string& deviceId = "1") {
  return "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice><snmpEnabledSetting>true</snmpEnabledSetting>"
         "<snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting><snmpCommunityWriteSetting/>"
         "<snmpSysContactSetting>" +
         contact +
         "</snmpSysContactSetting><snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>"
         "<snmpSysLocationSetting/><snmpUseProjectOwnerAddressSetting>false</snmpUseProjectOwnerAddressSetting>"
         "<snmpSysNameSetting/><snmpUseRoomDeviceSetting>false</snmpUseRoomDeviceSetting><snmpTrapTargets/>"
         "<deviceId>" +
         deviceId + "</deviceId></managedDevice>";
}

class TheRole : public testing::Test {
 protected:
  TheRole() {
    m_folder.Write("playbook.yml", kPlaybook);
    m_folder.Write("settings.xml", Settings("Ada"));
    m_folder.Write("snmpd.conf", "# by hand\n");
    ::chmod(m_folder.Path("snmpd.conf").c_str(), 0640);
    SetRestart("exit 0");
  }

  devhost::ProgramResult Play(std::vector<std::string> options = {}) const {
    devhost::ProgramRun run;
    run.words = {"ansible-playbook",
                 "--inventory=localhost,",
                 "--connection=local",
                 "--extra-vars=ansible_python_interpreter=/usr/bin/python3",
                 "--extra-vars=snmp_settings_devhost=" DEVHOST_PROGRAM,
                 "--extra-vars=snmp_settings_module_dir=" MODULE_FOLDER};
    run.words.insert(run.words.end(), options.begin(), options.end());
    run.words.emplace_back("playbook.yml");
    run.folder = m_folder.Path();
    run.environment = {{"HOME", m_folder.Path()},
                       {"LC_ALL", "C.UTF-8"},
                       {"ANSIBLE_HOME", m_folder.Path("ansible")},
                       {"ANSIBLE_LOCAL_TEMP", m_folder.Path("local")},
                       {"ANSIBLE_REMOTE_TEMP", m_folder.Path("remote")},
                       {"ANSIBLE_ROLES_PATH", ROLES_FOLDER},
                       {"ANSIBLE_NOCOLOR", "1"}};
    run.deadline = std::chrono::minutes(10);
    return devhost::RunProgram(run);
  }

  // `script` is what the restart command does after it has noted the call.
  void SetRestart(const std::string& script) {
    m_folder.Write("restart", "#!/bin/sh\necho x >>'" + m_folder.Path("restarts") + "'\n" + script + "\n");
    ::chmod(m_folder.Path("restart").c_str(), 0755);
  }
  std::string File() const { return m_folder.Read("snmpd.conf"); }
  // How often the restart command was run.
  std::size_t Restarts() const {
    return std::filesystem::exists(m_folder.Path("restarts")) ? m_folder.Read("restarts").size() / 2 : 0;
  }
  // Whether the handler of the playbook itself was run.
  bool IsTold() const { return std::filesystem::exists(m_folder.Path("told")); }

  testsupport::ScratchFolder m_folder;
};

TEST_F(TheRole, ShowsAndChangesNothingInCheckMode) {
  const devhost::ProgramResult result = Play({"--check", "--diff", "-vvv"});
  EXPECT_EQ(result.exitStatus, 0) << result.output;
  EXPECT_THAT(result.output, AllOf(HasSubstr("\n+sysContact  Ada"), HasSubstr("changed=1"), Not(HasSubstr("hidden1"))));
  EXPECT_EQ(File(), "# by hand\n");
  EXPECT_EQ(Restarts(), 0U);
}

TEST_F(TheRole, ChangesTheFileOnceAndRestartsOnlyThen) {
  const devhost::ProgramResult first = Play({"-vvv"});
  EXPECT_EQ(first.exitStatus, 0) << first.output;
  EXPECT_THAT(first.output, Not(HasSubstr("hidden1")));
  EXPECT_THAT(File(), AllOf(HasSubstr("rocommunity  hidden1"), HasSubstr("# by hand\n")));
  struct stat status = {};
  ASSERT_EQ(::stat(m_folder.Path("snmpd.conf").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
  EXPECT_EQ(Restarts(), 1U);
  ASSERT_TRUE(std::filesystem::remove(m_folder.Path("told")));

  const std::string written = File();
  const devhost::ProgramResult second = Play();
  EXPECT_EQ(second.exitStatus, 0) << second.output;
  EXPECT_THAT(second.output, HasSubstr("changed=0"));
  EXPECT_EQ(File(), written);
  EXPECT_EQ(Restarts(), 1U);
  EXPECT_FALSE(IsTold());
}

TEST_F(TheRole, MakesUpForARestartThatHasFailed) {
  SetRestart("echo no such daemon; exit 3");
  const devhost::ProgramResult failed = Play();
  EXPECT_EQ(failed.exitStatus, 2) << failed.output;
  EXPECT_THAT(failed.output, AllOf(HasSubstr("it has ended with status 3: no such daemon"), HasSubstr("failed=1")));
  const std::string written = File();
  EXPECT_THAT(written, HasSubstr("sysContact  Ada\n"));
  EXPECT_THAT(Play({"--check"}).output, HasSubstr("changed=1"));
  EXPECT_EQ(Restarts(), 1U);

  SetRestart("exit 0");
  const devhost::ProgramResult late = Play();
  EXPECT_EQ(late.exitStatus, 0) << late.output;
  EXPECT_THAT(late.output, Not(HasSubstr("changed=0")));
  EXPECT_EQ(Restarts(), 2U);
  EXPECT_THAT(Play().output, HasSubstr("changed=0"));
  EXPECT_EQ(Restarts(), 2U);
  EXPECT_EQ(File(), written);
}

// Nobody is told to restart the daemon, so the play does not pass that over.
TEST_F(TheRole, FailsWhenARestartIsDueThatItCannotMake) {
  SetRestart("exit 3");
  Play();
  const devhost::ProgramResult result = Play({"--extra-vars={\"snmp_settings_restart_command\": \"\"}"});
  EXPECT_EQ(result.exitStatus, 2) << result.output;
  EXPECT_THAT(result.output, HasSubstr("its restart command has not succeeded; give one again"));
}

TEST_F(TheRole, FailsWithTheReasonAndLeavesTheFileAlone) {
  m_folder.Write("settings.xml", Settings("Ada", "2"));
  const devhost::ProgramResult result = Play();
  EXPECT_EQ(result.exitStatus, 2) << result.output;
  EXPECT_THAT(result.output, AllOf(HasSubstr("deviceId"), HasSubstr("\"verdict\": \"stopped\""), HasSubstr("failed=1")));
  EXPECT_EQ(File(), "# by hand\n");
  EXPECT_EQ(Restarts(), 0U);
}

TEST_F(TheRole, LosesNoSettingThatIsMissingUnlessTheRuleIsAccepted) {
  ASSERT_EQ(Play().exitStatus, 0);
  std::string settings = Settings("Ada");
  const std::string contact = "<snmpSysContactSetting>Ada</snmpSysContactSetting>";
  settings.erase(settings.find(contact), contact.size());
  m_folder.Write("settings.xml", settings);
  const devhost::ProgramResult stopped = Play();
  EXPECT_EQ(stopped.exitStatus, 2) << stopped.output;
  EXPECT_THAT(stopped.output, HasSubstr("because of setting-missing"));
  EXPECT_THAT(File(), HasSubstr("sysContact  Ada\n"));
  const devhost::ProgramResult accepted = Play({"--extra-vars={\"snmp_settings_accept\": [\"setting-missing\"]}"});
  EXPECT_EQ(accepted.exitStatus, 0) << accepted.output;
  EXPECT_THAT(File(), Not(HasSubstr("sysContact")));
}

TEST_F(TheRole, AsksForSettings) {
  std::string playbook = kPlaybook;
  const std::string settings = "      snmp_settings: \"{{ lookup('file', 'settings.xml') }}\"\n";
  playbook.erase(playbook.find(settings), settings.size());
  m_folder.Write("playbook.yml", playbook);
  const devhost::ProgramResult result = Play();
  EXPECT_EQ(result.exitStatus, 2) << result.output;
  EXPECT_THAT(result.output, HasSubstr("missing required arguments: snmp_settings"));
}

}  // namespace
