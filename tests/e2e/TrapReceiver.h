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
  std::string community;  // bytes beyond ASCII as dots: so the program prints them
};
bool operator==(const Trap& left, const Trap& right);
std::ostream& operator<<(std::ostream& stream, const Trap& trap);

// A real snmptrapd on a port of its own, that takes traps of any community.
class TrapReceiver {
 public:
  // Returns when it listens. Throws std::runtime_error when it cannot.
  TrapReceiver();

  // Its UDP port on 127.0.0.1.
  const std::string& Port() const { return m_port; }
  // All traps that were sent here before this call, in order. Datagrams of one machine do not overtake each other: once a
  // trap of our own has come through, the others have, too.
  std::vector<Trap> Traps();

 private:
  bool Start();
  void SendMark(const std::string& kind) const;

  const testsupport::ScratchFolder m_folder;
  std::string m_port;
  std::unique_ptr<Background> m_program;
  int m_marks = 0;
};

// A UDP port of 127.0.0.1 that nobody has at the moment.
std::string FreePort();

}  // namespace e2e

#endif
