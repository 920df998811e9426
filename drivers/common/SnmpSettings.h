#ifndef DRIVERS_COMMON_SNMP_SETTINGS_H
#define DRIVERS_COMMON_SNMP_SETTINGS_H

#include <algorithm>
#include <string>
#include <vector>

#include "device/TrapTarget.h"

namespace drivers {

// A setting, a text or a list, that remembers whether somebody emptied it on purpose.
//
// The flag follows from the order of values alone, since a setter cannot see who calls it:
//  - the empty value where the setting held one is an erasure and sets the flag;
//  - a value clears it;
//  - the empty value where there was nothing already says nothing new, so the flag stays as it is. That keeps a setting that
//    never held anything open to be filled from snmpd.conf, and an erased one erased when the tool sends it back empty.
template <class Value>
class Erasable {
 public:
  const Value& Get() const { return m_value; }
  bool WasErased() const { return m_erased; }
  // Returns whether the value has changed; the flag never changes without it.
  bool Set(Value value) {
    const bool changed = !AreEqual(value, m_value);
    m_erased = value.empty() && (m_erased || !m_value.empty());
    m_value.swap(value);
    return changed;
  }
  // Empties the setting on purpose, even if it is empty already.
  void Erase() {
    m_value.clear();
    m_erased = true;
  }

 protected:
  Value m_value;
  bool m_erased = false;

 private:
  static bool AreEqual(const std::string& left, const std::string& right) { return left == right; }
  static bool AreEqual(const std::vector<TrapTarget>& left, const std::vector<TrapTarget>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const TrapTarget& one, const TrapTarget& other) {
                        return one.target == other.target && one.community == other.community && one.port == other.port;
                      });
  }
};

using ErasableText = Erasable<std::string>;

// The list of trap destinations.
class ErasableTrapTargets : public Erasable<std::vector<TrapTarget>> {
 public:
  void Add(const TrapTarget& target) {
    m_value.push_back(target);
    m_erased = false;
  }
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
