#ifndef DRIVERS_HOSTPROBE_HOST_PROBE_H
#define DRIVERS_HOSTPROBE_HOST_PROBE_H

#include <memory>
#include <string>
#include <thread>

#include "drivers/hostprobe/EventChecks.h"
#include "drivers/hostprobe/IProbe.h"
#include "drivers/hostprobe/ProbedDriver.h"

class ICmdMessage;

namespace drivers {

class Report;

// A driver without a device: it checks the host that has loaded it, and reports which promises of host/ hold. With a report
// in its configuration it is the probe; without one it is a partner, which the probe needs to check what is between drivers.
class HostProbe final : public ProbedDriver, public IProbe {
 public:
  explicit HostProbe(IInstanceManager& instances);
  ~HostProbe() override;

  // What the module's factory returns.
  static IDriver* Create(IInstanceManager& instances);

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) override;
  void RegisterCommands() override;

  unsigned long GetDriverId() const override { return m_driverId; }
  std::string UseServices(IProbe& caller) override;
  std::string UseServicesAgain() override;
  void* TryToWithdraw(const char* iid) override;

  void NoteCall(const char* operation) override;

 private:
  // A call into this driver, for as long as it lasts.
  class Call;

  std::string CheckManagers();
  void CheckInitialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted);
  void CheckAll(const H7XML::INode& config, const H7XML::INode* persisted);
  void CheckPartner(IProbe& partner);
  void CheckState();
  std::string Notify();
  void CheckCommand(const ICmdMessage& message);

  Report& m_report;
  const int m_number;
  const std::thread::id m_thread;
  EventChecks m_events;
  h7::auto_com<H7XML::INode> m_config;  // from Initialize to RegisterCommands
  std::string m_reportName;             // as the configuration has it
  std::shared_ptr<int> m_handlersToken = std::make_shared<int>(0);
  unsigned long m_driverId = 0;
  int m_depth = 0;
  int m_timesInitialized = 0;
  int m_timesCommands = 0;
  bool m_hadState = false;
  bool m_wasAsked = false;
  bool m_wasAskedInside = false;
};

}  // namespace drivers

#endif
