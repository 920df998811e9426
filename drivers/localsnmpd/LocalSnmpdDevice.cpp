#include "drivers/localsnmpd/LocalSnmpdDevice.h"

#include <thread>
#include <utility>

#include "drivers/common/FileStatus.h"
#include "drivers/common/SettingNames.h"
#include "drivers/localsnmpd/DaemonConfiguration.h"
#include "drivers/localsnmpd/DaemonStatus.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/ToString.h"
#include "host/UICmdDispatcher.h"

namespace drivers {

LocalSnmpdDevice::LocalSnmpdDevice(IInstanceManager& instanceManager) : SnmpDeviceDriver(instanceManager) {}

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

int LocalSnmpdDevice::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  if (persisted != nullptr && !m_file) {
    persisted->AddRef();
    m_handedState = h7::auto_com<H7XML::INode>(persisted);
  }
  return SnmpDeviceDriver::Initialize(driverId, config, persisted);
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
  return std::string();
}

void LocalSnmpdDevice::TakeStateBack() {
  if (!m_handedState) {
    return;
  }
  DeviceState state;
  const std::string wrong = ReadDeviceState(*m_handedState, state);
  const h7::auto_com<H7XML::INode> handed = std::move(m_handedState);
  if (!wrong.empty()) {
    // It may be all that is left of a text that waits, so the next state holds it.
    m_state.refused = H7XML::CreateXmlNode("refused", std::string());
    m_state.refused->AppendChild(*handed);
    Log("the saved state cannot be used: " + wrong +
        "; the settings of the project are used, and the state is kept in the next one, as the element refused");
    return;
  }
  Settings() = state.settings;
  m_state = state;
}

h7::auto_com<H7XML::INode> LocalSnmpdDevice::GetPersistState(unsigned long) {
  if (!m_file) {
    return m_handedState;
  }
  m_saidStateChanged = false;
  m_state.settings = Settings();
  return WriteDeviceState(m_state);
}

void LocalSnmpdDevice::SettingsChanged() {
  // Once is enough until the host asks for the state: a request of the tool sets a dozen settings.
  if (m_file && !m_saidStateChanged) {
    DmInvalidateState();
    m_saidStateChanged = true;
  }
}

std::string LocalSnmpdDevice::FilePath() const {
  return m_file ? m_file->GetPath() : std::string();
}

int LocalSnmpdDevice::ReadFile(std::string& config) {
  m_daemon->IsRunning();
  if (!m_state.online) {
    return ReadOffLine(config);
  }
  // Reading through a link is harmless, and the tool shall see the settings. Writing refuses it.
  const int status = m_file->Read(config, Links::Follow);
  if (status == 0) {
    m_copiedOut = true;
    if (m_state.known != config) {
      m_state.known = config;
      SettingsChanged();
    }
  }
  return ReportFile("read", status);
}

int LocalSnmpdDevice::ReadOffLine(std::string& config) {
  if (!m_state.pending && !m_state.known) {
    return ReportFile("read", kNoTextKnown);
  }
  config = m_state.pending ? m_state.pending->text : *m_state.known;
  m_copiedOut = true;
  return kAcceptedForLater;
}

int LocalSnmpdDevice::WriteFile(const std::string& config) {
  m_daemon->IsRunning();
  if (!m_copiedOut || !m_state.known) {
    return ReportFile("replace", kFileWasChanged);
  }
  if (config.size() > ConfigFile::kMaximumSize) {
    return ReportFile("replace", kTextTooLarge);
  }
  if (!m_state.online) {
    return WriteOffLine(config);
  }
  const int status = m_file->ReplaceExpected(*m_state.known, config);
  if (status != 0) {
    return ReportFile("replace", status);
  }
  m_state.known = config;
  SettingsChanged();
  return ApplyToDaemon(config);
}

int LocalSnmpdDevice::WriteOffLine(const std::string& config) {
  // A text made from a pending one goes into the same file as that one would have.
  const std::string base = m_state.pending ? m_state.pending->base : *m_state.known;
  m_state.pending = PendingText{config, base};
  SettingsChanged();
  return kAcceptedForLater;
}

int LocalSnmpdDevice::ApplyToDaemon(const std::string& config) {
  return m_daemon->IsRunning() ? m_daemon->Restart(config) : 0;
}

int LocalSnmpdDevice::StartOnLine() {
  if (m_daemon->IsRunning()) {
    return 0;
  }
  std::string config;
  const int status = m_file->Read(config, Links::Follow);
  return status != 0 ? ReportFile("read", status) : m_daemon->Start(config);
}

int LocalSnmpdDevice::StartDaemon() {
  return m_state.online ? StartOnLine() : Report("start the daemon", kControllerOffLine);
}

int LocalSnmpdDevice::StopDaemon() {
  return m_state.online ? m_daemon->Stop() : Report("stop the daemon", kControllerOffLine);
}

int LocalSnmpdDevice::Reboot() {
  if (!m_state.online) {
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
  if (m_state.online) {
    return std::string();
  }
  if (!m_state.pending) {
    m_state.online = true;
    SettingsChanged();
    return std::string();
  }
  const PendingText pending = *m_state.pending;
  int status = m_file->ReplaceExpected(pending.base, pending.text);
  if (status != 0 && status != kFileWasChanged) {
    ReportFile("install the text that was accepted off line in", status);
    return "the text that was accepted off line cannot be installed: " + DescribeDaemonStatus(status) +
           "; the device stays off line";
  }
  m_state.online = true;
  m_state.pending.reset();
  SettingsChanged();
  if (status == kFileWasChanged) {
    const std::string line = "the text that was accepted off line is dropped: somebody changed " + m_file->GetPath() +
                             " meanwhile; the settings stay, send them again";
    Log(line);
    return line;
  }
  m_state.known = pending.text;
  Log("the text that was accepted off line is in " + m_file->GetPath());
  status = ApplyToDaemon(pending.text);
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
  } else if (m_state.online) {
    m_state.online = false;
    SettingsChanged();
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
  reply->SetNamedString("online", h7::ToString(m_state.online));
  reply->SetNamedString("pending", h7::ToString(m_state.pending.has_value()));
  return reply;
}

}  // namespace drivers
