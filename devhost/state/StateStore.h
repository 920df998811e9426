#ifndef DEVHOST_STATE_STATE_STORE_H
#define DEVHOST_STATE_STATE_STORE_H

#include <map>
#include <stdexcept>
#include <string>

#include "host/INode.h"
#include "host/auto_com.h"

namespace devhost {

// A state that could not be read or kept. The text says in one line where, what happened, and what becomes of the state.
class StateError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Where the persisted states of drivers are kept from one life of the host to the next.
class StateStore {
 public:
  virtual ~StateStore() = default;

  // What was kept for that driver; an empty handle when nothing was. Throws StateError when that is damaged: it has been put
  // aside then, and the driver starts without a state.
  virtual h7::auto_com<H7XML::INode> Load(unsigned long driverId) = 0;

  // Keeps `xml` for that driver in place of what was kept before; "" keeps nothing. Throws StateError when that is not
  // possible; what was kept before is then unchanged.
  virtual void Save(unsigned long driverId, const std::string& xml) = 0;

  // Whether `Save` is ever to be called. A host asks no driver for its state where it is not.
  virtual bool TakesStates() const { return true; }
};

// Keeps states for as long as it lives.
class StateMemory : public StateStore {
 public:
  h7::auto_com<H7XML::INode> Load(unsigned long driverId) override;
  void Save(unsigned long driverId, const std::string& xml) override;

 private:
  std::map<unsigned long, std::string> m_states;
};

}  // namespace devhost

#endif
