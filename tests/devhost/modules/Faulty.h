#ifndef TESTS_DEVHOST_MODULES_FAULTY_H
#define TESTS_DEVHOST_MODULES_FAULTY_H

class ISupportSNMP;

// What the faulty device publishes beside its device, so that a test can let the module's code run on any thread.
class Faulty {
 public:
  // Asks the agent to bring the device up to date, and returns its answer.
  virtual bool CallAgent() = 0;
  // Announces a device to the agent, by a call that comes back to the module. Returns true.
  virtual bool Announce(unsigned long deviceId, ISupportSNMP& device) = 0;
  // Notifies the tool.
  virtual void Notify() = 0;

 protected:
  ~Faulty() = default;
};

#define Faulty_IID "test.Faulty"

#endif
