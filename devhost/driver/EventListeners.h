#ifndef DEVHOST_DRIVER_EVENT_LISTENERS_H
#define DEVHOST_DRIVER_EVENT_LISTENERS_H

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

class ISystemEventCallback;

namespace devhost {

// Who listens to which system events.
class EventListeners {
 public:
  struct Registration {
    unsigned long driverId;  // of the driver that registered it
    ISystemEventCallback* listener;
    unsigned int eventId;
    unsigned long reserved;
    bool active;
  };

  // `listener` is borrowed until its registration ends.
  void Add(unsigned long driverId, ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved);
  // Ends the earliest registration made with the same arguments; nothing happens when there is none.
  void Remove(unsigned long driverId, ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved);
  // Ends all registrations of the driver and returns them.
  std::vector<Registration> RemoveAll(unsigned long driverId);

  // Whether the driver listens to the event now.
  bool Listens(unsigned long driverId, unsigned int eventId) const;

  // Calls `deliver` for every listener of the event, in the order of registration. A listener that is unregistered meanwhile
  // is not called any more; one that is added meanwhile is not called yet.
  void Deliver(unsigned int eventId, const std::function<void(const Registration&)>& deliver) const;

 private:
  std::list<std::shared_ptr<Registration>> m_registrations;
};

// The id under which an event of that name goes out; 0 when the name is not known.
unsigned int SystemEventIdOf(const std::string& name);
// How messages name an event: event "OnItemRemoved", or system event 99 when the id is not known.
std::string SystemEventTitle(const std::string& name);
std::string SystemEventTitle(unsigned int eventId);
// The known names, one by one and for messages.
std::vector<std::string> SystemEventList();
std::string SystemEventNames();

}  // namespace devhost

#endif
