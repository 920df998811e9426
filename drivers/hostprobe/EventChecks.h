#ifndef DRIVERS_HOSTPROBE_EVENT_CHECKS_H
#define DRIVERS_HOSTPROBE_EVENT_CHECKS_H

#include <array>
#include <string>

#include "host/ISystemEventCallback.h"

namespace drivers {

class ProbedDriver;
class Report;

// The listeners of one driver, from its construction to its destruction: one for each event id, which checks what comes, and
// three that are about registration itself.
class EventChecks {
 public:
  // Both outlive it. Registers the listeners.
  EventChecks(ProbedDriver& driver, Report& report);
  // Unregisters those that are left.
  ~EventChecks();
  EventChecks(const EventChecks&) = delete;
  EventChecks& operator=(const EventChecks&) = delete;

  // At the end of the driver: judges what takes several events to see.
  void JudgeAll();

  // How often the project was loaded.
  int Loads() const { return m_loads; }

 private:
  enum class Role { Checks, Ended, Quits, Witness };

  // One listener. It has an address of its own for each registration, so that it knows the id it was called for.
  class Ear final : public ISystemEventCallback {
   public:
    Ear(EventChecks& owner, Role role, unsigned int eventId) : m_owner(owner), m_role(role), m_eventId(eventId) {}
    ~Ear() = default;
    Ear(const Ear&) = delete;
    Ear& operator=(const Ear&) = delete;
    void OnSystemEvent(H7XML::INode& event) override;

    void Register();
    void Unregister();
    int Heard() const { return m_heard; }

   private:
    EventChecks& m_owner;
    const Role m_role;
    const unsigned int m_eventId;
    int m_heard = 0;
  };

  void Hear(unsigned int eventId, H7XML::INode& event);

  ProbedDriver& m_driver;
  Report& m_report;
  int m_loads = 0;
  Ear m_ended;
  Ear m_quitter;
  Ear m_witness;
  std::array<Ear, 5> m_ears;
};

}  // namespace drivers

#endif
