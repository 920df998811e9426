#ifndef DEVHOST_PREVIEW_DEVICE_LIFE_H
#define DEVHOST_PREVIEW_DEVICE_LIFE_H

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "devhost/driver/DriverEntry.h"
#include "devhost/engine/Host.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/secrets/Masker.h"

namespace devhost {

class StateStore;

// One life of a device's driver, for all that an operation does with the device: the device is asked, perhaps changed, and
// asked again. A driver that keeps a connection makes one for all of that.
//
// Before LetAgentIn, nobody in the host can change the device: a stand-in has the agent's place. Before SetDeviceState, the
// driver is not asked for its state. A life begins with the first question. It is over when a HostError comes out or the
// device does not answer; the next question then begins another one.
//
// A host that has the driver anyway is a life of its own kind, which began before and goes on: see
// devhost/session/LiveLife.h.
class DeviceLife : private HostObserver {
 public:
  DeviceLife(DriverEntry agent, DriverEntry device);
  // Destroys the driver, which is not asked for its state.
  ~DeviceLife() override;
  DeviceLife(const DeviceLife&) = delete;
  DeviceLife& operator=(const DeviceLife&) = delete;

  // What a device has answered to CopyFrom.
  struct File {
    int copyStatus = 0;
    std::string text;
  };

  // Asks the device for its settings before its file was read, unless a life has begun with that state. Without this, the
  // next question does not tell LearnsFromFile. What goes wrong goes wrong again there.
  virtual void AskUnread(const std::string& state);
  // Asks the device for everything that the agent asks before it writes the file. `state` is what is kept for the device, as
  // XML, or "": a life that has begun with another one is over, because somebody has changed the device meanwhile.
  virtual DeviceAnswers Ask(const std::string& state);
  // The same, but CopyFrom is not called: `file` is in the answers as the device's answer to it.
  virtual DeviceAnswers AskSettings(const std::string& state, const File& file);

  // What the agent has read of the device's file since it was let in.
  enum class AgentRead {
    Expected,
    Other,   // another text, at least once: the agent did not get it
    Nothing  // it has not asked for the file, or the device could not read it now
  };
  // Lets the agent take the stand-in's place and list its devices, as for a tool that begins to work. From now on it gets
  // the device's file only where that is `expected`, and as `edit` has changed it, unless that is empty; else its copy
  // fails. Called after a question.
  virtual AgentRead LetAgentIn(const std::string& expected, const std::function<void(std::string&)>& edit);
  // Sends "SetDeviceState" to the agent and returns its reply. From now on the device's state goes to `states`, which
  // outlives the life or is null. Throws HostError when the agent has met another file than was expected: it has written
  // nothing then, and the state is not kept. Called after LetAgentIn.
  virtual std::string SetDeviceState(const std::string& settings, StateStore* states);
  // Asks the device for its file alone, after LetAgentIn. Nothing where it does not answer, or was announced to the agent
  // only.
  virtual std::optional<File> LookAtFile();
  // Ends the life. Where the device's state is to be kept, it is asked for it.
  virtual void End();

  // Whether a life has begun with that state, and the agent is not in.
  virtual bool HasBegunWith(const std::string& state) const;
  // Whether reading its file has changed the settings that the driver answered, as far as AskUnread has shown. It then has
  // to read the file before its settings say anything.
  bool LearnsFromFile() const { return m_learnsFromFile; }
  // The host of the device, for one inside its life; null when no life has begun.
  virtual Host* GetHost() { return m_host ? &*m_host : nullptr; }

  // For what is shown of the device: it knows all secrets that were learnt of it before. With `showSecrets`, one that shows
  // them.
  Masker& GetMasker(bool showSecrets) { return showSecrets ? m_open : m_masker; }

  // Something that may be of interest when a question or a change fails.
  struct Heard {
    Occurrence::Kind kind;
    std::string line;  // with the driver's name in front
  };
  // What was heard since the life began, each line once; still there when the life is over. It has the statuses that the
  // agent has got, not those that are answers to questions.
  std::vector<Heard> GetHeard() const;
  // Whether a driver has failed or broken a rule while it was loaded, or since the last question was asked.
  bool HasFailed() const;

 protected:
  // Notes what is of interest when a question or a change fails.
  void OnOccurrence(const Occurrence& occurrence) override;
  // A question begins: what failed before says nothing about its answer.
  void ForgetFailure();
  // From now on, the agents of `host` get the device's file as LetAgentIn says. The host forgets that before this life ends.
  void GuardCopies(Host& host, const std::string& expected, const std::function<void(std::string&)>& edit);
  // Since GuardCopies.
  AgentRead WhatAgentRead() const { return m_agentRead; }
  // Returns the reply of "SetDeviceState". Throws HostError for one of an agent that has met another file.
  std::string CheckedReply(std::string reply) const;

 private:
  class States;

  void Begin(const std::string& state);
  DeviceAnswers Put(const char* question);
  DeviceAnswers DropOnProblem(DeviceAnswers answers);
  void ListDevices(const std::string& expected, const std::function<void(std::string&)>& edit);
  void LoadAgentFirst();
  void UnloadDevice();
  void Drop();
  template <class Action>
  auto DropOnError(Action action);

  const DriverEntry m_agent;
  const DriverEntry m_device;
  DriverEntry m_standIn;
  const std::unique_ptr<States> m_states;
  std::optional<Host> m_host;
  DeviceAnswers m_answers;  // where the stand-in puts them
  std::optional<DeviceAnswers> m_unread;
  Masker m_masker{false};
  Masker m_open{true};
  bool m_hasAgent = false;
  bool m_isAsking = false;
  bool m_hasStandIn = false;
  bool m_hasAgentAsked = false;  // for the file, since GuardCopies
  AgentRead m_agentRead = AgentRead::Nothing;
  bool m_learnsFromFile = false;
  bool m_failedToLoad = false;
  bool m_failed = false;
  mutable std::mutex m_mutex;  // drivers have threads, too
  std::vector<Heard> m_heard;
};

}  // namespace devhost

#endif
