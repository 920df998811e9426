#include "devhost/system/LineInput.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace devhost {

LineInput::LineInput(int descriptor, std::string name) : m_descriptor(descriptor), m_name(std::move(name)) {}

std::optional<std::string> LineInput::Next() {
  for (;;) {
    const std::size_t feed = m_read.find('\n', m_seen);
    if (std::min(feed, m_read.size()) > kLongestLine) {
      Skip();
      throw LineTooLong(m_name, "a line has more than " + std::to_string(kLongestLine) + " bytes");
    }
    if (feed != std::string::npos) {
      std::string line = m_read.substr(0, feed);
      m_read.erase(0, feed + 1);
      m_seen = 0;
      return line;
    }
    m_seen = m_read.size();
    if (!Fill()) {
      m_seen = 0;
      return m_read.empty() ? std::nullopt : std::optional<std::string>(std::exchange(m_read, ""));
    }
  }
}

void LineInput::Skip() {
  std::size_t feed = m_read.find('\n');
  while (feed == std::string::npos) {
    m_read.clear();
    if (!Fill()) {
      break;
    }
    feed = m_read.find('\n');
  }
  m_read.erase(0, feed == std::string::npos ? feed : feed + 1);
  m_seen = 0;
}

bool LineInput::Fill() {
  char buffer[65536];
  ssize_t got = -1;
  do {
    got = ::read(m_descriptor, buffer, sizeof buffer);
  } while (got == -1 && errno == EINTR);
  if (got == -1) {
    throw FileError(m_name, std::generic_category().message(errno));
  }
  m_read.append(buffer, static_cast<std::size_t>(got));
  return got != 0;
}

}  // namespace devhost
