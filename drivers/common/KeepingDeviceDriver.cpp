#include "drivers/common/KeepingDeviceDriver.h"

#include <utility>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "drivers/common/OffLineStatus.h"
#include "host/H7XML.h"

namespace drivers {

KeepingDeviceDriver::KeepingDeviceDriver(IInstanceManager& instanceManager, const char* kind)
    : SnmpDeviceDriver(instanceManager), m_kind(kind) {}

int KeepingDeviceDriver::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  if (persisted != nullptr && !m_tookStateBack) {
    persisted->AddRef();
    m_handedState = h7::auto_com<H7XML::INode>(persisted);
  }
  return SnmpDeviceDriver::Initialize(driverId, config, persisted);
}

void KeepingDeviceDriver::TakeStateBack() {
  m_tookStateBack = true;
  if (!m_handedState) {
    return;
  }
  DeviceState state;
  const std::string wrong = ReadDeviceState(m_kind, *m_handedState, state);
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
  if (IsPending()) {
    SettingsChanged();  // a host that keeps this life asks for its state
  }
}

h7::auto_com<H7XML::INode> KeepingDeviceDriver::GetPersistState(unsigned long) {
  if (!m_tookStateBack) {
    return m_handedState;
  }
  m_isKept = true;
  m_saidStateChanged = false;
  m_state.settings = Settings();
  return WriteDeviceState(m_kind, m_state);
}

void KeepingDeviceDriver::SettingsChanged() {
  // Once is enough until the host asks for the state: a request of the tool sets a dozen settings.
  if (m_tookStateBack && !m_saidStateChanged) {
    DmInvalidateState();
    m_saidStateChanged = true;
  }
}

void KeepingDeviceDriver::SetOnline(bool online) {
  if (m_state.online != online) {
    m_state.online = online;
    SettingsChanged();
  }
}

void KeepingDeviceDriver::NoteRestarted() {
  if (m_state.isRestartDue) {
    m_state.isRestartDue = false;
    SettingsChanged();
  }
}

void KeepingDeviceDriver::NoteRead(const std::string& text) {
  m_copiedOut = true;
  m_gavePending = false;
  if (m_state.known != text) {
    m_state.known = text;
    SettingsChanged();
  }
}

void KeepingDeviceDriver::NoteReadWhilePending(const std::string& text, const std::string& path) {
  if (text != m_state.pending->text && text == m_state.pending->base) {
    if (!m_saidWaiting) {
      Log("the text that was accepted off line waits: the next change, or start of the daemon, replaces " + path);
      m_saidWaiting = true;
    }
    return;
  }
  const bool isInstalled = text == m_state.pending->text;
  m_state.pending.reset();
  // A host may have ended between the file and the restart.
  m_state.isRestartDue = m_state.isRestartDue || isInstalled;
  SettingsChanged();
  Log(isInstalled ? "the text that was accepted off line is in " + path : DescribeDropped(path));
}

int KeepingDeviceDriver::ReadOffLine(std::string& config) {
  if (!m_state.pending && !m_state.known) {
    return kNoTextKnown;
  }
  config = m_state.pending ? m_state.pending->text : *m_state.known;
  m_copiedOut = true;
  m_gavePending = IsPending();
  return kAcceptedForLater;
}

int KeepingDeviceDriver::CheckWrite(const std::string& config) const {
  if (!m_copiedOut || !m_state.known) {
    return kFileWasChanged;
  }
  return config.size() > ConfigFile::kMaximumSize ? kTextTooLarge : 0;
}

const std::string& KeepingDeviceDriver::Base() const {
  // A text made from a pending one goes into the same file as that one would have.
  return m_state.pending && m_gavePending ? m_state.pending->base : *m_state.known;
}

int KeepingDeviceDriver::WriteOnLine(const std::string& config, const Replace& replace) {
  return ReplaceWith(config, Base(), replace);
}

int KeepingDeviceDriver::ReplaceWith(const std::string& config, const std::string& expected, const Replace& replace) {
  const bool wasRestartDue = m_state.isRestartDue;
  // A host that fetches the state while the file is being replaced must find the mark in it.
  m_state.isRestartDue = true;
  SettingsChanged();
  const int status = replace(expected, config);
  if (status == 0) {
    m_state.known = config;
  } else {
    m_state.isRestartDue = wasRestartDue;
  }
  if (status == 0 || status == kFileWasChanged) {
    m_state.pending.reset();
  }
  SettingsChanged();
  return status;
}

int KeepingDeviceDriver::WriteOffLine(const std::string& config) {
  m_state.pending = PendingText{config, Base()};
  m_gavePending = true;
  m_acceptedForLater = true;
  SettingsChanged();
  return kAcceptedForLater;
}

int KeepingDeviceDriver::InstallPending(const std::string& path, const Replace& replace) {
  const PendingText pending = *m_state.pending;
  const int status = ReplaceWith(pending.text, pending.base, replace);
  if (status == 0) {
    Log("the text that was accepted off line is in " + path);
  } else if (status == kFileWasChanged) {
    Log(DescribeDropped(path));
  } else if (status != kControllerOffLine) {
    Report("install the text that was accepted off line in " + path, status);
  }
  return status;
}

std::string KeepingDeviceDriver::DescribeDropped(const std::string& path) {
  return "the text that was accepted off line is dropped: somebody changed " + path +
         " meanwhile; the settings stay, send them again";
}

}  // namespace drivers
