#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "devhost/check/CheckFile.h"
#include "devhost/check/InstalledDaemon.h"
#include "devhost/check/Owners.h"
#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kFiles{"files", "", "The files, - for standard input", Takes::Paths, true};
const CommandOption kDaemon{"--daemon", "", "Have the parser of the installed snmpd read the files, too"};

const CommandOption kOff{"--off", "", "SNMP is switched off on the device: say who is let in all the same"};

const CommandOption kOwners{"--owners", "", "Say who has written which lines, instead of judging them"};

constexpr char kFooter[] =
    "Each finding is one line, FILE:LINE: SEVERITY: reason [RULE], and a second one with what\n"
    "to do. An error means that the daemon or the agent does something else than the file\n"
    "seems to say, or that text will be lost; a warning, that it may surprise; a note, which is\n"
    "not counted as a finding, that a device which has lost its settings would misread the\n"
    "line. The rules are in docs/check-rules.md. An installed snmpd is asked for the names of\n"
    "its directives. With --daemon its parser reads the directives that it only remembers, and\n"
    "no others: it opens no log, port or connection and runs no code for a file.\n"
    "With --owners there is a line for each range of lines instead: FILE:FIRST-LAST: who has\n"
    "written it, and whether the next write of the agent keeps it.\n"
    "\n"
    "Exit status: 0 no finding, or --owners; 1 findings; 2 wrong usage, a file that cannot be read, or a\n"
    "daemon that cannot be asked.\n"
    "\n"
    "Example: look at this machine's file, with the daemon's own parser, too.\n"
    "\n"
    "  devhost check --daemon /etc/snmp/snmpd.conf";

// Says what was judged by name only: where there is a parser that knows more, its user hears of it.
void PrintHint(const std::string& name, const Unjudged& unjudged, bool daemonWasAsked, Output& out) {
  const std::size_t count = daemonWasAsked ? unjudged.others : unjudged.forDaemon;
  if (count != 0) {
    out.Write(OneLine(name) + ": " + Counted(count, "directive") + " judged by name only; " +
              (daemonWasAsked ? "the daemon was not given what would open ports, run programs or name files\n"
                              : "--daemon lets the installed snmpd judge more\n"));
  }
}

struct OwnerWords {
  const char* name;  // in JSON
  const char* text;
};

// Without a section, the next write puts one above all.
OwnerWords WordsOf(Owner owner, bool hasSection) {
  switch (owner) {
    case Owner::Section:
      return {"section", "the section of the agent, which each write makes anew"};
    case Owner::AboveIt:
      return {"above", "by hand, above the section (the agent drops this text)"};
    case Owner::BehindIt:
      return {"behind", "by hand, directly behind the section (the agent drops this text)"};
    case Owner::OldSection:
      return {"old-section", "a section that the agent keeps as it is"};
    case Owner::Included:
      return {"included", "by hand, included by "};
    case Owner::Kept:
      break;
  }
  return {"kept", hasSection ? "by hand, below the section (kept)" : "by hand (kept below the section that will come)"};
}

void PrintOwners(const std::string& name, const std::vector<OwnedLines>& owners, bool json, Output& out) {
  const bool hasSection =
      std::any_of(owners.begin(), owners.end(), [](const OwnedLines& lines) { return lines.owner == Owner::Section; });
  nlohmann::ordered_json objects = nlohmann::ordered_json::array();
  for (const OwnedLines& lines : owners) {
    const OwnerWords words = WordsOf(lines.owner, hasSection);
    nlohmann::ordered_json object = {{"file", lines.file.empty() ? name : lines.file},
                                     {"first", lines.first},
                                     {"last", lines.last},
                                     {"owner", words.name}};
    if (lines.owner == Owner::Included) {
      object["includedBy"] = lines.includedBy;
    }
    objects.push_back(object);
    out.Write(json ? ""
                   : OneLine(lines.file.empty() ? name : lines.file) + ":" + std::to_string(lines.first) + "-" +
                         std::to_string(lines.last) + ": " + words.text + OneLine(lines.includedBy) + "\n");
  }
  if (json) {
    PrintObject({{"file", name}, {"owners", objects}}, out);
  }
}

ExitStatus CheckOne(const std::string& path, const Circumstances& circumstances, const Arguments& arguments,
                    Console& console) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : path;
  const CheckMeans means{arguments.Has(kDaemon), arguments.Has(kShowSecrets), circumstances};
  try {
    if (arguments.Has(kOwners)) {
      const std::string text = isInput ? ReadDescriptorText(STDIN_FILENO, name) : ReadFileText(path);
      const bool isRegular = !isInput && std::filesystem::is_regular_file(path);
      PrintOwners(name, OwnersOf(text, isRegular ? std::filesystem::absolute(path).string() : ""), arguments.Has(kJson),
                  console.Out());
      return ExitStatus::Good;
    }
    const CheckResult result =
        isInput ? CheckText(ReadDescriptorText(STDIN_FILENO, name), name, means) : CheckFile(path, means);
    if (!result.daemonError.empty()) {
      console.Complain(result.daemonError);
    }
    const ExitStatus status = PrintFindings(result.findings, name, arguments.Has(kJson), console.Out());
    if (circumstances.directives != nullptr && !arguments.Has(kJson)) {
      PrintHint(name, result.unjudged, arguments.Has(kDaemon), console.Out());
    }
    return result.daemonError.empty() ? status : ExitStatus::Wrong;
  } catch (const FileError& error) {
    console.Complain(error.what());
    return ExitStatus::Wrong;
  }
}

// Each file is checked whatever became of the one before.
ExitStatus Check(const Arguments& arguments, Console& console) {
  const std::optional<DirectiveNames> directives = AskForDirectiveNames();
  Circumstances circumstances;
  circumstances.isOff = arguments.Has(kOff);
  circumstances.directives = directives ? &*directives : nullptr;
  ExitStatus status = ExitStatus::Good;
  for (const std::string& path : arguments.Texts(kFiles)) {
    status = std::max(status, CheckOne(path, circumstances, arguments, console));
  }
  return status;
}

}  // namespace

Command MakeCheck() {
  return {"check",
          "Say what in an snmpd.conf will surprise its owner",
          {kFiles, kJson, kDaemon, kOff, kOwners, kShowSecrets},
          kFooter,
          &Check};
}

}  // namespace devhost
