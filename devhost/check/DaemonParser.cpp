#include "devhost/check/DaemonParser.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "devhost/check/Rules.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/system/PrivateFolder.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Finds lines by their numbers; fast when they come in order, as those of complaints do.
class LineFinder {
 public:
  explicit LineFinder(std::string_view text) : m_text(text), m_rest(text) {}

  std::string_view Line(std::size_t number) {
    if (number < m_number) {
      m_rest = m_text;
      m_number = 1;
    }
    for (; m_number < number && !m_rest.empty(); ++m_number) {
      m_rest.remove_prefix(std::min(m_rest.find('\n'), m_rest.size() - 1) + 1);
    }
    return m_rest.substr(0, m_rest.find('\n'));
  }

 private:
  std::string_view m_text;
  std::string_view m_rest;
  std::size_t m_number = 1;
};

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

std::string Parse(const std::string& program, const std::string& path, const std::string& home) {
  ProgramRun run;
  // The address cannot be opened: the daemon ends when it has read everything.
  run.words = {program, "-f", "-Le", "-C", "-c", path, "-m", "", "-M", "", "-I", "-smux", "-r", "bogus:x"};
  run.environment = {{"SNMP_PERSISTENT_DIR", home}, {"SNMPCONFPATH", home}, {"HOME", home}};
  const ProgramResult result = RunProgram(run);
  if (result.late || result.tooLong || result.signal != 0) {
    throw DaemonParserError(std::string("snmpd ") +
                            (result.late      ? "did not come to an end"
                             : result.tooLong ? "complained without end"
                                              : "was killed") +
                            " when it read " + Quoted(path));
  }
  return result.output;
}

}  // namespace

void AskDaemon(const std::string& path, const std::string& name, const std::string& text, Report& report) {
  const std::string program = FindProgram("snmpd");
  if (program.empty()) {
    throw DaemonParserError("snmpd is not installed, so it cannot be asked about " + Quoted(name) +
                            "; install the package snmpd, or leave --daemon out");
  }
  try {
    const PrivateFolder home;
    // Commas separate files for the daemon.
    const bool readable = !path.empty() && path.find(',') == std::string::npos;
    const std::string file = readable ? std::filesystem::absolute(path).string() : home.Write("checked.conf", text);
    LineFinder lines(text);
    report.Begin(kDaemonRule, Severity::Error);
    for (const Complaint& complaint : ReadDaemonOutput(Parse(program, file, home.Path())).complaints) {
      const bool own = complaint.file == file;
      const std::string_view line = own ? lines.Line(complaint.line) : std::string_view();
      report.Add(
          own ? complaint.line : 0,
          "the daemon says: " + (own ? "" : OneLine(complaint.file) + ", line " + std::to_string(complaint.line) + ": ") +
              complaint.kind + ": " + (report.ShowsSecrets() ? complaint.text : Masked(complaint.text, line)),
          "mend the line; snmpd.conf(5) tells what it may hold");
    }
  } catch (const ProgramError& error) {
    throw DaemonParserError(error.what());
  } catch (const FolderError& error) {
    throw DaemonParserError(error.what());
  }
}

}  // namespace devhost
