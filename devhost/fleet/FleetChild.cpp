#include "devhost/fleet/FleetChild.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>

namespace devhost {

namespace {

constexpr std::size_t kLongestOutput = std::size_t{16} * 1024 * 1024;

std::vector<std::string> Environment() {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    variables.emplace_back(*variable);
  }
  return variables;
}

}  // namespace

FleetChild::FleetChild(const FleetTask& task, Clock::time_point deadline) : m_deadline(deadline), m_input(task.input) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  m_from = FileDescriptor(ends[0]);
  const FileDescriptor to(ends[1]);
  ::fcntl(m_from.Get(), F_SETFL, O_NONBLOCK);
  m_process.emplace(ProcessImage{task.words.front(), task.words, Environment(), -1, m_input.Descriptor(), to.Get()});
}

std::optional<FleetEnd> FleetChild::Look() {
  Read();
  m_end.isLate = Clock::now() >= m_deadline;
  const bool hasEnded = m_process->WaitForEnd(std::chrono::milliseconds::zero());
  if (!hasEnded && !m_end.isLate && !m_end.tooLong) {
    return std::nullopt;
  }
  m_end.isLate = m_end.isLate && !hasEnded;
  m_process->End();
  Read();
  const int status = m_process->WaitStatus().value_or(SIGKILL);
  m_end.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  m_end.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return std::move(m_end);
}

// Everything that is there now.
void FleetChild::Read() {
  char block[65536];
  while (!m_isAtEnd && !m_end.tooLong) {
    const ssize_t got = ::read(m_from.Get(), block, sizeof block);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0 && errno == EAGAIN) {
      return;
    }
    m_isAtEnd = got <= 0;
    const std::size_t count = got < 0 ? 0 : static_cast<std::size_t>(got);
    const std::size_t room = kLongestOutput - m_end.output.size();
    m_end.output.append(block, std::min(count, room));
    m_end.tooLong = count > room;
  }
}

}  // namespace devhost
