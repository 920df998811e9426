#include "tests/drivers/support/Processes.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

// The output of a command; its exit status in `status`.
std::string OutputOf(const std::string& command, int& status) {
  FILE* const pipe = ::popen((command + " 2>/dev/null").c_str(), "re");
  if (pipe == nullptr) {
    throw std::runtime_error("cannot run " + command);
  }
  std::string output;
  std::array<char, 4096> part = {};
  for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), pipe)) != 0;) {
    output.append(part.data(), count);
  }
  status = ::pclose(pipe);
  return output;
}

// For who answers at last, on a busy machine, and for who does not answer.
constexpr char kPatient[] = " -t 1 -r 29";
constexpr char kImpatient[] = " -t 1 -r 2";

// Many short tries: a datagram that was lost is not waited for.
std::string Client(const std::string& program, const char* patience, const std::string& community,
                   const std::string& address) {
  // Where it wants to keep files none can be made.
  return "SNMPCONFPATH=/dev/null/none SNMP_PERSISTENT_DIR=/dev/null/none " + program + " -v2c" + patience +
         " -m '' -M '' -c '" + community + "' -Oqv " + address + " ";
}

}  // namespace

bool Eventually(const std::function<bool()>& condition, std::chrono::seconds longest) {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return condition();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

bool IsAlive(pid_t process) {
  std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(stream, text);
  const std::size_t end = text.rfind(") ");
  return end != std::string::npos && text[end + 2] != 'Z' && text[end + 2] != 'X';
}

std::size_t CountChildren() {
  const std::string self = std::to_string(::getpid());
  int status = 0;
  const std::string output = OutputOf("cat /proc/" + self + "/task/*/children | wc -w", status);
  // The shell itself is one.
  return std::stoul(output) - 1;
}

std::string SnmpGet(const std::string& address, const std::string& community, const std::string& oid) {
  int status = 0;
  std::string output = OutputOf(Client("snmpget", kPatient, community, address) + oid, status);
  while (!output.empty() && (output.back() == '\n' || output.back() == '"')) {
    output.pop_back();
  }
  return status == 0 ? output.substr(!output.empty() && output.front() == '"' ? 1 : 0) : std::string();
}

bool AnswersSnmp(const std::string& address, const std::string& community) {
  int status = 0;
  OutputOf(Client("snmpget", kImpatient, community, address) + kSysName, status);
  return status == 0;
}

bool SnmpSet(const std::string& address, const std::string& community, const std::string& oid, const std::string& value) {
  int status = 0;
  OutputOf(Client("snmpset", kPatient, community, address) + oid + " s '" + value + "'", status);
  return status == 0;
}
