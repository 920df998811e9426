#ifndef DEVICE_TRAP_TARGET_H
#define DEVICE_TRAP_TARGET_H

#include <string>

// One trap destination: a value of three texts. Lists of them cross `ISupportSNMP` by value, so the order of the members is
// a binary contract.
class TrapTarget {
 public:
  TrapTarget(const std::string& targetText, const std::string& communityText, const std::string& portText)
      : target(targetText), community(communityText), port(portText) {}

  std::string target;     // host or address that receives the traps
  std::string community;  // sent with each trap
  std::string port;       // UDP port, as the text that somebody entered
};

#endif
