#include "devhost/check/DaemonParser.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "devhost/check/Rules.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/snmpd/LineCutter.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// The daemon quotes words of the line that it complains of. Those that are shown masked elsewhere are so here.
std::string Masked(std::string words, std::string_view line) {
  // A target that is missing leaves the community where the host belongs.
  constexpr std::string_view kNoTarget = "trap2sink    ";
  const bool noTarget = line.substr(0, kNoTarget.size()) == kNoTarget;
  const std::string masked = noTarget ? "trap2sink" : MaskConfigLine(line);
  if (masked == line) {
    return words;
  }
  for (std::size_t at = 0; at < line.size();) {
    const std::size_t end = std::min(line.find_first_of(" \t\"'\r", at), line.size());
    const std::string_view word = line.substr(at, end - at);
    at = end + 1;
    // The complaint first: it is short, the line may be anything.
    if (word.empty() || !Contains(words, word) || Contains(masked, word)) {
      continue;
    }
    for (std::size_t found = words.find(word); found != std::string::npos;
         found = words.find(word, found + sizeof kMask - 1)) {
      words.replace(found, word.size(), kMask);
    }
  }
  return words;
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
    std::vector<std::string_view> lines;
    for (LineCutter cutter(text); cutter.Next();) {
      lines.push_back(cutter.Line());
    }
    for (const Complaint& complaint : ReadDaemonOutput(Parse(program, file)).complaints) {
      const bool isOwn = complaint.file == file;
      const bool hasLine = isOwn && complaint.line != 0 && complaint.line <= lines.size();
      const std::string said =
          report.ShowsSecrets() ? complaint.text : Masked(complaint.text, hasLine ? lines[complaint.line - 1] : "");
      report.Begin(kDaemonRule, Severity::Error, isOwn ? complaint.line : 0);
      report.Add(
          "the daemon says: " + (isOwn ? "" : OneLine(complaint.file) + ", line " + std::to_string(complaint.line) + ": ") +
              complaint.kind + ": " + said,
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
