#include "drivers/common/SnmpDeviceDriver.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include "drivers/common/FileStatus.h"
#include "host/IInstanceManager.h"
#include "host/LogXMessage.h"

namespace drivers {

namespace {

const unsigned int kOperatorLevel = 3;

// Does one step of leaving. A failure must neither end the process nor prevent the next step.
template <class Step>
void ReportFailure(unsigned long driverId, const char* what, Step step) noexcept {
  try {
    step();
  } catch (const std::exception& error) {
    LogXMessage(kOperatorLevel, "SNMP device %lu: %s: %s", driverId, what, error.what());
  } catch (...) {
    LogXMessage(kOperatorLevel, "SNMP device %lu: %s", driverId, what);
  }
}

}  // namespace

SnmpDeviceDriver::SnmpDeviceDriver(IInstanceManager& instanceManager)
    : H7BaseDriver(instanceManager, DriverMultiplicity_PerDevice),
      m_driverId(0),
      m_published(false),
      m_versionValid(false),
      m_agent(instanceManager),
      m_commands(Settings(), m_operations,
                 {[this] { return Announce(); }, [this] { m_agent.Withdraw(m_driverId); }, [this] { return FilePath(); },
                  [this] { SettingsChanged(); }}) {}

SnmpDeviceDriver::~SnmpDeviceDriver() {
  Leave();
}

int SnmpDeviceDriver::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  H7BaseDriver::Initialize(driverId, config, persisted);
  if (!m_published) {
    m_driverId = driverId;
    const std::string wrong = Configure(config);
    if (!wrong.empty()) {
      Log("invalid configuration: " + wrong);
      return 1;
    }
    // Last, since whoever finds the device may call it at once.
    m_published = GetInstanceManager().RegisterQuery(ISupportSNMP_IID, static_cast<ISupportSNMP*>(this));
    if (!m_published) {
      Log("the host does not publish the device");
      return 1;
    }
  }
  if (!m_agent.IsAnnounced()) {
    m_agent.Announce(m_driverId, *this);
  }
  return 0;
}

std::string SnmpDeviceDriver::Configure(const H7XML::INode& config) {
  DeviceConfiguration configuration;
  const std::string wrong =
      ReadDeviceConfiguration(config, configuration, NeedsFolder() ? FolderIs::Required : FolderIs::NotUsed);
  if (!wrong.empty()) {
    return wrong;
  }
  Settings() = configuration.settings;
  m_version = configuration.version;
  m_versionValid = configuration.versionValid;
  return Prepare(configuration, config);
}

h7::auto_com<H7XML::INode> SnmpDeviceDriver::GetPersistState(unsigned long) {
  return h7::auto_com<H7XML::INode>();
}

void SnmpDeviceDriver::RegisterCommands() {
  m_commands.Register(GetUICmdDispatcher());
}

void SnmpDeviceDriver::AgentAvailable() {
  Announce();
}

std::string SnmpDeviceDriver::Announce() {
  if (!m_published) {
    return "the configuration of the device is invalid; see the log";
  }
  return m_agent.Announce(m_driverId, *this) ? "" : "no agent is present";
}

int SnmpDeviceDriver::CopyFrom(const std::string&, std::string& config) {
  const int status = m_operations.Begin(DeviceOperation::CopyFrom);
  return status != 0 ? status : ReadFile(config);
}

int SnmpDeviceDriver::CopyTo(const std::string&, const std::string& config) {
  const int status = m_operations.Begin(DeviceOperation::CopyTo);
  return status != 0 ? status : WriteFile(config);
}

int SnmpDeviceDriver::RebootController() {
  const int status = m_operations.Begin(DeviceOperation::RebootController);
  return status != 0 ? status : Reboot();
}

int SnmpDeviceDriver::StopMasterAgent() {
  const int status = m_operations.Begin(DeviceOperation::StopMasterAgent);
  return status != 0 ? status : StopDaemon();
}

int SnmpDeviceDriver::StartMasterAgent() {
  const int status = m_operations.Begin(DeviceOperation::StartMasterAgent);
  return status != 0 ? status : StartDaemon();
}

std::string SnmpDeviceDriver::GetSNMPVersion() {
  return m_version;
}

bool SnmpDeviceDriver::IsSNMPVersionValid(const std::string& version) {
  return m_versionValid && version == m_version;
}

void SnmpDeviceDriver::Log(const std::string& line) const {
  LogXMessage(kOperatorLevel, "SNMP device %lu: %s", m_driverId, line.c_str());
}

int SnmpDeviceDriver::Report(const std::string& action, int status) const {
  if (status != 0) {
    Log("cannot " + action + ": " + DescribeStatus(status) + " (status " + std::to_string(status) + ")");
  }
  return status;
}

std::string SnmpDeviceDriver::DescribeStatus(int status) const {
  return DescribeFileStatus(status);
}

void SnmpDeviceDriver::ReportMissingFolder(const std::string& folder) const {
  std::error_code error;
  if (!std::filesystem::is_directory(folder, error)) {
    Log("the folder " + folder + " is missing" + (error ? " (" + error.message() + ")" : std::string()) +
        "; make it, the device does not");
  }
}

void SnmpDeviceDriver::Leave() noexcept {
  // First out of the directory, so that an agent that starts meanwhile does not find a device that is going away.
  if (m_published) {
    m_published = false;
    ReportFailure(m_driverId, "cannot withdraw its interface",
                  [this] { GetInstanceManager().UnregisterQuery(ISupportSNMP_IID); });
  }
  ReportFailure(m_driverId, "the agent failed while it let the device go", [this] {
    if (m_agent.IsAnnounced()) {
      m_agent.Withdraw(m_driverId);
    }
  });
}

}  // namespace drivers
