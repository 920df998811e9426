#ifndef DEVHOST_ENGINE_CALL_FRONTS_H
#define DEVHOST_ENGINE_CALL_FRONTS_H

class ISNMPConfigurationAgent;
class ISupportSNMP;

namespace devhost {

// Puts functions in front of all operations of a device, or of an agent, that tell the CallWatch of each call and pass it
// on. The object keeps them to its end, longer than the host. False when it is not watched: see PutInFront.
bool WatchDevice(ISupportSNMP& device);
bool WatchAgent(ISNMPConfigurationAgent& agent);

}  // namespace devhost

#endif
