#ifndef DEVHOST_ENGINE_EVENT_DELIVERY_H
#define DEVHOST_ENGINE_EVENT_DELIVERY_H

#include <string>

#include "devhost/text/Parameters.h"

namespace devhost {

class HostCore;

// Brings a system event to the listeners of its id, in the order of registration, each with a node of its own. Every
// listener hears it; then the first HostError that came out of one is thrown.
void DeliverEvent(HostCore& core, unsigned int eventId, const std::string& name, const Parameters& parameters);

}  // namespace devhost

#endif
