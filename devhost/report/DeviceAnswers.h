#ifndef DEVHOST_REPORT_DEVICE_ANSWERS_H
#define DEVHOST_REPORT_DEVICE_ANSWERS_H

#include <string>
#include <vector>

namespace devhost {

// What device drivers answer when a script shows something of a device, as values. What an answer lacks is empty or false.

struct DeviceSetting {
  std::string name;
  std::string value;
  bool erased = false;
};

struct DeviceTrapTarget {
  std::string target;
  std::string community;
  std::string port;
};

// Both in the order of the answer.
struct DeviceSettings {
  std::vector<DeviceSetting> settings;
  std::vector<DeviceTrapTarget> trapTargets;
};

// How often an operation of a device was called.
struct OperationCount {
  std::string operation;
  unsigned long count = 0;
};

struct DaemonState {
  bool running = false;
  unsigned long pid = 0;  // of a running daemon
  std::string address;    // "udp:127.0.0.1:40161"
  bool online = false;    // whether the device can be reached
  bool pending = false;   // whether a text waits for the device to come back
};

}  // namespace devhost

#endif
