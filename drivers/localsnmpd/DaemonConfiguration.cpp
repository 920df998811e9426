#include "drivers/localsnmpd/DaemonConfiguration.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <system_error>

#include "drivers/common/MisspeltAttribute.h"

namespace drivers {

namespace {

struct Range {
  int least;
  int most;
  const char* unit;
};

// The attribute as a whole number, or nothing when it is missing. Fills `wrong` when it is not a number of the range.
std::optional<int> ReadNumber(const H7XML::INode& config, const char* name, const Range& range, const char* others,
                              std::string& wrong) {
  const std::string text = config.GetNamedString(name);
  if (text.empty()) {
    return std::nullopt;
  }
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || last != end || number < range.least || number > range.most) {
    wrong = std::string(name) + " is \"" + text + "\"; allowed are " + others + "whole numbers from " +
            std::to_string(range.least) + " to " + std::to_string(range.most) + range.unit;
  }
  return number;
}

bool IsProgram(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string ReadDaemonConfiguration(const H7XML::INode& config, DaemonConfiguration& result) {
  std::string wrong = FindMisspelt(
      config, {{"port"}, {"program", {"path", "daemon"}}, {"rebootPause"}, {"startDeadline", {"startTimeout"}}});
  if (!wrong.empty()) {
    return wrong;
  }
  if (config.GetNamedString("port") != "auto") {
    result.port = static_cast<std::uint16_t>(ReadNumber(config, "port", {1024, 65535, ""}, "auto and ", wrong).value_or(0));
  }
  const auto pause = ReadNumber(config, "rebootPause", {0, 60000, " (milliseconds)"}, "", wrong);
  result.rebootPause = pause ? std::chrono::milliseconds(*pause) : result.rebootPause;
  const auto deadline = ReadNumber(config, "startDeadline", {1, 600, " (seconds)"}, "", wrong);
  result.startDeadline = deadline ? std::chrono::seconds(*deadline) : result.startDeadline;
  result.program = config.GetNamedString("program");
  if (!result.program.empty() && result.program.front() != '/') {
    wrong = "program is \"" + result.program + "\"; give the absolute path of the daemon's program, or leave it out";
  }
  return wrong;
}

std::string FindDaemonProgram(const std::string& configured) {
  if (!configured.empty()) {
    return IsProgram(configured) ? configured : std::string();
  }
  const char* const path = std::getenv("PATH");
  std::istringstream folders(std::string(path != nullptr ? path : "") + ":/usr/local/sbin:/usr/sbin:/sbin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    // The program is started in a folder of its own, so that a relative path would lead elsewhere.
    if (!folder.empty() && folder.front() == '/' && IsProgram(folder + "/snmpd")) {
      return folder + "/snmpd";
    }
  }
  return std::string();
}

}  // namespace drivers
