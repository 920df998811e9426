#ifndef FUZZ_AGENT_TWINS_H
#define FUZZ_AGENT_TWINS_H

#include <vector>

#include "fuzz/agent/World.h"

namespace fuzz {

// The agent and the reference side by side. Plays everything to both, and ends the run when they differ in anything that can
// be seen, or when something is left behind.
class Twins {
 public:
  Twins();

  void Play(const Operation& operation, const std::vector<Plan>& plans = {});
  // Makes and initialises both with `state` (without a state when it is empty), and lets them register their commands.
  void Start(const std::string& state = "");

 private:
  // This order lets lines of the log reach the agent's host first.
  World m_reference;
  World m_agent;
};

}  // namespace fuzz

#endif
