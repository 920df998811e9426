#ifndef DRIVERS_COMMON_SNMP_SETTINGS_H
#define DRIVERS_COMMON_SNMP_SETTINGS_H

#include <string>
#include <vector>

#include "device/TrapTarget.h"

namespace drivers {

// A text setting that remembers whether somebody emptied it on purpose.
//
// The flag follows from the order of values alone, since a setter cannot see who calls it:
//  - the empty text where the setting held a value is an erasure and sets the flag;
//  - a value clears it;
//  - the empty text where there was nothing already says nothing new, so the flag stays as it is. That keeps a setting that
//    never held anything open to be filled from snmpd.conf, and an erased one erased when the tool sends it back empty.
class ErasableText {
 public:
  const std::string& Get() const { return m_value; }
  bool WasErased() const { return m_erased; }
  // Whether value or flag have changed.
  bool Set(std::string value);
  // Empties the setting on purpose, also one that is empty already.
  void Erase();

 private:
  std::string m_value;
  bool m_erased = false;
};

// The list of trap destinations, with the same flag under the same rules: a list that held some and is cleared counts as
// erased until a target is put in again.
class ErasableTrapTargets {
 public:
  const std::vector<TrapTarget>& Get() const { return m_targets; }
  bool WasErased() const { return m_erased; }
  // Whether list or flag have changed.
  bool Set(std::vector<TrapTarget> targets);
  void Add(const TrapTarget& target);
  void Erase();

 private:
  std::vector<TrapTarget> m_targets;
  bool m_erased = false;
};

// All SNMP settings of one device, as it is new: nothing set, nothing erased, everything off.
struct SnmpSettings {
  bool managed = false;
  bool configDirty = false;
  bool enabled = false;
  ErasableText communityRead;
  ErasableText communityWrite;
  ErasableText sysContact;
  bool usePrimaryContact = false;
  ErasableText sysLocation;
  bool useProjectOwnerAddress = false;
  ErasableText sysName;
  bool useRoomDevice = false;
  ErasableTrapTargets trapTargets;
};

}  // namespace drivers

#endif
