#include "tests/kit/Terminal.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <regex>
#include <stdexcept>

namespace {

std::vector<char*> PointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) {
    pointers.push_back(const_cast<char*>(text.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Terminal::Terminal(const std::vector<std::string>& arguments, const std::vector<std::string>& variables,
                   const std::string& folder) {
  const std::vector<char*> argv = PointersTo(arguments);
  const std::vector<char*> environment = PointersTo(variables);
  winsize size{};
  size.ws_row = 60;
  size.ws_col = 400;
  m_process = ::forkpty(&m_terminal, nullptr, nullptr, &size);
  if (m_process == 0) {
    if (::chdir(folder.c_str()) == 0) {
      ::execvpe(argv[0], argv.data(), environment.data());
    }
    ::_exit(127);
  }
  if (m_process < 0) {
    throw std::runtime_error("there is no terminal for " + arguments.front());
  }
}

Terminal::~Terminal() {
  ::kill(m_process, SIGKILL);
  ::waitpid(m_process, nullptr, 0);
  ::close(m_terminal);
}

void Terminal::Type(const std::string& keys) const {
  if (::write(m_terminal, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal does not take what is typed");
  }
}

std::string Terminal::ReadUntil(const std::string& pattern) {
  using Clock = std::chrono::steady_clock;
  const std::regex wanted(pattern);
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(30);
  std::smatch match;
  while (!std::regex_search(m_printed, match, wanted)) {
    pollfd terminal{m_terminal, POLLIN, 0};
    char part[4096];
    const bool isReady = ::poll(&terminal, 1, 100) > 0;
    const ssize_t length = isReady ? ::read(m_terminal, part, sizeof part) : 0;
    if (length < 0 || Clock::now() > deadline) {
      throw std::runtime_error("\"" + pattern + "\" was not printed: " + m_printed);
    }
    m_printed.append(part, static_cast<std::size_t>(length));
  }
  const std::size_t end = static_cast<std::size_t>(match.position(0) + match.length(0));
  const std::string text = m_printed.substr(0, end);
  m_printed.erase(0, end);
  return text;
}
