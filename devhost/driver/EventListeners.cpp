#include "devhost/driver/EventListeners.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>

#include "host/SystemEventId.h"

namespace devhost {
namespace {

struct NamedEvent {
  const char* name;
  SystemEventId id;
};

constexpr NamedEvent kEvents[] = {
    {"OnProjectLoaded", SystemEvent_OnProjectLoaded},         {"OnItemRemoved", SystemEvent_OnItemRemoved},
    {"OnVariableAdded", SystemEvent_OnVariableAdded},         {"OnVariableRemoved", SystemEvent_OnVariableRemoved},
    {"OnUserVariableAdded", SystemEvent_OnUserVariableAdded},
};

}  // namespace

void EventListeners::Add(unsigned long driverId, ISystemEventCallback& listener, unsigned int eventId,
                         unsigned long reserved) {
  m_registrations.push_back(std::make_shared<Registration>(Registration{driverId, &listener, eventId, reserved, true}));
}

void EventListeners::Remove(unsigned long driverId, ISystemEventCallback& listener, unsigned int eventId,
                            unsigned long reserved) {
  for (auto it = m_registrations.begin(); it != m_registrations.end(); ++it) {
    Registration& registration = **it;
    if (registration.driverId == driverId && registration.listener == &listener && registration.eventId == eventId &&
        registration.reserved == reserved) {
      registration.active = false;
      m_registrations.erase(it);
      return;
    }
  }
}

std::vector<EventListeners::Registration> EventListeners::RemoveAll(unsigned long driverId) {
  std::vector<Registration> removed;
  m_registrations.remove_if([&](const std::shared_ptr<Registration>& registration) {
    if (registration->driverId != driverId) {
      return false;
    }
    removed.push_back(*registration);
    registration->active = false;
    return true;
  });
  return removed;
}

bool EventListeners::Listens(unsigned long driverId, unsigned int eventId) const {
  return std::any_of(m_registrations.begin(), m_registrations.end(), [&](const std::shared_ptr<Registration>& entry) {
    return entry->driverId == driverId && entry->eventId == eventId;
  });
}

void EventListeners::Deliver(unsigned int eventId, const std::function<void(const Registration&)>& deliver) const {
  std::vector<std::shared_ptr<Registration>> listeners;
  for (const std::shared_ptr<Registration>& registration : m_registrations) {
    if (registration->eventId == eventId) {
      listeners.push_back(registration);
    }
  }
  for (const std::shared_ptr<Registration>& registration : listeners) {
    if (registration->active) {
      deliver(*registration);
    }
  }
}

unsigned int SystemEventIdOf(const std::string& name) {
  for (const NamedEvent& event : kEvents) {
    if (name == event.name) {
      return event.id;
    }
  }
  return 0;
}

std::string SystemEventTitle(const std::string& name) {
  return "event \"" + name + "\"";
}

std::string SystemEventTitle(unsigned int eventId) {
  for (const NamedEvent& event : kEvents) {
    if (eventId == static_cast<unsigned int>(event.id)) {
      return SystemEventTitle(event.name);
    }
  }
  return "system event " + std::to_string(eventId);
}

std::vector<std::string> SystemEventList() {
  std::vector<std::string> names;
  for (const NamedEvent& event : kEvents) {
    names.emplace_back(event.name);
  }
  return names;
}

std::string SystemEventNames() {
  return boost::join(SystemEventList(), ", ");
}

}  // namespace devhost
