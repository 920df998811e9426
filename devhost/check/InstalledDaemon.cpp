#include "devhost/check/InstalledDaemon.h"

#include <chrono>
#include <utility>

#include "devhost/system/RunProgram.h"

namespace devhost {

std::optional<DirectiveNames> AskForDirectiveNames() {
  ProgramRun run;
  run.words = {FindProgram("snmpd"), "-C", "-H", "-m", "", "-M", ""};
  if (run.words.front().empty()) {
    return std::nullopt;
  }
  // No folder: the daemon makes those that it looks into.
  run.environment = {{"SNMP_PERSISTENT_DIR", "/dev/null"}, {"SNMPCONFPATH", "/dev/null"}, {"HOME", "/dev/null"}};
  run.deadline = std::chrono::seconds(5);
  try {
    DirectiveNames names = ReadDirectiveNames(RunProgram(run).output);
    return names.daemon.empty() ? std::nullopt : std::optional<DirectiveNames>(std::move(names));
  } catch (const ProgramError&) {
    return std::nullopt;
  }
}

}  // namespace devhost
