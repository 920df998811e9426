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
}

h7::auto_com<H7XML::INode> KeepingDeviceDriver::GetPersistState(unsigned long) {
  if (!m_tookStateBack) {
    return m_handedState;
  }
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

void KeepingDeviceDriver::NoteRead(const std::string& text) {
  m_copiedOut = true;
  if (m_state.known != text) {
    m_state.known = text;
    SettingsChanged();
  }
}

int KeepingDeviceDriver::ReadOffLine(std::string& config) {
  if (!m_state.pending && !m_state.known) {
    return kNoTextKnown;
  }
  config = m_state.pending ? m_state.pending->text : *m_state.known;
  m_copiedOut = true;
  return kAcceptedForLater;
}

int KeepingDeviceDriver::CheckWrite(const std::string& config) const {
  if (!m_copiedOut || !m_state.known) {
    return kFileWasChanged;
  }
  return config.size() > ConfigFile::kMaximumSize ? kTextTooLarge : 0;
}

int KeepingDeviceDriver::WriteOnLine(const std::string& config, const Replace& replace) {
  // A text made from a pending one goes into the same file as that one would have.
  const int status = replace(m_state.pending ? m_state.pending->base : *m_state.known, config);
  if (status == 0) {
    m_state.known = config;
  }
  if (status == 0 || status == kFileWasChanged) {
    m_state.pending.reset();
    SettingsChanged();
  }
  return status;
}

int KeepingDeviceDriver::WriteOffLine(const std::string& config) {
  const std::string base = m_state.pending ? m_state.pending->base : *m_state.known;
  m_state.pending = PendingText{config, base};
  SettingsChanged();
  return kAcceptedForLater;
}

int KeepingDeviceDriver::InstallPending(const std::string& path, const Replace& replace) {
  const std::string text = m_state.pending->text;
  const int status = WriteOnLine(text, replace);
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
