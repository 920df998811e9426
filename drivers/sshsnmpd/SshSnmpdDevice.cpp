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
  int status = IsPending() ? BringBack() : 0;
  if (status == 0) {
    status = m_controller->Read(config);
  }
  if (status == 0) {
    SetOnline(true);
    NoteRead(config);
    return 0;
  }
  // A text that waits and cannot be installed yet is what the next one is made from.
  if (status != kControllerOffLine && !IsPending()) {
    return ReportFile("read", status);
  }
  SetOnline(false);
  status = ReadOffLine(config);
  return status == kAcceptedForLater ? status : ReportFile("read", status);
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
  return status != 0 ? ReportFile("replace", status) : RestartDaemon();
}

KeepingDeviceDriver::Replace SshSnmpdDevice::Replacer() {
  return [this](const std::string& expected, const std::string& text) { return m_controller->Replace(expected, text); };
}

// Installs the text that waits. Returns 0 when none waits any more, and the controller can be reached.
int SshSnmpdDevice::BringBack() {
  const int status = InstallPending(m_controller->GetPath(), Replacer());
  if (status != 0 && status != kFileWasChanged) {
    return status;
  }
  SetOnline(true);
  if (status == 0 && RestartDaemon() == 0) {
    SetIsConfigDirty(false);
  }
  return 0;
}

int SshSnmpdDevice::RestartDaemon() {
  if (m_configuration.restart.empty()) {
    return 0;
  }
  const int status = RunCommand("restart the daemon", m_configuration.restart);
  // The file is in place, so this must not be taken for a file that is not.
  return status == kControllerOffLine ? kOutcomeUnknown : status;
}

int SshSnmpdDevice::RunCommand(const std::string& action, const Words& words) {
  const int status = m_controller->RunCommand(words);
  if (status == kControllerOffLine) {
    SetOnline(false);
  }
  return Report(action, status);
}

int SshSnmpdDevice::StartDaemon() {
  if (IsPending()) {
    BringBack();
  }
  return RunCommand("start the daemon", m_configuration.start);
}

int SshSnmpdDevice::StopDaemon() {
  return RunCommand("stop the daemon", m_configuration.stop);
}

int SshSnmpdDevice::Reboot() {
  if (IsPending()) {
    BringBack();
  }
  const int status = m_controller->RunCommand(m_configuration.reboot);
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
  return reply;
}

SshSnmpdDevice::Reply SshSnmpdDevice::OnConnect(const ICmdMessage&) {
  if (!m_controller) {
    return H7XML::CreateXmlNode("Fail", kInvalid);
  }
  int status = 0;
  if (IsPending()) {
    status = BringBack();
  } else {
    std::string unused;
    status = m_controller->Read(unused);
    SetOnline(status != kControllerOffLine);
  }
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
