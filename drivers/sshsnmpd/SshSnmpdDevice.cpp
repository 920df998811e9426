#include "drivers/sshsnmpd/SshSnmpdDevice.h"

#include "drivers/common/FileStatus.h"
#include "drivers/common/OffLineStatus.h"
#include "drivers/sshsnmpd/SshStatus.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/ToString.h"
#include "host/UICmdDispatcher.h"

namespace drivers {

namespace {

const char kInvalid[] = "the configuration of the device is invalid; see the log";

const char* NameOf(SshConnection::HostKey state) {
  return state == SshConnection::HostKey::Known ? "known" : state == SshConnection::HostKey::Unknown ? "unknown" : "differs";
}

}  // namespace

SshSnmpdDevice::SshSnmpdDevice(IInstanceManager& instanceManager) : KeepingDeviceDriver(instanceManager, "SshSnmpd") {}

SshSnmpdDevice::~SshSnmpdDevice() {
  Leave();
}

IDriver* SshSnmpdDevice::Create(IInstanceManager& instanceManager) {
  return new SshSnmpdDevice(instanceManager);
}

std::string SshSnmpdDevice::Prepare(const DeviceConfiguration&, const H7XML::INode& config) {
  const std::string wrong = ReadSshConfiguration(config, m_configuration);
  if (wrong.empty()) {
    m_controller.emplace(m_configuration, [this](const std::string& line) { Log(line); });
    TakeStateBack();
  }
  return wrong;
}

std::string SshSnmpdDevice::FilePath() const {
  return std::string();
}

int SshSnmpdDevice::ReadFile(std::string& config) {
  // Reading alone does not restart a daemon: many look at a device, and few want to change it.
  int status = IsPending() && MayInstallOnRead() ? CatchUp() : 0;
  if (!IsPending() || status != kControllerOffLine) {
    status = m_controller->Read(config);
  }
  if (status == kControllerOffLine) {
    SetOnline(false);
    status = ReadOffLine(config);
    return status == kAcceptedForLater ? status : ReportFile("read", status);
  }
  if (status != 0) {
    return ReportFile("read", status);
  }
  // What the controller holds is what a change is made from, also while a text waits: it is what everybody else sees.
  if (IsPending()) {
    NoteReadWhilePending(config, m_controller->GetPath());
  }
  NoteRead(config);
  if (!IsPending()) {
    SetOnline(true);
  }
  return 0;
}

int SshSnmpdDevice::WriteFile(const std::string& config) {
  int status = CheckWrite(config);
  if (status == 0) {
    status = WriteOnLine(config, Replacer());
  }
  if (status == kControllerOffLine) {
    SetOnline(false);
    return WriteOffLine(config);
  }
  if (!IsPending()) {
    SetOnline(true);
  }
  if (status != 0) {
    return ReportFile("replace", status);
  }
  status = RestartDaemon();
  // The file is in place, so this must not be taken for a file that is not.
  return status == kControllerOffLine ? kOutcomeUnknown : status;
}

KeepingDeviceDriver::Replace SshSnmpdDevice::Replacer() {
  return [this](const std::string& expected, const std::string& text) { return m_controller->Replace(expected, text); };
}

// Installs the text that waits, and makes up for the restart that is due. Returns why one of them is not done, or 0.
int SshSnmpdDevice::CatchUp() {
  int installed = 0;
  if (IsPending()) {
    installed = InstallPending(m_controller->GetPath(), Replacer());
    if (IsPending()) {
      return installed;
    }
    SetOnline(true);
  }
  if (!IsRestartDue()) {
    return 0;
  }
  const int status = RestartDaemon();
  if (status == 0 && installed == 0) {
    SetIsConfigDirty(false);
  }
  return status;
}

int SshSnmpdDevice::RestartDaemon() {
  const int status = m_configuration.restart.empty() ? 0 : RunCommand("restart the daemon", m_configuration.restart);
  if (status == 0) {
    NoteRestarted();
  }
  return status;
}

int SshSnmpdDevice::RunCommand(const std::string& action, const Words& words) {
  const int status = m_controller->RunCommand(words);
  if (status == kControllerOffLine) {
    SetOnline(false);
  }
  return Report(action, status);
}

int SshSnmpdDevice::StartDaemon() {
  const int status = CatchUp();
  // The start would leave a daemon that runs as it is.
  return IsRestartDue() && !IsPending() ? status : RunCommand("start the daemon", m_configuration.start);
}

int SshSnmpdDevice::StopDaemon() {
  return RunCommand("stop the daemon", m_configuration.stop);
}

int SshSnmpdDevice::Reboot() {
  if (IsPending()) {
    CatchUp();
  }
  const int status = m_controller->RunCommand(m_configuration.reboot);
  if (status == 0) {
    NoteRestarted();
  }
  // A controller that goes down does not stay to report it.
  return status == kOutcomeUnknown ? 0 : Report("reboot the controller", status);
}

int SshSnmpdDevice::ReportFile(const std::string& action, int status) const {
  return Report(action + " " + m_controller->GetPath() + " of " + m_controller->GetAddress(), status);
}

std::string SshSnmpdDevice::DescribeStatus(int status) const {
  return DescribeSshStatus(status);
}

void SshSnmpdDevice::RegisterCommands() {
  KeepingDeviceDriver::RegisterCommands();
  UICmdDispatcher& dispatcher = GetUICmdDispatcher();
  dispatcher.RegisterUICmd("GetController", [this](const ICmdMessage& message) { return OnGetController(message); });
  dispatcher.RegisterUICmd("Connect", [this](const ICmdMessage& message) { return OnConnect(message); });
  dispatcher.RegisterUICmd("GetHostKey", [this](const ICmdMessage& message) { return OnGetHostKey(message); });
  dispatcher.RegisterUICmd("TrustHostKey", [this](const ICmdMessage& message) { return OnTrustHostKey(message); });
}

SshSnmpdDevice::Reply SshSnmpdDevice::OnGetController(const ICmdMessage&) {
  if (!m_controller) {
    return H7XML::CreateXmlNode("Fail", kInvalid);
  }
  const Reply reply = H7XML::CreateXmlNode("controller", std::string());
  reply->SetNamedString("address", m_controller->GetAddress());
  reply->SetNamedString("online", h7::ToString(IsOnline()));
  reply->SetNamedString("pending", h7::ToString(IsPending()));
  reply->SetNamedString("restartDue", h7::ToString(IsRestartDue()));
  return reply;
}

SshSnmpdDevice::Reply SshSnmpdDevice::OnConnect(const ICmdMessage&) {
  if (!m_controller) {
    return H7XML::CreateXmlNode("Fail", kInvalid);
  }
  int status = 0;
  if (!IsPending()) {
    std::string unused;
    status = m_controller->Read(unused);
    SetOnline(status != kControllerOffLine);
  }
  status = status == 0 ? CatchUp() : status;
  return H7XML::CreateXmlNode(status == 0 ? "Success" : "Fail", status == 0 ? std::string() : DescribeSshStatus(status));
}

SshSnmpdDevice::Reply SshSnmpdDevice::OnGetHostKey(const ICmdMessage&) {
  Controller::HostKey hostKey;
  const int status = m_controller ? m_controller->AskHostKey(hostKey) : 0;
  if (!m_controller || status != 0) {
    return H7XML::CreateXmlNode("Fail", m_controller ? DescribeSshStatus(status) : kInvalid);
  }
  const Reply reply = H7XML::CreateXmlNode("hostKey", std::string());
  reply->SetNamedString("address", m_controller->GetAddress());
  reply->SetNamedString("knownHosts", m_configuration.server.knownHosts);
  reply->SetNamedString("type", hostKey.type);
  reply->SetNamedString("fingerprint", hostKey.fingerprint);
  reply->SetNamedString("state", NameOf(hostKey.state));
  return reply;
}

SshSnmpdDevice::Reply SshSnmpdDevice::OnTrustHostKey(const ICmdMessage& message) {
  if (!m_controller) {
    return H7XML::CreateXmlNode("Fail", kInvalid);
  }
  const std::string fingerprint = message.Has("fingerprint") ? message.GetString("fingerprint") : std::string();
  if (fingerprint.empty()) {
    return H7XML::CreateXmlNode("Fail", "the parameter fingerprint is missing; needed: fingerprint");
  }
  const int status = m_controller->TrustHostKey(fingerprint);
  return H7XML::CreateXmlNode(status == 0 ? "Success" : "Fail", status == 0 ? std::string() : DescribeSshStatus(status));
}

}  // namespace drivers
