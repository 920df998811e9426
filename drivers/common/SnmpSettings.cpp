#include "drivers/common/SnmpSettings.h"

#include <algorithm>
#include <utility>

namespace drivers {

namespace {

bool AreEqual(const std::vector<TrapTarget>& left, const std::vector<TrapTarget>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const TrapTarget& one, const TrapTarget& other) {
                      return one.target == other.target && one.community == other.community && one.port == other.port;
                    });
}

}  // namespace

bool ErasableText::Set(std::string value) {
  // The flag never changes without the value.
  const bool changed = value != m_value;
  if (!value.empty()) {
    m_erased = false;
  } else if (!m_value.empty()) {
    m_erased = true;
  }
  m_value = std::move(value);
  return changed;
}

void ErasableText::Erase() {
  m_value.clear();
  m_erased = true;
}

bool ErasableTrapTargets::Set(std::vector<TrapTarget> targets) {
  const bool changed = !AreEqual(targets, m_targets);
  if (!targets.empty()) {
    m_erased = false;
  } else if (!m_targets.empty()) {
    m_erased = true;
  }
  m_targets = std::move(targets);
  return changed;
}

void ErasableTrapTargets::Add(const TrapTarget& target) {
  m_targets.push_back(target);
  m_erased = false;
}

void ErasableTrapTargets::Erase() {
  m_targets.clear();
  m_erased = true;
}

}  // namespace drivers
