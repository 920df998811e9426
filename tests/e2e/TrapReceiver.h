#ifndef TESTS_E2E_TRAP_RECEIVER_H
#define TESTS_E2E_TRAP_RECEIVER_H

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/Background.h"
#include "tests/support/ScratchFolder.h"

namespace e2e {

inline constexpr char kColdStart[] = ".1.3.6.1.6.3.1.1.5.1";
inline constexpr char kShutdown[] = ".1.3.6.1.4.1.8072.4.0.2";

struct Trap {
  std::string kind;       // an object identifier
  std::string community;  // with dots for bytes beyond ASCII, as the program prints them
};
bool operator==(const Trap& left, const Trap& right);
std::ostream& operator<<(std::ostream& stream, const Trap& trap);

// A real snmptrapd on a port of its own. It accepts traps of any community.
class TrapReceiver {
 public:
  // Returns when the program listens. Throws std::runtime_error when it cannot.
  TrapReceiver();

  // Returns its UDP port on 127.0.0.1.
  const std::string& Port() const { return m_port; }
  // Returns all traps that were sent here before this call, in order. Sends a trap of its own and waits for it: datagrams of
  // one machine do not overtake each other, so the others have arrived, too.
  std::vector<Trap> Traps();

 private:
  bool Start();
  void SendMark(const std::string& kind) const;

  const testsupport::ScratchFolder m_folder;
  std::string m_port;
  std::unique_ptr<Background> m_program;
  int m_marks = 0;
};

// Returns a UDP port of 127.0.0.1 that is free at the moment.
std::string FreePort();

}  // namespace e2e

#endif
