#ifndef DEVHOST_ENGINE_CALL_FRONTS_H
#define DEVHOST_ENGINE_CALL_FRONTS_H

#include <memory>

class ISNMPConfigurationAgent;
class ISupportSNMP;

namespace devhost {

class CallWatch;

// What other drivers see in the place of a device, or of an agent. Each operation tells the CallWatch of the call and
// passes it on, with the same arguments, results and exceptions. Both arguments are borrowed: the watch outlives the front,
// and the front is called only as long as what it stands for may be called.
std::shared_ptr<ISupportSNMP> MakeDeviceFront(CallWatch& watch, ISupportSNMP& device);
std::shared_ptr<ISNMPConfigurationAgent> MakeAgentFront(CallWatch& watch, ISNMPConfigurationAgent& agent);

}  // namespace devhost

#endif
