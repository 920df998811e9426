#include "devhost/check/DaemonParser.h"

#include <system_error>

#include "devhost/check/Rules.h"
#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/snmpd/OwnWords.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// What the daemon says about the file with this path; `name` is what its owner calls it. Throws ProgramError, also when the
// daemon does not end by itself.
std::string Parse(const std::string& program, const std::string& path, const std::string& name) {
  // It has no place for files of its own: what it would store there are users and passphrases.
  const std::string home = "/dev/null/none";
  ProgramRun run;
  // The address cannot be opened: the daemon ends when it has read everything.
  run.words = {program, "-f", "-Le", "-C", "-c", path, "-m", "", "-M", "", "-I", "-smux", "-r", "bogus:x"};
  run.environment = {{"SNMP_PERSISTENT_DIR", home}, {"SNMPCONFPATH", home}, {"HOME", home}};
  const ProgramResult result = RunProgram(run);
  if (result.late || result.tooLong || result.signal != 0) {
    throw ProgramError(std::string("snmpd ") +
                       (result.late      ? "did not come to an end"
                        : result.tooLong ? "complained without end"
                                         : "was killed") +
                       " when it read " + Quoted(name));
  }
  return result.output;
}

}  // namespace

std::string AskDaemon(const DaemonText& text, Report& report) {
  const std::string program = FindProgram("snmpd");
  if (program.empty()) {
    return "snmpd is not installed, so it cannot be asked about " + Quoted(report.File()) +
           "; install the package snmpd, or leave --daemon out";
  }
  try {
    const MemoryFile file(text.Text());
    for (const Complaint& complaint : ReadDaemonOutput(Parse(program, file.Path(), report.File())).complaints) {
      report.Begin(kDaemonRule, Severity::Error, complaint.file == file.Path() ? text.NumberOf(complaint.line) : 0);
      report.Add(
          "the daemon says: " + complaint.kind + ": " + (report.ShowsSecrets() ? complaint.text : OwnWords(complaint.text)),
          "fix the line; snmpd.conf(5) describes what it may hold");
    }
  } catch (const ProgramError& error) {
    return OneLine(error.what());
  } catch (const std::system_error& error) {
    return OneLine(error.what());
  }
  return "";
}

}  // namespace devhost
