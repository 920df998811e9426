#ifndef AGENT_DEVICE_MAP_H
#define AGENT_DEVICE_MAP_H

#include <boost/shared_ptr.hpp>
#include <map>

#include "reentry/WalkByKey.h"

class SNMPDevice;

// The registry of SNMP-capable devices: device id to record, ascending by id.
typedef std::map<unsigned long, boost::shared_ptr<SNMPDevice>> DeviceMap;

// Returns a reference to the record of `deviceId`, which keeps the record alive, or an empty pointer.
inline boost::shared_ptr<SNMPDevice> FindDevice(const DeviceMap& devices, unsigned long deviceId) {
  const DeviceMap::const_iterator entry = devices.find(deviceId);
  return entry == devices.end() ? boost::shared_ptr<SNMPDevice>() : entry->second;
}

// Calls `visit` with a reference to each record, in ascending order of id. Devices may change the map meanwhile (WalkByKey).
template <class Visit>
void ForEachDevice(const DeviceMap& devices, Visit visit) {
  WalkByKey(devices, [&visit](unsigned long, const boost::shared_ptr<SNMPDevice>& device) { visit(device); });
}

#endif
