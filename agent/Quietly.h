#ifndef AGENT_QUIETLY_H
#define AGENT_QUIETLY_H

// For one step of a clean-up: runs `step` and drops what it throws, so that the steps after it still happen and a destructor
// never ends the host's process.
template <class Step>
void Quietly(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

#endif
