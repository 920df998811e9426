#ifndef BENCH_LOADED_AGENT_H
#define BENCH_LOADED_AGENT_H

#include "host/H7XML.h"
#include "host/IDriver.h"
#include "host/IInstanceManager.h"

// Loads the agent's module as a host does, makes and initialises the agent, and lets it register its commands. Ends the
// program when that fails.
class LoadedAgent {
 public:
  // `host` and `config` outlive it.
  LoadedAgent(const char* module, IInstanceManager& host, H7XML::INode& config);
  ~LoadedAgent();
  LoadedAgent(const LoadedAgent&) = delete;
  LoadedAgent& operator=(const LoadedAgent&) = delete;

 private:
  void* m_handle;
  IDriver* m_driver;
};

#endif
