#ifndef TESTS_SUPPORT_RECORDING_DEVICE_H
#define TESTS_SUPPORT_RECORDING_DEVICE_H

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "device/TrapTarget.h"
#include "host/ISupportSNMP.h"
#include "tests/support/Journal.h"

namespace testsupport {

// The results of one operation of a fake: each scripted one once, then `always`.
class Statuses {
 public:
  // The next results, one for each call.
  void Script(std::deque<int> next) { m_next = std::move(next); }
  int Next() {
    if (m_next.empty()) {
      return always;
    }
    const int status = m_next.front();
    m_next.pop_front();
    return status;
  }

  int always = 0;

 private:
  std::deque<int> m_next;
};

// An SNMP-capable device with public settings. It records every call before the call does anything: "7.GetSysNameSetting",
// "7.SetSysNameSetting box", "7.AddTrapTargetSetting 10.0.0.5|public|162", "7.CopyFrom /etc/snmp/snmpd.conf.local". The call
// begins with the device's id. Switches are written true or false. The trap targets of a list are written one after the
// other as target|community|port, with blanks between them. Before an empty text, the blank stays.
//
// A journal hook that throws leaves the device as it was. Setters do not change erased flags; tests set those.
class RecordingDevice : public ISupportSNMP {
 public:
  RecordingDevice(unsigned long deviceId, Journal& journal);
  virtual ~RecordingDevice() = default;

  bool GetIsManagedDevice() override;
  void SetIsManagedDevice(bool managed) override;
  bool GetIsConfigDirty() override;
  void SetIsConfigDirty(bool dirty) override;
  bool GetEnabledSetting() override;
  void SetEnabledSetting(bool enabled) override;
  std::string GetCommunityReadSetting() override;
  void SetCommunityReadSetting(std::string community) override;
  bool GetWasCommunityReadSettingErased() override;
  std::string GetCommunityWriteSetting() override;
  void SetCommunityWriteSetting(std::string community) override;
  bool GetWasCommunityWriteSettingErased() override;
  std::string GetSysContactSetting() override;
  void SetSysContactSetting(std::string contact) override;
  bool GetWasSysContactSettingErased() override;
  bool GetUsePrimaryContactSetting() override;
  void SetUsePrimaryContactSetting(bool use) override;
  std::string GetSysLocationSetting() override;
  void SetSysLocationSetting(std::string location) override;
  bool GetWasSysLocationSettingErased() override;
  bool GetUseProjectOwnerAddressSetting() override;
  void SetUseProjectOwnerAddressSetting(bool use) override;
  std::string GetSysNameSetting() override;
  void SetSysNameSetting(std::string name) override;
  bool GetWasSysNameSettingErased() override;
  bool GetUseRoomDeviceSetting() override;
  void SetUseRoomDeviceSetting(bool use) override;
  std::vector<TrapTarget> GetTrapTargetsSetting() override;
  void SetTrapTargetsSetting(std::vector<TrapTarget> targets) override;
  void ClearTrapTargetSetting() override;
  void AddTrapTargetSetting(std::string target, std::string community, std::string port) override;
  bool GetWasTrapTargetsSettingErased() override;
  void AgentAvailable() override;
  // On success, `CopyFrom` copies the file's text to `config`, and `CopyTo` copies `config` to the file. A failure changes
  // neither.
  int CopyFrom(const std::string& path, std::string& config) override;
  int CopyTo(const std::string& path, const std::string& config) override;
  int RebootController() override;
  int StopMasterAgent() override;
  int StartMasterAgent() override;
  std::string GetSNMPVersion() override;
  bool IsSNMPVersionValid(const std::string& version) override;

  // The settings and their flags.
  bool managed = false;
  bool dirty = false;
  bool enabled = false;
  std::string communityRead;
  bool communityReadErased = false;
  std::string communityWrite;
  bool communityWriteErased = false;
  std::string sysContact;
  bool sysContactErased = false;
  bool usePrimaryContact = false;
  std::string sysLocation;
  bool sysLocationErased = false;
  bool useProjectOwnerAddress = false;
  std::string sysName;
  bool sysNameErased = false;
  bool useRoomDevice = false;
  std::vector<TrapTarget> trapTargets;
  bool trapTargetsErased = false;

  // The device's snmpd.conf, and the last text that CopyTo got, installed or not.
  std::string file;
  std::string offered;

  Statuses copyFrom;
  Statuses copyTo;
  Statuses reboot;
  Statuses stop;
  Statuses start;

  std::string version = "1.0";
  bool versionValid = true;

 private:
  void Note(const char* call);
  void Note(const char* call, const std::string& argument);
  void Note(const char* call, bool argument);

  const std::string m_prefix;
  Journal& m_journal;
};

// Returns "target|community|port", as in the journal. In a list there are blanks between the targets.
std::string TrapText(const TrapTarget& trap);
std::string TrapText(const std::vector<TrapTarget>& traps);

}  // namespace testsupport

#endif
