#ifndef DEVHOST_PREVIEW_DEVICE_ANSWERS_H
#define DEVHOST_PREVIEW_DEVICE_ANSWERS_H

#include <string>
#include <utility>
#include <vector>

#include "device/TrapTarget.h"

namespace devhost {

// A setting, and whether somebody has emptied it on purpose.
template <class Value>
struct ErasableSetting {
  Value value;
  bool wasErased = false;

  // An empty value in place of one is an erasure; a value ends it.
  void Set(Value newValue) {
    wasErased = newValue.empty() && (wasErased || !value.empty());
    value = std::move(newValue);
  }
};

// What a device has answered to all questions that the agent asks before it writes a device's file.
struct DeviceAnswers {
  bool isManaged = false;
  bool isConfigDirty = false;
  bool isEnabled = false;
  ErasableSetting<std::string> communityRead;
  ErasableSetting<std::string> communityWrite;
  ErasableSetting<std::string> sysContact;
  bool usesPrimaryContact = false;
  ErasableSetting<std::string> sysLocation;
  bool usesProjectOwnerAddress = false;
  ErasableSetting<std::string> sysName;
  bool usesRoomDevice = false;
  ErasableSetting<std::vector<TrapTarget>> trapTargets;
  std::string version;
  bool isVersionValid = false;
  int copyStatus = 0;   // of CopyFrom
  std::string file;     // the text that CopyFrom gave
  std::string problem;  // why the device has not answered everything, or ""; goes on behind the device's name
};

// The status of a device that cannot be reached now. It gives the text that it last knew and keeps what it is given for
// later.
inline constexpr int kCannotBeReached = -9;

}  // namespace devhost

#endif
