#ifndef BENCH_BENCH_HOST_H
#define BENCH_BENCH_HOST_H

#include <stdexcept>
#include <vector>

#include "devhost/driver/DriverServices.h"
#include "devhost/driver/VariableManager.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/UICmdDispatcher.h"

// The smallest host that an agent can run with: it has real XML and real variables, and ignores what the agent sends.
class BenchHost final : public devhost::DriverServices,
                        public IInstanceManager,
                        public IDriverManager,
                        public UICmdDispatcher {
 public:
  devhost::VariableManager variables;

  void BaseConstructed(H7BaseDriver&, DriverMultiplicity) override {}
  void BaseInitialized(unsigned long) override {}
  void BaseDestroyed() noexcept override {}
  IInstanceManager& GetInstanceManager() override { return *this; }
  IDriverManager& GetDriverManager() override { return *this; }
  IVariableManager* GetVariableManager() override { return &variables; }
  UICmdDispatcher& GetUICmdDispatcher() override { return *this; }
  void RegisterListener(ISystemEventCallback&, unsigned int, unsigned long) override {}
  void UnregisterListener(ISystemEventCallback&, unsigned int, unsigned long) override {}
  void SendDataToUI(const H7XML::INode&) override {}
  void InvalidateState() override {}

  bool RegisterQuery(const char*, void*) override { return true; }
  void UnregisterQuery(const char*) override {}
  // Only the driver's base calls this, once, for the services.
  void* Query(const char*) override { return static_cast<devhost::DriverServices*>(this); }
  void FindDrivers(unsigned long, const char*, std::vector<void*>& instances) override { instances.clear(); }
  void RegisterUICmd(const std::string&, boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>) override {}
};

#endif
