#ifndef TESTS_DEVHOST_MODULES_GREETER_H
#define TESTS_DEVHOST_MODULES_GREETER_H

#include <string>

// What the well-behaved test driver publishes.
class Greeter {
 public:
  virtual std::string Greet() = 0;

 protected:
  ~Greeter() = default;
};

#define Greeter_IID "test.Greeter"

#endif
