#include "devhost/system/PrivateFolder.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

namespace devhost {

namespace {

// What the other process says first: the path of the folder, or why there is none, with an exclamation mark in front.
constexpr char kNoFolder = '!';

std::string MakeFolder(std::string name) {
  return ::mkdtemp(name.data()) == nullptr ? kNoFolder + std::to_string(errno) : name;
}

// Somebody who is being killed may still write into it.
void Remove(const std::string& path) {
  constexpr int kTries = 20;
  std::error_code error;
  for (int i = 0; i != kTries; ++i) {
    std::filesystem::remove_all(path, error);
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, error))) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

// The life of the other process. It holds nothing that somebody may wait for, such as the other end of a pipe, and no signal
// to its maker's group or terminal reaches it.
[[noreturn]] void Serve(const std::string& name, int end) {
  ::setsid();
  ::dup2(end, STDIN_FILENO);
  ::closefrom(STDOUT_FILENO);
  const std::string path = MakeFolder(name);
  ::send(STDIN_FILENO, path.data(), path.size(), MSG_NOSIGNAL);
  char ignored = 0;
  while (::recv(STDIN_FILENO, &ignored, 1, 0) < 0 && errno == EINTR) {
  }
  if (path.front() != kNoFolder) {
    Remove(path);
  }
  ::_exit(0);
}

[[noreturn]] void Fail(int error) {
  throw std::system_error(error, std::generic_category(), "cannot make a temporary folder");
}

}  // namespace

PrivateFolder::PrivateFolder() {
  const std::string name = (std::filesystem::absolute(std::filesystem::temp_directory_path()) / "devhost-XXXXXX").string();
  std::array<int, 2> ends = {};
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    Fail(errno);
  }
  m_end = FileDescriptor(ends[0]);
  FileDescriptor removersEnd(ends[1]);
  sigset_t all;
  sigset_t former;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &former);
  m_remover = ::fork();
  if (m_remover == 0) {
    Serve(name, removersEnd.Get());
  }
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
  removersEnd.Close();
  std::array<char, 4096> path = {};
  const ssize_t size = m_remover < 0 ? 0 : ::recv(m_end.Get(), path.data(), path.size(), 0);
  m_path.assign(path.data(), size < 0 ? 0U : static_cast<std::size_t>(size));
  if (m_path.empty() || m_path.front() == kNoFolder) {
    End();
    Fail(m_path.empty() ? ECHILD : std::stoi(m_path.substr(1)));
  }
}

PrivateFolder::~PrivateFolder() {
  End();
}

void PrivateFolder::End() {
  // A copy of this end in another process, which a driver forked, does not keep it open.
  ::shutdown(m_end.Get(), SHUT_RDWR);
  m_end.Close();
  while (m_remover > 0 && ::waitpid(m_remover, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace devhost
