#ifndef TESTS_DEVHOST_CHECK_RAW_DAEMON_H
#define TESTS_DEVHOST_CHECK_RAW_DAEMON_H

#include <map>
#include <string>
#include <vector>

#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"

namespace devhost {

// What the real daemon makes of a text that nothing has been left out of. It serves nothing.
struct RawDaemon {
  explicit RawDaemon(const std::string& text) {
    const MemoryFile file(text);
    const std::string home = "/dev/null/none";
    ProgramRun run;
    run.words = {
        FindProgram("snmpd"), "-f", "-Le", "-C", "-c", file.Path(), "-m", "", "-M", "", "-I", "-smux", "-r", "bogus:x"};
    run.environment = {{"SNMP_PERSISTENT_DIR", home}, {"SNMPCONFPATH", home}, {"HOME", home}};
    const ProgramResult result = RunProgram(run);
    crashes = result.signal != 0;
    for (const Complaint& complaint : ReadDaemonOutput(result.output).complaints) {
      complaints[complaint.line].push_back(complaint.kind + ": " + complaint.text);
    }
  }

  bool crashes = false;
  std::map<std::size_t, std::vector<std::string>> complaints;  // by line
};

}  // namespace devhost

#endif
