#ifndef FUZZ_AGENT_TWINS_H
#define FUZZ_AGENT_TWINS_H

#include <vector>

#include "fuzz/agent/World.h"

namespace fuzz {

// The agent and the reference, side by side: what is played is played to both, and the run ends when anything that can be
// seen differs, or when something is left behind.
class Twins {
 public:
  Twins();

  void Play(const Operation& operation, const std::vector<Plan>& plans = {});
  // Made, initialised with `state` (none when empty), with its commands registered.
  void Start(const std::string& state = "");

 private:
  // In this order, so that the agent's host is the one that lines of the log reach first.
  World m_reference;
  World m_agent;
};

}  // namespace fuzz

#endif
