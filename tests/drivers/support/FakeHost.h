#ifndef TESTS_DRIVERS_SUPPORT_FAKE_HOST_H
#define TESTS_DRIVERS_SUPPORT_FAKE_HOST_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "devhost/driver/DriverServices.h"
#include "devhost/driver/LogSink.h"
#include "host/ICmdMessage.h"
#include "host/UICmdDispatcher.h"
#include "host/auto_com.h"
#include "tests/drivers/support/FakeAgent.h"

// A host for one driver: its instance manager, its dispatcher, and what stands behind its base. Keeps the log.
class FakeHost : private devhost::DriverServices, private devhost::LogSink {
 public:
  FakeHost();
  ~FakeHost() override;
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;

  FakeInstanceManager& Instances() { return m_instances; }
  UICmdDispatcher& Dispatcher() { return m_dispatcher; }
  const std::vector<std::string>& CommandNames() const { return m_dispatcher.names; }
  // The reply to a registered command, as text (see ToText).
  std::string Command(const std::string& name, const std::map<std::string, std::string>& parameters = {});

  DriverMultiplicity multiplicity = DriverMultiplicity_Single;
  std::vector<unsigned long> initialized;  // the ids that the base was initialised with
  std::vector<std::string> log;            // "level: line"
  int invalidations = 0;

 private:
  struct Dispatcher final : UICmdDispatcher {
    void RegisterUICmd(const std::string& name,
                       boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)> handler) override;
    std::vector<std::string> names;
    std::map<std::string, boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>> handlers;
  };

  void BaseConstructed(H7BaseDriver&, DriverMultiplicity given) override { multiplicity = given; }
  void BaseInitialized(unsigned long driverId) override { initialized.push_back(driverId); }
  void BaseDestroyed() noexcept override {}
  IInstanceManager& GetInstanceManager() override { return m_instances; }
  IDriverManager& GetDriverManager() override;
  IVariableManager* GetVariableManager() override { return nullptr; }
  UICmdDispatcher& GetUICmdDispatcher() override { return m_dispatcher; }
  void RegisterListener(ISystemEventCallback&, unsigned int, unsigned long) override {}
  void UnregisterListener(ISystemEventCallback&, unsigned int, unsigned long) override {}
  void SendDataToUI(const H7XML::INode&) override {}
  void InvalidateState() override { ++invalidations; }
  void Log(unsigned int level, const char* line, const void* caller) noexcept override;

  FakeInstanceManager m_instances;
  struct Dispatcher m_dispatcher;
  devhost::LogSink* m_formerSink;
};

// The element with the attributes that device drivers use, its text and its children.
std::string ToText(const H7XML::INode& node);

// The root element of `xml`.
h7::auto_com<H7XML::INode> ToNode(const std::string& xml);

#endif
