#ifndef DEVHOST_SESSION_LIVE_LIFE_H
#define DEVHOST_SESSION_LIVE_LIFE_H

#include <functional>
#include <optional>
#include <string>

#include "devhost/preview/DeviceLife.h"
#include "devhost/session/LiveHost.h"

namespace devhost {

// The life of a device in the host of a session, as operations see it: it began with the session, and goes on. The device is
// asked by the session's own driver, and changed by the project's own agent, which is in all the time. Its state is kept by
// the session's host. One at a time; the host outlives it.
class LiveLife : public DeviceLife {
 public:
  // Hears that a step of a change begins, is done or has failed.
  using OnStep = std::function<void(const char* step, const char* state)>;
  LiveLife(LiveHost& host, unsigned long deviceId, OnStep onStep = nullptr);
  ~LiveLife() override;

  void AskUnread(const std::string&) override {}
  DeviceAnswers Ask(const std::string& state) override;
  DeviceAnswers AskSettings(const std::string& state, const File& file) override;
  // Throws HostError for an edit: it would go through the files of all devices, which the agent lists.
  AgentRead LetAgentIn(const std::string& expected, const std::function<void(std::string&)>& edit) override;
  std::string SetDeviceState(const std::string& settings, StateStore* states) override;
  // Nothing: the next question asks for it.
  std::optional<File> LookAtFile() override { return std::nullopt; }
  void End() override {}
  // Never: each question is asked anew.
  bool HasBegunWith(const std::string&) const override { return false; }
  Host* GetHost() override { return &m_host.Get(); }

 private:
  void Say(const char* step, const char* state) const;

  LiveHost& m_host;
  const unsigned long m_deviceId;
  const OnStep m_onStep;
  bool m_isSet = false;
};

}  // namespace devhost

#endif
