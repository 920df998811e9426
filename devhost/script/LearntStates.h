#ifndef DEVHOST_SCRIPT_LEARNT_STATES_H
#define DEVHOST_SCRIPT_LEARNT_STATES_H

#include <string>

#include "devhost/secrets/Masker.h"
#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

// A store that learns the secrets of states before their drivers get them. It may leave the states as they are. The store
// and the masker outlive it.
class LearntStates : public StateStore {
 public:
  enum class New { Kept, NotTaken };
  LearntStates(StateStore& states, Masker& secrets, New taken = New::Kept)
      : m_states(states), m_secrets(secrets), m_new(taken) {}

  h7::auto_com<H7XML::INode> Load(unsigned long driverId) override {
    h7::auto_com<H7XML::INode> state = m_states.Load(driverId);
    if (state) {
      m_secrets.Xml(XmlText(*state, XmlStyle::Compact));
    }
    return state;
  }
  void Save(unsigned long driverId, const std::string& xml) override { m_states.Save(driverId, xml); }
  bool TakesStates() const override { return m_new == New::Kept && m_states.TakesStates(); }

 private:
  StateStore& m_states;
  Masker& m_secrets;
  const New m_new;
};

}  // namespace devhost

#endif
