#include "devhost/system/Output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace devhost {

void Output::Write(std::string_view text) noexcept {
  while (!text.empty() && m_error == 0) {
    const ssize_t written = ::write(m_descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      // Somebody who shares the pipe or terminal has made it non-blocking.
      struct pollfd ready = {m_descriptor, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      m_error = errno;
    }
  }
}

}  // namespace devhost
