#include "devhost/commands/PageOpener.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "devhost/system/FileText.h"
#include "devhost/system/RunProgram.h"

namespace devhost {

namespace {

constexpr std::chrono::seconds kLife{60};

// A folder that only this user can enter.
std::string MakeFolder() {
  const char* const run = std::getenv("XDG_RUNTIME_DIR");
  std::string name = std::string(run == nullptr || *run == '\0' ? "/tmp" : run) + "/devhost-XXXXXX";
  return ::mkdtemp(name.data()) == nullptr ? "" : name;
}

// Starts a program that outlives this one, with nothing of it but its environment.
int Spawn(const std::string& program, const std::string& argument, pid_t& pid) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawnattr_init(&attributes);
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    ::posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
  }
  ::posix_spawn_file_actions_addclosefrom_np(&actions, 3);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::string name = program;
  std::string word = argument;
  char* const arguments[] = {name.data(), word.data(), nullptr};
  const int error = ::posix_spawn(&pid, program.c_str(), &actions, &attributes, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::posix_spawnattr_destroy(&attributes);
  return error;
}

}  // namespace

PageOpener::PageOpener(const std::string& address, Console& console) : m_end(std::chrono::steady_clock::now() + kLife) {
  const std::string program = FindProgram("xdg-open");
  m_folder = program.empty() ? "" : MakeFolder();
  if (m_folder.empty()) {
    console.Complain(program.empty()
                         ? "the page was not opened: xdg-open is not installed (package xdg-utils)"
                         : std::string("the page was not opened: no folder for its address: ") + std::strerror(errno));
    return;
  }
  const std::string path = m_folder + "/console.html";
  m_file.emplace(
      path,
      "<!doctype html>\n<meta charset=\"utf-8\">\n<title>devhost</title>\n<meta http-equiv=\"refresh\" content=\"0; url=" +
          address + "\">\n");
  if (const int error = Spawn(program, path, m_program)) {
    m_program = -1;
    console.Complain(std::string("the page was not opened: xdg-open: ") + std::strerror(error));
  }
}

PageOpener::~PageOpener() {
  Remove();
}

void PageOpener::Tick() {
  if (m_program > 0 && ::waitpid(m_program, nullptr, WNOHANG) == m_program) {
    m_program = -1;
  }
  if (std::chrono::steady_clock::now() >= m_end) {
    Remove();
  }
}

void PageOpener::Remove() {
  m_file.reset();
  if (!m_folder.empty()) {
    ::rmdir(m_folder.c_str());
    m_folder.clear();
  }
}

}  // namespace devhost
