#include "devhost/conform/CheckProcess.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "devhost/conform/Trial.h"
#include "devhost/system/FileText.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Status = Outcome::Status;

constexpr char kResult[] = "/result";
constexpr char kSlot[] = "/slot";
constexpr std::size_t kMostLines = 100;  // of what a driver has printed

// The text of a file that a check may have left; "" for none.
std::string ReadLeft(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::string ResultText(const Outcome& outcome) {
  XmlElement result;
  result.name = "result";
  result.attributes = {{"status", NameOf(outcome.status)}, {"slot", outcome.slot}, {"message", OneLine(outcome.message)}};
  result.text = outcome.script;
  return XmlText(result, XmlStyle::Compact);
}

// False when the process has left none, or not all of it.
bool ReadResult(const std::string& text, Outcome& outcome) {
  try {
    const XmlElement result = ReadXml(text);
    for (const Status status : {Status::Pass, Status::Fail, Status::Unjudged, Status::Broken}) {
      if (*result.FindAttribute("status") == NameOf(status)) {
        outcome.status = status;
        outcome.slot = *result.FindAttribute("slot");
        outcome.message = *result.FindAttribute("message");
        outcome.script = result.text;
        return true;
      }
    }
  } catch (const XmlError&) {
    // The process has ended before that.
  }
  return false;
}

// The last lines of what was printed.
std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(OneLine(line));
  }
  if (lines.size() > kMostLines) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(kMostLines));
  }
  return lines;
}

std::string Seconds(std::chrono::milliseconds time) {
  return Counted(static_cast<std::size_t>(time.count() / 1000), "second");
}

// A process that was killed: because of one call, or because of all together.
void ExplainLate(const Conformance& conformance, const Trail::LastCall& call, Outcome& outcome) {
  outcome.slot = call.slot;
  if (call.age >= conformance.deadline) {
    outcome.status = Status::Hang;
    outcome.message = (call.slot.empty() ? "the check" : "the call") + (" has not come back for " + Seconds(call.age));
    return;
  }
  // Calls that come back, however late, keep the contract.
  outcome.status = Status::Unjudged;
  outcome.slot.clear();
  outcome.message = "the check was not over after " + Seconds(conformance.longest) +
                    (call.slot.empty() ? "" : "; the last call was " + call.slot);
}

// How a process ended by itself that has left no result.
void Explain(const ProgramResult& run, const Trail::LastCall& call, Outcome& outcome) {
  outcome.slot = call.slot;
  outcome.status = Status::Crash;
  outcome.message = run.tooLong       ? "the driver has printed more than 16 MiB"
                    : run.signal != 0 ? "the process was ended by signal " + std::to_string(run.signal)
                                      : "the process has ended with status " + std::to_string(run.exitStatus);
  // The host says who it was.
  for (const std::string& line : outcome.log) {
    outcome.message = StartsWith(line, "devhost: the process") ? line.substr(9) : outcome.message;
  }
}

ProgramRun RunOf(const Conformance& conformance, const Check& check, const std::string& folder) {
  ProgramRun run;
  run.words = conformance.runner;
  run.words.insert(run.words.end(), {conformance.program, "conform", "--run-check", check.id, "--module-dir",
                                     FolderOf(conformance.agent), "--seed", std::to_string(conformance.seed), "--duration",
                                     std::to_string(conformance.sessionTime.count() / 1000)});
  if (!conformance.profileFile.empty()) {
    run.words.insert(run.words.end(), {"--profile", conformance.profileFile});
  }
  run.words.push_back(conformance.module);
  run.folder = folder;
  run.deadline = conformance.longest + (GroupOf(check) == "fuzz" ? conformance.sessionTime : std::chrono::milliseconds());
  run.isLate = [&conformance, folder] { return Trail::Read(folder + kSlot).age >= conformance.deadline; };
  return run;
}

}  // namespace

Outcome RunCheckProcess(const Conformance& conformance, const Check& check, const std::string& folder) {
  std::filesystem::create_directory(folder);
  Outcome outcome;
  outcome.check = &check;
  try {
    const ProgramResult result = RunProgram(RunOf(conformance, check, folder));
    const Trail::LastCall call = Trail::Read(folder + kSlot);
    outcome.log = LinesOf(result.output);
    if (result.late) {
      ExplainLate(conformance, call, outcome);
    } else if (!ReadResult(ReadLeft(folder + kResult), outcome)) {
      Explain(result, call, outcome);
    }
  } catch (const ProgramError& error) {
    outcome.status = Status::Broken;
    outcome.message = error.what();
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return outcome;
}

void LeaveOutcome(const Outcome& outcome, const std::string& folder) {
  std::ofstream(folder + kResult, std::ios::binary) << ResultText(outcome);
}

}  // namespace devhost
