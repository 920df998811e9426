#include "devhost/check/DaemonParser.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "devhost/check/Rules.h"
#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/snmpd/OwnWords.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// The file that a complaint is about, where that is not the one that was asked about. A complaint about a text that the
// daemon quotes names none.
std::string OtherFile(const std::string& file) {
  std::error_code ignored;
  const bool isFile = file.compare(0, 1, "/") == 0 && std::filesystem::is_regular_file(file, ignored);
  return isFile ? OneLine(file) : "another file";
}

// What the daemon says about the file. Throws ProgramError, also when the daemon does not end by itself.
std::string Parse(const std::string& program, const std::string& path) {
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
                       " when it read " + Quoted(path));
  }
  return result.output;
}

}  // namespace

std::string AskDaemon(const std::string& path, const std::string& text, Report& report) {
  const std::string program = FindProgram("snmpd");
  if (program.empty()) {
    return "snmpd is not installed, so it cannot be asked about " + Quoted(report.File()) +
           "; install the package snmpd, or leave --daemon out";
  }
  try {
    // Commas separate files for the daemon.
    const std::string own = path.empty() ? "" : std::filesystem::absolute(path).string();
    const bool isReadable = !own.empty() && own.find(',') == std::string::npos;
    const MemoryFile copy(isReadable ? std::string_view() : text);
    const std::string file = isReadable ? own : copy.Path();
    for (const Complaint& complaint : ReadDaemonOutput(Parse(program, file)).complaints) {
      const bool isOwn = complaint.file == file;
      report.Begin(kDaemonRule, Severity::Error, isOwn ? complaint.line : 0);
      report.Add("the daemon says: " +
                     (isOwn ? "" : OtherFile(complaint.file) + ", line " + std::to_string(complaint.line) + ": ") +
                     complaint.kind + ": " + (report.ShowsSecrets() ? complaint.text : OwnWords(complaint.text)),
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
