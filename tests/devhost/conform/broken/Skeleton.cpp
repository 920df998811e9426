// A device driver straight from host/ that conforms, unless it is linked with the name of a check as its fault: then one
// line of it is another one, and it breaks that check.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "device/TrapTarget.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/LogXMessage.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/TestModule.h"

#include "tests/devhost/conform/broken/Fault.h"

// One more export, where the linker lets it out.
TEST_EXPORT int OfNoHostEither() {
  return 0;
}

namespace {

bool Breaks(const char* check) {
  return std::strcmp(check, kFault) == 0;
}

template <class Value>
struct Erasable {
  void Set(const Value& newValue, const char* name) {
    const bool isErased = newValue.empty() && (!value.empty() || erased || Breaks("erased-empty-stays"));
    const bool isLocation = std::strcmp(name, "SysLocation") == 0;
    value = newValue;
    erased = Breaks("erased-on-emptied") && isLocation ? false
             : Breaks("erased-cleared") && isLocation  ? erased || isErased
                                                       : isErased;
  }

  Value value;
  bool erased = false;
};

// Only where the check is made, since all others would take long.
const bool s_isSlow = [] {
  std::ifstream command("/proc/self/cmdline");
  const std::string words((std::istreambuf_iterator<char>(command)), std::istreambuf_iterator<char>());
  return Breaks("module-load-time") && words.find("module-load-time") != std::string::npos && ::usleep(600000) == 0;
}();

int s_alive = 0;
std::string s_name;
bool s_hasStarted = false;  // a process

class Skeleton : public H7BaseAgentDriver, public ISupportSNMP {
 public:
  explicit Skeleton(IInstanceManager& instanceManager) : H7BaseAgentDriver(instanceManager, DriverMultiplicity_PerDevice) {
    ++s_alive;
    if (Breaks("life-again")) {
      static_cast<void>(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
  }

  ~Skeleton() override {
    --s_alive;
    GetInstanceManager().UnregisterQuery(ISupportSNMP_IID);
    if (m_isAnnounced && FindAgent() != nullptr && !Breaks("life-withdraws")) {
      FindAgent()->DeleteSNMPDevice(m_id);
    }
    if (Breaks("nothing: withdraws-twice") && FindAgent() != nullptr) {
      FindAgent()->DeleteSNMPDevice(m_id);
    }
    if (Breaks("file-kept")) {
      std::remove(m_path.c_str());
    }
    if (Breaks("threads-left")) {
      std::thread(&::pause).detach();
    }
    if (m_late.joinable()) {
      m_late.join();
    }
    if (Breaks("process-descriptors")) {
      ::close(STDIN_FILENO);
    }
    if (Breaks("process-left") && !std::exchange(s_hasStarted, true) && ::fork() == 0) {
      ::execl("/bin/sleep", "sleep", "5", nullptr);
      ::_exit(1);
    }
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    if (Breaks("life-initialize-again") && m_id != 0) {
      return 1;
    }
    if (Breaks("nothing: ends-in-initialize")) {
      ::_exit(3);
    }
    if (Breaks("nothing: hangs-in-initialize")) {
      ::pause();
    }
    if (Breaks("process-folder")) {
      static_cast<void>(::chdir("/") == 0);
    }
    m_id = driverId;
    m_path = config.GetNamedString("folder") + (Breaks("nothing: shares-a-file") ? "/../snmpd.conf" : "/snmpd.conf");
    if (config.GetNamedString("folder").empty()) {
      if (!Breaks("life-wrong-config")) {
        LogXMessage(3, "device %lu has no folder", driverId);
      }
      return 1;
    }
    if (Breaks("nothing: empties-its-file")) {
      std::ofstream(m_path, std::ios::trunc).close();
    }
    if (Breaks("state-hostile") && persisted != nullptr && persisted->GetName() != "State") {
      throw std::runtime_error("the state is damaged");
    }
    if (Breaks("nothing: calls-from-a-thread-later")) {
      m_late = std::thread([this] {
        ::usleep(40000);
        DmInvalidateState();
      });
    }
    if (persisted != nullptr) {
      m_name.value = s_name = persisted->GetValue();
    }
    GetInstanceManager().RegisterQuery(ISupportSNMP_IID,
                                       Breaks("life-publish") ? static_cast<void*>(static_cast<IDriver*>(this))
                                       : Breaks("nothing: publishes-a-text") ? static_cast<void*>(&m_path)
                                                                             : static_cast<ISupportSNMP*>(this));
    if (FindAgent() != nullptr && !Breaks("life-agent-first")) {
      Announce();
    }
    return Breaks("life-initialize") ? 1 : 0;
  }

  h7::auto_com<H7XML::INode> GetPersistState(unsigned long) override {
    return Breaks("state-round") ? h7::auto_com<H7XML::INode>() : H7XML::CreateXmlNode("State", m_name.value);
  }

  void RegisterCommands() override {
    GetUICmdDispatcher().RegisterUICmd("Withdraw", [this](const ICmdMessage&) {
      Withdraw();
      return H7XML::CreateXmlNode("Success", "");
    });
    GetUICmdDispatcher().RegisterUICmd("Announce", [this](const ICmdMessage&) {
      Announce();
      return H7XML::CreateXmlNode("Success", "");
    });
    GetUICmdDispatcher().RegisterUICmd("SetOnline", [this](const ICmdMessage& message) {
      m_isOnline = message.GetString("online") == "true";
      if (m_isOnline && m_isWaiting && !Breaks("file-later")) {
        Write(m_waiting);
      }
      m_isWaiting = m_isWaiting && !m_isOnline;
      return H7XML::CreateXmlNode("Success", "");
    });
  }

  void Withdraw() {
    FindAgent()->DeleteSNMPDevice(m_id);
    m_isAnnounced = false;
  }

  bool GetIsManagedDevice() override { return m_isManaged; }
  void SetIsManagedDevice(bool managed) override { m_isManaged = managed; }
  bool GetIsConfigDirty() override { return m_isDirty; }
  void SetIsConfigDirty(bool dirty) override { m_isDirty = dirty; }
  bool GetEnabledSetting() override { return m_isEnabled; }
  void SetEnabledSetting(bool enabled) override { m_isEnabled = enabled; }

  std::string GetCommunityReadSetting() override { return m_read.value; }
  void SetCommunityReadSetting(std::string community) override {
    if (Breaks("secrets-log")) {
      LogXMessage(1, "the community is %s", community.c_str());
    }
    if (Breaks("settings-memory")) {
      m_lost.push_back(community);
    }
    m_read.Set(community, "CommunityRead");
  }
  bool GetWasCommunityReadSettingErased() override { return m_read.erased; }
  std::string GetCommunityWriteSetting() override { return m_write.value; }
  void SetCommunityWriteSetting(std::string community) override { m_write.Set(community, "CommunityWrite"); }
  bool GetWasCommunityWriteSettingErased() override { return m_write.erased; }

  std::string GetSysContactSetting() override { return OwnOr(m_contact.value, m_usesContact); }
  void SetSysContactSetting(std::string contact) override {
    if (!Breaks("nothing: ignored-setters")) {
      m_contact.Set(contact, "SysContact");
    }
  }
  bool GetWasSysContactSettingErased() override { return m_contact.erased != Breaks("nothing: inverted-flags"); }
  bool GetUsePrimaryContactSetting() override { return m_usesContact; }
  void SetUsePrimaryContactSetting(bool use) override { m_usesContact = use; }

  std::string GetSysLocationSetting() override { return OwnOr(m_location.value, m_usesAddress); }
  void SetSysLocationSetting(std::string location) override {
    m_location.Set(Breaks("settings-bytes") ? location.substr(0, 255) : location, "SysLocation");
  }
  bool GetWasSysLocationSettingErased() override { return m_location.erased; }
  bool GetUseProjectOwnerAddressSetting() override {
    if (Breaks("nothing: is-slow")) {
      ::usleep(100000);
    }
    return m_usesAddress;
  }
  void SetUseProjectOwnerAddressSetting(bool use) override {
    if (Breaks("nothing: crashes")) {
      std::abort();
    }
    if (Breaks("nothing: hangs")) {
      ::pause();
    }
    if (Breaks("nothing: talks-at-length")) {
      const std::string text(1U << 20U, 'x');
      LogXMessage(1, "%s", text.c_str());
      throw std::runtime_error(text);
    }
    if (Breaks("nothing: throws")) {
      throw 1;
    }
    m_usesAddress = use;
  }

  std::string GetSysNameSetting() override {
    if (Breaks("settings-quiet") && FindAgent() != nullptr) {
      FindAgent()->AddSNMPDevice(m_id, this);
    }
    if (Breaks("calls-nested") && m_isAnnouncing) {
      throw std::runtime_error("the device is busy");
    }
    return Breaks("whole-two") ? s_name : OwnOr(m_name.value, m_usesRoom);
  }
  void SetSysNameSetting(std::string name) override {
    m_contact.erased = m_contact.erased || (Breaks("erased-own") && name.empty());
    s_name = name;
    if (Breaks("fuzz-session") && ++m_namings % 12 == 0) {
      return;
    }
    m_name.Set(name, "SysName");
    if (!Breaks("state-called")) {
      DmInvalidateState();
    }
  }
  bool GetWasSysNameSettingErased() override { return m_name.erased; }
  bool GetUseRoomDeviceSetting() override { return m_usesRoom; }
  void SetUseRoomDeviceSetting(bool use) override { m_usesRoom = use && !Breaks("settings-kept"); }

  std::vector<TrapTarget> GetTrapTargetsSetting() override { return m_traps.value; }
  void SetTrapTargetsSetting(std::vector<TrapTarget> targets) override {
    if (Breaks("traps-order")) {
      std::sort(targets.begin(), targets.end(),
                [](const TrapTarget& left, const TrapTarget& right) { return left.target < right.target; });
    }
    if (Breaks("traps-many") && targets.size() > 100) {
      targets.erase(targets.begin() + 100, targets.end());
    }
    if (Breaks("traps-set") && !targets.empty()) {
      targets.insert(targets.begin(), m_traps.value.begin(), m_traps.value.end());
    }
    m_traps.Set(targets, "TrapTargets");
  }
  void ClearTrapTargetSetting() override {
    if (!Breaks("traps-clear")) {
      m_traps.Set({}, "TrapTargets");
    }
  }
  void AddTrapTargetSetting(std::string target, std::string community, std::string port) override {
    if (Breaks("nothing: changes-communities")) {
      community += "!";
    }
    m_traps.value.emplace(Breaks("traps-add") ? m_traps.value.begin() : m_traps.value.end(), target, community, port);
    m_traps.erased = false;
  }
  bool GetWasTrapTargetsSettingErased() override { return m_traps.erased; }

  void AgentAvailable() override {
    if ((FindAgent() != nullptr && !Breaks("life-device-first")) || Breaks("calls-without-agent")) {
      Announce();
    }
  }

  int CopyFrom(const std::string&, std::string& config) override {
    m_name.erased = m_name.erased && !Breaks("nothing: forgets-what-was-erased");
    if (Breaks("threads-host")) {
      std::thread([this] { DmInvalidateState(); }).join();
    }
    if (Breaks("nothing: logs-from-a-thread")) {
      std::thread([] { LogXMessage(1, "the file is read"); }).join();
    }
    if (Breaks("nothing: has-no-file-at-first") && ::access(m_path.c_str(), R_OK) != 0) {
      return -2;
    }
    if (Breaks("nothing: throws-from-copy-from")) {
      throw std::runtime_error("the file is gone");
    }
    if (!Breaks("nothing: unfilled-copy-from")) {
      config = m_isWaiting ? m_waiting : Read();
      if (Breaks("file-text-borrowed") && m_lent != nullptr && m_lent->size() == config.size()) {
        config = *m_lent;
      }
      if (Breaks("nothing: caches-its-file") && !m_cached.empty()) {
        config = m_cached;
      }
    }
    return m_isOnline ? 0 : -9;
  }
  int CopyTo(const std::string&, const std::string& config) override {
    m_lent = &config;
    m_cached = config;
    if (Breaks("whole-agent") && config.find("Section Start") != std::string::npos) {
      return -1;
    }
    if (m_isOnline) {
      return Write(config);
    }
    m_waiting = config;
    m_isWaiting = true;
    return -9;
  }

  int RebootController() override { return 0; }
  int StopMasterAgent() override {
    return Breaks("actions-return") ? throw std::runtime_error("the controller does not stop") : 0;
  }
  int StartMasterAgent() override { return 0; }
  std::string GetSNMPVersion() override {
    if (Breaks("calls-manners")) {
      H7BaseAgentDriver::Initialize(m_id + 1, *H7XML::CreateXmlNode("config", ""), nullptr);
    }
    return "1.0.0";
  }
  bool IsSNMPVersionValid(const std::string& version) override { return version == "1.0.0"; }

 private:
  static std::string OwnOr(const std::string& own, bool usesProject) {
    return Breaks("nothing: follows-its-switches") && usesProject ? "a text of the project" : own;
  }

  std::string Read() const {
    std::ifstream file(m_path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }

  // Beside the old file, which is there until the new one is whole.
  int Write(std::string config) const {
    if (Breaks("file-round")) {
      config.erase(std::remove(config.begin(), config.end(), '\r'), config.end());
    }
    const std::string beside = m_path + ".new";
    struct stat old = {};
    const mode_t mode = ::stat(m_path.c_str(), &old) == 0 ? old.st_mode & 0777U : 0600U;
    std::ofstream file(beside, std::ios::binary);
    ::chmod(beside.c_str(), Breaks("file-mode") ? 0644U : mode);
    file << config;
    file.close();
    if (!file || std::rename(beside.c_str(), m_path.c_str()) != 0) {
      std::remove(beside.c_str());
      if (Breaks("throw-type")) {
        throw 1;
      }
      return Breaks("file-failure") ? 0 : -1;
    }
    return 0;
  }

  ISNMPConfigurationAgent* FindAgent() {
    const bool keeps = Breaks("life-agent-gone") && m_agent != nullptr;
    m_agent =
        keeps ? m_agent : static_cast<ISNMPConfigurationAgent*>(GetInstanceManager().Query(ISNMPConfigurationAgent_IID));
    return m_agent;
  }

  void Announce() {
    if (Breaks("throw-service") && m_isAnnouncing) {
      return;
    }
    m_isAnnounced = true;
    m_isAnnouncing = true;
    FindAgent()->AddSNMPDevice(Breaks("nothing: has-short-ids") ? m_id & 0xFFFFU : m_id, this);
    m_isAnnouncing = false;
    if (Breaks("calls-withdrawn-inside") && !m_isAnnounced) {
      throw std::runtime_error("the device was withdrawn");
    }
  }

  unsigned long m_id = 0;
  ISNMPConfigurationAgent* m_agent = nullptr;
  bool m_isAnnounced = false;
  bool m_isAnnouncing = false;
  bool m_isManaged = false;
  bool m_isDirty = false;
  bool m_isEnabled = false;
  bool m_usesContact = false;
  bool m_usesAddress = false;
  bool m_usesRoom = false;
  Erasable<std::string> m_read;
  Erasable<std::string> m_write;
  Erasable<std::string> m_contact;
  Erasable<std::string> m_location;
  Erasable<std::string> m_name;
  Erasable<std::vector<TrapTarget>> m_traps;
  std::string m_path;
  int m_namings = 0;
  bool m_isOnline = true;
  bool m_isWaiting = false;
  std::string m_waiting;
  std::vector<std::string> m_lost;
  std::thread m_late;
  const std::string* m_lent = nullptr;
  std::string m_cached;
};

IDriver* Create(IInstanceManager& instanceManager) {
  DoFault();
  return Breaks("life-create") && s_alive != 0 ? nullptr : new Skeleton(instanceManager);
}

}  // namespace

TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &Create;
}

TEST_EXPORT const char* const versionString;
const char* const versionString = Breaks("module-loads") ? nullptr : "1.2.3.4";
