#include "devhost/commands/Console.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "devhost/text/Words.h"

namespace devhost {

void Console::Complain(std::string_view problem) {
  m_errors.Write("devhost: " + OneLine(problem) + "\n");
}

ExitStatus Console::Finish(ExitStatus status) {
  if (m_out.Error() == 0) {
    return status;
  }
  if (m_out.Error() != EPIPE) {
    Complain("cannot write the output: " + std::generic_category().message(m_out.Error()));
  }
  return std::max(status, ExitStatus::Failed);
}

}  // namespace devhost
