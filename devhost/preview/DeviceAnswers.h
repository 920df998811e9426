#ifndef DEVHOST_PREVIEW_DEVICE_ANSWERS_H
#define DEVHOST_PREVIEW_DEVICE_ANSWERS_H

#include <algorithm>
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

inline bool AreEqual(const std::string& one, const std::string& other) {
  return one == other;
}

inline bool AreEqual(const std::vector<TrapTarget>& one, const std::vector<TrapTarget>& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const TrapTarget& left, const TrapTarget& right) {
    return left.target == right.target && left.community == right.community && left.port == right.port;
  });
}

template <class Value>
bool AreEqual(const ErasableSetting<Value>& one, const ErasableSetting<Value>& other) {
  return AreEqual(one.value, other.value) && one.wasErased == other.wasErased;
}

// Whether the device has answered the same to all questions but those for its version and its file.
inline bool HaveSameSettings(const DeviceAnswers& one, const DeviceAnswers& other) {
  return one.isManaged == other.isManaged && one.isConfigDirty == other.isConfigDirty && one.isEnabled == other.isEnabled &&
         AreEqual(one.communityRead, other.communityRead) && AreEqual(one.communityWrite, other.communityWrite) &&
         AreEqual(one.sysContact, other.sysContact) && one.usesPrimaryContact == other.usesPrimaryContact &&
         AreEqual(one.sysLocation, other.sysLocation) && one.usesProjectOwnerAddress == other.usesProjectOwnerAddress &&
         AreEqual(one.sysName, other.sysName) && one.usesRoomDevice == other.usesRoomDevice &&
         AreEqual(one.trapTargets, other.trapTargets);
}

// The status of a device that cannot be reached now. It gives the text that it last knew and keeps what it is given for
// later.
inline constexpr int kCannotBeReached = -9;

}  // namespace devhost

#endif
