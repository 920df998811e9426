#include "drivers/localsnmpd/LocalSnmpdDevice.h"

#include <thread>

#include "drivers/common/FileStatus.h"
#include "drivers/common/OffLineStatus.h"
#include "drivers/common/SettingNames.h"
#include "drivers/localsnmpd/DaemonConfiguration.h"
#include "drivers/localsnmpd/DaemonStatus.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/ToString.h"
#include "host/UICmdDispatcher.h"

namespace drivers {

LocalSnmpdDevice::LocalSnmpdDevice(IInstanceManager& instanceManager) : KeepingDeviceDriver(instanceManager, "LocalSnmpd") {}

LocalSnmpdDevice::~LocalSnmpdDevice() {
  Leave();
  try {
    if (m_daemon) {
      m_daemon->Stop();
    }
  } catch (...) {
    // There is no memory for its messages: it is killed with its object.
    m_daemon.reset();
  }
}

IDriver* LocalSnmpdDevice::Create(IInstanceManager& instanceManager) {
  return new LocalSnmpdDevice(instanceManager);
}

std::string LocalSnmpdDevice::Prepare(const DeviceConfiguration& configuration, const H7XML::INode& config) {
  DaemonConfiguration daemon;
  std::string wrong = ReadDaemonConfiguration(config, daemon);
  if (!wrong.empty()) {
    return wrong;
  }
  if (daemon.port == 0) {
    m_port.emplace();
    daemon.port = m_port->GetPort();
  }
  if (daemon.port == 0) {
    return "no UDP port of 127.0.0.1 is free; give one with port";
  }
  ReportMissingFolder(configuration.folder);
  m_rebootPause = daemon.rebootPause;
  m_daemon.emplace(Daemon::Options{configuration.folder, daemon.program, daemon.port, daemon.startDeadline},
                   [this](const std::string& line) { Log(line); });
  m_file.emplace(configuration.folder);
  TakeStateBack();
  // The daemon of the last life ended with it.
  NoteRestarted();
  return std::string();
}

std::string LocalSnmpdDevice::FilePath() const {
  return m_file ? m_file->GetPath() : std::string();
}

int LocalSnmpdDevice::ReadFile(std::string& config) {
  m_daemon->IsRunning();
  if (!IsOnline()) {
    const int status = ReadOffLine(config);
    return status == kAcceptedForLater ? status : ReportFile("read", status);
  }
  // Reading through a link is harmless, and the tool shall see the settings. Writing refuses it.
  const int status = m_file->Read(config, Links::Follow);
  if (status == 0) {
    NoteRead(config);
  }
  return ReportFile("read", status);
}

int LocalSnmpdDevice::WriteFile(const std::string& config) {
  m_daemon->IsRunning();
  int status = CheckWrite(config);
  if (status == 0 && !IsOnline()) {
    return WriteOffLine(config);
  }
  if (status == 0) {
    status = WriteOnLine(config, Replacer());
  }
  return status != 0 ? ReportFile("replace", status) : ApplyToDaemon(config);
}

KeepingDeviceDriver::Replace LocalSnmpdDevice::Replacer() const {
  return [this](const std::string& expected, const std::string& text) { return m_file->ReplaceExpected(expected, text); };
}

int LocalSnmpdDevice::ApplyToDaemon(const std::string& config) {
  const int status = m_daemon->IsRunning() ? m_daemon->Restart(config) : 0;
  if (status == 0) {
    NoteRestarted();
  }
  return status;
}

int LocalSnmpdDevice::StartOnLine() {
  const bool isRunning = m_daemon->IsRunning();
  // One that runs may serve what the file held before, since a restart can fail before the daemon is stopped.
  if (isRunning && !IsRestartDue()) {
    return 0;
  }
  std::string config;
  int status = m_file->Read(config, Links::Follow);
  if (status != 0) {
    return ReportFile("read", status);
  }
  status = isRunning ? m_daemon->Restart(config) : m_daemon->Start(config);
  if (status == 0) {
    NoteRestarted();
  }
  return status;
}

int LocalSnmpdDevice::StartDaemon() {
  return IsOnline() ? StartOnLine() : Report("start the daemon", kControllerOffLine);
}

int LocalSnmpdDevice::StopDaemon() {
  return IsOnline() ? m_daemon->Stop() : Report("stop the daemon", kControllerOffLine);
}

int LocalSnmpdDevice::Reboot() {
  if (!IsOnline()) {
    return Report("reboot the controller", kControllerOffLine);
  }
  const bool wasRunning = m_daemon->IsRunning();
  const int stopped = m_daemon->Stop();
  if (stopped != 0) {
    return stopped;
  }
  std::this_thread::sleep_for(m_rebootPause);
  return wasRunning ? StartOnLine() : 0;
}

// Returns what is wrong; or nothing, when the controller is on line and the pending text is in its file and, if the daemon
// runs, in use.
std::string LocalSnmpdDevice::ComeOnLine() {
  m_daemon->IsRunning();
  if (!IsPending()) {
    SetOnline(true);
    return std::string();
  }
  int status = InstallPending(m_file->GetPath(), Replacer());
  if (status != 0 && status != kFileWasChanged) {
    return "the text that was accepted off line cannot be installed: " + DescribeDaemonStatus(status) +
           "; the device stays off line";
  }
  SetOnline(true);
  if (status == kFileWasChanged) {
    return DescribeDropped(m_file->GetPath());
  }
  status = ApplyToDaemon(KnownText());
  if (status != 0) {
    return "the text that was accepted off line is in the file, but " + DescribeDaemonStatus(status);
  }
  SetIsConfigDirty(false);
  return std::string();
}

int LocalSnmpdDevice::ReportFile(const std::string& action, int status) const {
  return Report(action + " " + m_file->GetPath(), status);
}

std::string LocalSnmpdDevice::DescribeStatus(int status) const {
  return DescribeDaemonStatus(status);
}

void LocalSnmpdDevice::RegisterCommands() {
  SnmpDeviceDriver::RegisterCommands();
  GetUICmdDispatcher().RegisterUICmd("SetOnline", [this](const ICmdMessage& message) { return OnSetOnline(message); });
  GetUICmdDispatcher().RegisterUICmd("GetDaemon", [this](const ICmdMessage& message) { return OnGetDaemon(message); });
}

LocalSnmpdDevice::Reply LocalSnmpdDevice::OnSetOnline(const ICmdMessage& message) {
  bool online = false;
  std::string wrong;
  if (!m_file) {
    wrong = "the configuration of the device is invalid; see the log";
  } else if (!message.Has("online") || !ReadSwitch(message.GetString("online"), online)) {
    wrong = "online is \"" + message.GetString("online") + "\"; allowed are true and false";
  } else if (online) {
    wrong = ComeOnLine();
  } else {
    SetOnline(false);
  }
  return H7XML::CreateXmlNode(wrong.empty() ? "Success" : "Fail", wrong);
}

LocalSnmpdDevice::Reply LocalSnmpdDevice::OnGetDaemon(const ICmdMessage&) {
  if (!m_daemon) {
    return H7XML::CreateXmlNode("Fail", "the configuration of the device is invalid; see the log");
  }
  const pid_t pid = m_daemon->GetPid();
  const Reply reply = H7XML::CreateXmlNode("daemon", std::string());
  reply->SetNamedString("running", h7::ToString(pid != 0));
  reply->SetNamedULong("pid", static_cast<unsigned long>(pid));
  reply->SetNamedString("address", m_daemon->GetAddress());
  reply->SetNamedString("online", h7::ToString(IsOnline()));
  reply->SetNamedString("pending", h7::ToString(IsPending()));
  return reply;
}

}  // namespace drivers
