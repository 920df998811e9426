#ifndef AGENT_QUIETLY_H
#define AGENT_QUIETLY_H

// Runs one step of a clean-up and drops what it throws, so that the next steps still run and a destructor never ends the
// host's process.
template <class Step>
void Quietly(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

#endif
