#include "devhost/engine/EventDelivery.h"

#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "devhost/engine/HostCore.h"
#include "devhost/engine/LoadedDriver.h"
#include "devhost/xml/XmlReader.h"
#include "host/SystemEventId.h"

namespace devhost {

namespace {

XmlElement EventElement(const std::string& name, const Parameters& parameters) {
  XmlElement event;
  event.name = "event";
  event.attributes.push_back({"name", name});
  for (const auto& [parameter, value] : parameters) {
    XmlElement item;
    item.name = "item";
    item.attributes.push_back({"name", parameter});
    item.text = value;
    event.children.push_back(std::move(item));
  }
  return event;
}

}  // namespace

void DeliverEvent(HostCore& core, unsigned int eventId, const std::string& name, const Parameters& parameters) {
  const XmlElement event = EventElement(name, parameters);
  // A driver that is loaded by whoever hears the event has not heard it, and until the delivery is over nobody has, whatever
  // ends it.
  const HostCore::Drivers drivers = eventId == SystemEvent_OnProjectLoaded ? core.Snapshot() : HostCore::Drivers();
  for (const std::shared_ptr<LoadedDriver>& driver : drivers) {
    driver->NoteProjectLoaded(false);
  }
  std::set<unsigned long> failed;
  std::optional<HostError> first;
  core.listeners.Deliver(eventId, [&](const EventListeners::Registration& registration) {
    try {
      core.Find(registration.driverId)->DeliverEvent(*registration.listener, name, event);
    } catch (const HostError& error) {
      failed.insert(registration.driverId);
      first = first ? first : error;
    }
  });
  for (const std::shared_ptr<LoadedDriver>& driver : drivers) {
    driver->NoteProjectLoaded(failed.count(driver->Entry().id) == 0);
  }
  if (first) {
    throw HostError(*first);
  }
}

}  // namespace devhost
