#include "devhost/session/LiveLife.h"

#include <utility>

#include "devhost/engine/HostError.h"

namespace devhost {

LiveLife::LiveLife(LiveHost& host, unsigned long deviceId, OnStep onStep)
    : DeviceLife(host.RequireAgent(), *host.Driver(deviceId)),
      m_host(host),
      m_deviceId(deviceId),
      m_onStep(std::move(onStep)) {
  m_host.Listen([this](const Occurrence& occurrence) {
    const bool isOthers = occurrence.driverId != m_deviceId && occurrence.driverId != m_host.Agent()->id;
    if (!isOthers || occurrence.driverName.empty()) {
      OnOccurrence(occurrence);
    }
  });
}

LiveLife::~LiveLife() {
  m_host.Get().EditCopies(nullptr);
  m_host.Listen(nullptr);
}

DeviceAnswers LiveLife::Ask(const std::string&) {
  ForgetFailure();
  m_host.Get().EditCopies(nullptr);  // whoever asks gets the file as it is
  if (m_isSet) {
    Say("look", "begun");
  }
  DeviceAnswers answers = m_host.Ask(m_deviceId);
  if (m_isSet) {
    Say("look", answers.problem.empty() ? "done" : "failed");
  }
  return answers;
}

DeviceAnswers LiveLife::AskSettings(const std::string& state, const File& file) {
  DeviceAnswers answers = Ask(state);
  answers.copyStatus = file.copyStatus;
  answers.file = file.text;
  return answers;
}

DeviceLife::AgentRead LiveLife::LetAgentIn(const std::string& expected, const std::function<void(std::string&)>& edit) {
  if (edit) {
    throw HostError("the text below the section cannot be changed in a session");
  }
  GuardCopies(m_host.Get(), expected, nullptr);
  m_host.ListDevices();
  return WhatAgentRead();
}

std::string LiveLife::SetDeviceState(const std::string& settings, StateStore*) {
  Say("snapshot", "done");
  Say("set", "begun");
  m_isSet = true;
  try {
    const std::string reply = CheckedReply(m_host.Get().Command(m_host.Agent()->id, "SetDeviceState", {{"xml", settings}}));
    Say("set", reply == "<Success/>" ? "done" : "failed");
    return reply;
  } catch (const HostError&) {
    Say("set", "failed");
    throw;
  }
}

void LiveLife::Say(const char* step, const char* state) const {
  if (m_onStep) {
    m_onStep(step, state);
  }
}

}  // namespace devhost
