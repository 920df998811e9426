#include "drivers/hostprobe/EventChecks.h"

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/ProbedDriver.h"
#include "drivers/hostprobe/Report.h"
#include "host/INodeList.h"
#include "host/IVariableManager.h"
#include "host/SystemEventId.h"

namespace drivers {
namespace {

struct ExpectedEvent {
  const char* name;
  Promise promise;
  const char* first;  // its parameters; null for none
  const char* second;
  unsigned int id;
  bool isAdded;  // the parameters are the ids of a variable that is there
};

constexpr ExpectedEvent kEvents[] = {
    {"OnProjectLoaded", Promise::EventProjectLoaded, nullptr, nullptr, SystemEvent_OnProjectLoaded, false},
    {"OnItemRemoved", Promise::EventItemRemoved, "iditem", "idroom", SystemEvent_OnItemRemoved, false},
    {"OnVariableAdded", Promise::EventVariableAdded, "iddevice", "idvariable", SystemEvent_OnVariableAdded, true},
    {"OnVariableRemoved", Promise::EventVariableRemoved, "iddevice", "idvariable", SystemEvent_OnVariableRemoved, false},
    {"OnUserVariableAdded", Promise::EventUserVariableAdded, "iddevice", "idvariable", SystemEvent_OnUserVariableAdded,
     true},
};

const ExpectedEvent& Expected(unsigned int eventId) {
  const ExpectedEvent* event = kEvents;
  while (event->id != eventId) {
    ++event;
  }
  return *event;
}

bool IsOtherEvent(const std::string& name, const ExpectedEvent& expected) {
  for (const ExpectedEvent& event : kEvents) {
    if (name == event.name && event.id != expected.id) {
      return true;
    }
  }
  return false;
}

// The value of a parameter, which must stand there as a number.
unsigned long ParameterOf(const H7XML::INode& event, const std::string& name, Finding& finding) {
  const h7::auto_com<H7XML::INodeList> list = event.GetChildren();
  for (h7::auto_com<H7XML::INode> child = list->First(); child; child = list->Next()) {
    if (child->GetNamedString("name") == name) {
      const unsigned long value = child->GetValueULong();
      finding.Compare("the parameter \"" + name + "\"", child->GetValue(), std::to_string(value));
      return value;
    }
  }
  finding.Unless(false, "it comes without the parameter \"" + name + "\"");
  return 0;
}

std::string CheckEvent(const H7XML::INode& event, const ExpectedEvent& expected, IVariableManager* variables) {
  Finding finding;
  finding.Compare("the event's named value \"name\"", event.GetNamedString("name"), expected.name);
  if (expected.first == nullptr || !finding.Words().empty()) {
    return finding.Words();
  }
  const unsigned long first = ParameterOf(event, expected.first, finding);
  const unsigned long second = ParameterOf(event, expected.second, finding);
  if (expected.isAdded && finding.Words().empty() && first != 0 && second != 0) {
    finding.Unless(variables != nullptr && variables->FindVariable(first, second) != nullptr,
                   "FindVariable does not find the variable that was added");
  }
  return finding.Words();
}

}  // namespace

EventChecks::EventChecks(ProbedDriver& driver, Report& report)
    : m_driver(driver),
      m_report(report),
      m_ended(*this, Role::Ended, SystemEvent_OnProjectLoaded),
      m_quitter(*this, Role::Quits, SystemEvent_OnProjectLoaded),
      m_witness(*this, Role::Witness, SystemEvent_OnProjectLoaded),
      m_ears{{{*this, Role::Checks, kEvents[0].id},
              {*this, Role::Checks, kEvents[1].id},
              {*this, Role::Checks, kEvents[2].id},
              {*this, Role::Checks, kEvents[3].id},
              {*this, Role::Checks, kEvents[4].id}}} {
  m_ended.Register();
  m_ended.Unregister();
  m_quitter.Register();
  m_witness.Register();
  for (Ear& ear : m_ears) {
    ear.Register();
  }
}

EventChecks::~EventChecks() {
  if (m_quitter.Heard() == 0) {
    m_quitter.Unregister();
  }
  m_witness.Unregister();
  for (Ear& ear : m_ears) {
    ear.Unregister();
  }
}

void EventChecks::Ear::Register() {
  m_owner.m_driver.RegisterListener(*this, m_eventId, 0);
}

void EventChecks::Ear::Unregister() {
  m_owner.m_driver.UnregisterListener(*this, m_eventId, 0);
}

void EventChecks::Ear::OnSystemEvent(H7XML::INode& event) {
  m_owner.m_driver.NoteCall("OnSystemEvent");
  ++m_heard;
  if (m_role == Role::Checks) {
    m_owner.Hear(m_eventId, event);
  } else if (m_role == Role::Ended) {
    m_owner.m_report.Note(Promise::ListenerEnded, "a listener that was unregistered gets an event");
  } else if (m_role == Role::Quits && m_heard == 1) {
    Unregister();
  }
}

void EventChecks::Hear(unsigned int eventId, H7XML::INode& event) {
  const ExpectedEvent& expected = Expected(eventId);
  const std::string name = event.GetNamedString("name");
  if (IsOtherEvent(name, expected)) {
    m_report.Note(Promise::ListenerId, "the listener for the event " + std::to_string(eventId) + " gets " + name);
    return;
  }
  m_report.Note(Promise::ListenerId, "");
  m_report.Check(expected.promise, [&] { return CheckEvent(event, expected, m_driver.GetVariableManager()); });
  if (eventId == SystemEvent_OnProjectLoaded) {
    ++m_loads;
  }
}

void EventChecks::JudgeAll() {
  if (m_loads != 0 && m_ended.Heard() == 0) {
    m_report.Note(Promise::ListenerEnded, "");
  }
  if (m_loads >= 2) {
    Finding finding;
    finding.Compare("the number of events for a listener that unregistered itself in the first", m_quitter.Heard(), 1);
    finding.Unless(m_witness.Heard() == m_loads, "a listener misses an event while another one unregisters itself");
    m_report.Note(Promise::ListenerInside, finding.Words());
  }
}

}  // namespace drivers
