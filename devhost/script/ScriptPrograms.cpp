#include "devhost/script/ScriptPrograms.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <system_error>

#include "devhost/secrets/Masker.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Why a program cannot be run from that folder, or "".
std::string WhyNotRun(const std::string& program, const std::string& folder) {
  if (program.find('/') == std::string::npos) {
    return FindProgram(program).empty() ? "it is not in PATH, /usr/local/sbin, /usr/sbin or /sbin" : "";
  }
  const std::string path = PathIn(folder, program);
  const std::string reason = WhyNoRegularFile(path);
  if (reason.empty() && ::access(path.c_str(), X_OK) != 0) {
    return std::generic_category().message(errno);
  }
  return reason;
}

}  // namespace

void CheckProgram(const std::string& program, const std::string& folder) {
  const std::string reason = WhyNotRun(program, folder);
  if (!reason.empty()) {
    // A whole command line in quotes may have been meant.
    throw std::runtime_error("cannot run " + Quoted(Masker(false).CommandLine({program})) + ": " + reason);
  }
}

void CheckRun(const ProgramRun& run, const ProgramResult& result) {
  using std::chrono::seconds;
  const std::string failure =
      result.late ? "was ended because it took longer than " +
                        std::to_string(std::chrono::duration_cast<seconds>(run.deadline).count()) + " seconds"
      : result.tooLong         ? "was ended because it wrote more than " + std::to_string(run.longestOutput) + " bytes"
      : result.signal != 0     ? "was ended by signal " + std::to_string(result.signal)
      : result.exitStatus != 0 ? "ended with status " + std::to_string(result.exitStatus)
                               : "";
  if (!failure.empty()) {
    throw std::runtime_error(run.words.front() + " " + failure);
  }
}

std::string WithAddresses(const std::string& word, const std::function<std::string(const std::string& driver)>& address) {
  const std::string open = "{address:";
  std::string replaced;
  std::size_t copied = 0;
  for (;;) {
    const std::size_t begin = word.find(open, copied);
    const std::size_t end = begin == std::string::npos ? begin : word.find('}', begin);
    if (end == std::string::npos) {
      return replaced.append(word, copied, std::string::npos);
    }
    replaced.append(word, copied, begin - copied);
    replaced += address(word.substr(begin + open.size(), end - begin - open.size()));
    copied = end + 1;
  }
}

}  // namespace devhost
