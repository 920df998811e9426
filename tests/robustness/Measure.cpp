#include "tests/robustness/Measure.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/ReadPipe.h"

extern char** environ;

namespace testsupport {

namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Shortens a long output to its beginning and its end.
void Shorten(std::string& output) {
  constexpr std::size_t kEnds = 100000;
  if (output.size() > 4 * kEnds) {
    output.erase(kEnds, output.size() - 2 * kEnds);
  }
}

void LimitProcessorTime(pid_t process) {
  const struct rlimit limit = {60, 60};
  ::prlimit(process, RLIMIT_CPU, &limit, nullptr);
}

pid_t Spawn(std::vector<std::string> words, const std::string& folder, int output) {
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, output, 1);
  ::posix_spawn_file_actions_adddup2(&actions, output, 2);
  ::posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  pid_t child = -1;
  const int error = ::posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::runtime_error("devhost cannot be started");
  }
  LimitProcessorTime(child);
  return child;
}

}  // namespace

MeasuredRun::MeasuredRun(const std::vector<std::string>& words, const std::string& folder) {
  std::vector<std::string> all = {PROGRAM_FOLDER "/devhost"};
  all.insert(all.end(), words.begin(), words.end());
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  m_from = ends[0];
  m_process = Spawn(all, folder, ends[1]);
  ::close(ends[1]);
}

MeasuredRun::~MeasuredRun() {
  if (m_process > 0) {
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
  }
  ::close(m_from);
}

Measured MeasuredRun::Wait() {
  Measured result;
  const bool ended = ReadPipe(m_from, std::chrono::minutes(5), [&](std::string_view block) {
    result.output += block;
    Shorten(result.output);
  });
  if (!ended) {
    throw std::runtime_error("devhost does not end");
  }
  int status = 0;
  struct rusage usage = {};
  ::wait4(m_process, &status, 0, &usage);
  m_process = -1;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.seconds = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  result.peak = static_cast<std::size_t>(usage.ru_maxrss) * 1024;
  return result;
}

Measured Measure(const std::vector<std::string>& words, const std::string& folder) {
  return MeasuredRun(words, folder).Wait();
}

double GrowthOfTime(const WriteInput& write, std::size_t size, const std::vector<std::string>& words,
                    const std::string& folder) {
  double best = 1000;
  for (int round = 0; round != 3 && best > kMostGrowth; ++round) {
    write(size);
    const Measured once = Measure(words, folder);
    write(4 * size);
    const Measured four = Measure(words, folder);
    if (once.status > 128 || four.status > 128) {
      throw std::runtime_error("a signal ended devhost: " + four.output.substr(0, 1000));
    }
    best = std::min(best, four.seconds / std::max(once.seconds, 0.001));
  }
  return best;
}

void WriteNumbered(const std::string& path, const std::string& head,
                   const std::function<std::string(std::size_t number)>& unit, std::size_t times, const std::string& tail) {
  std::ofstream file(path, std::ios::binary);
  file << head;
  for (std::size_t i = 1; i <= times; ++i) {
    file << unit(i);
  }
  file << tail;
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path);
  }
}

void WriteRepeated(const std::string& path, const std::string& head, const std::string& unit, std::size_t times,
                   const std::string& tail) {
  const std::size_t block = std::max<std::size_t>(65536 / unit.size(), 1);
  std::string units;
  for (std::size_t i = 0; i != block; ++i) {
    units += unit;
  }
  std::string rest;
  for (std::size_t i = 0; i != times % block; ++i) {
    rest += unit;
  }
  WriteNumbered(
      path, head, [&units](std::size_t) { return units; }, times / block, rest + tail);
}

}  // namespace testsupport
