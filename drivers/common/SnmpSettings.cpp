#include "drivers/common/SnmpSettings.h"

#include <utility>

namespace drivers {

void ErasableText::Set(std::string value) {
  if (!value.empty()) {
    m_erased = false;
  } else if (!m_value.empty()) {
    m_erased = true;
  }
  m_value = std::move(value);
}

void ErasableText::Erase() {
  m_value.clear();
  m_erased = true;
}

void ErasableTrapTargets::Set(std::vector<TrapTarget> targets) {
  if (!targets.empty()) {
    m_erased = false;
  } else if (!m_targets.empty()) {
    m_erased = true;
  }
  m_targets = std::move(targets);
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
