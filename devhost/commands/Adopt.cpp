#include "devhost/operations/Adopt.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Console.h"
#include "devhost/commands/Findings.h"
#include "devhost/json/FindingObject.h"
#include "devhost/operations/FileTarget.h"
#include "devhost/preview/FileDifference.h"
#include "devhost/secrets/Masker.h"
#include "devhost/system/FileDescriptor.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;
using Takes = CommandOption::Takes;

const CommandOption kHandWritten{"file", "", "An snmpd.conf that was written by hand", Takes::Path, true};
const CommandOption kWrite{"--write", "DIR", "Write settings.xml and snmpd.conf.patch into this new folder", Takes::Folder};
const CommandOption kAdoptJson{
    "--json", "", "Print one JSON object: file, becoming, going, staying, coming, winning, difference, written"};

constexpr char kSettingsFile[] = "settings.xml";
constexpr char kPatchFile[] = "snmpd.conf.patch";

constexpr char kFooter[] =
    "Says which lines of the file become settings, which go, and which stay below the section of\n"
    "the agent. --write makes the settings for \"devhost apply --file\" and a patch that takes the\n"
    "lines out. The file itself is not changed. Both hold communities: for this user alone. A copy\n"
    "that was fetched from elsewhere may have any name.\n"
    "\n"
    "Exit status: 0 the plan is made, and written; 1 the output cannot be written; 2 wrong usage,\n"
    "or a file or folder that is wrong.\n"
    "\n"
    "Example: let the agent manage the file of this machine.\n"
    "\n"
    "  devhost adopt /etc/snmp/snmpd.conf --write adopted\n"
    "  patch /etc/snmp/snmpd.conf adopted/snmpd.conf.patch\n"
    "  devhost apply --file /etc/snmp/snmpd.conf adopted/settings.xml --yes \\\n"
    "    --restart-command 'systemctl restart snmpd'";

void WriteNew(const std::string& path, const std::string& text) {
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  int error = file.IsOpen() ? 0 : errno;
  if (error == 0) {
    Output output(file.Get());
    output.Write(text);
    error = output.Error();
  }
  if (error != 0) {
    throw std::runtime_error("cannot write " + Quoted(path) + ": " + std::generic_category().message(error));
  }
}

void Write(const Adoption& adoption, const std::string& folder) {
  if (::mkdir(folder.c_str(), S_IRWXU) != 0) {
    const std::string reason = errno == EEXIST ? "it is there already; allowed: a folder that is not there yet"
                                               : std::generic_category().message(errno);
    throw std::runtime_error("cannot make the folder " + Quoted(folder) + ": " + reason);
  }
  WriteNew(folder + "/" + kSettingsFile, adoption.settings);
  WriteNew(folder + "/" + kPatchFile, adoption.patch);
}

void PrintJson(const Adoption& adoption, const std::string& file, const std::string& difference, const std::string& written,
               Output& out) {
  ordered_json winning = ordered_json::array();
  for (const Finding& finding : adoption.winning) {
    winning.push_back(FindingObject(finding));
  }
  PrintObject({{"file", file},
               {"becoming", adoption.becoming},
               {"going", adoption.going},
               {"staying", adoption.staying},
               {"coming", adoption.coming},
               {"winning", winning},
               {"difference", difference},
               {"written", written.empty() ? ordered_json() : ordered_json(written)}},
              out);
}

void PrintList(const char* title, const std::vector<std::string>& lines, Output& out) {
  if (!lines.empty()) {
    out.Write(std::string(title) + ":\n");
  }
  for (const std::string& line : lines) {
    out.Write("  " + OneLine(line) + "\n");
  }
}

// A path as one word of a shell.
std::string ForShell(const std::string& path) {
  constexpr char kBare[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./:,+@%-";
  if (path.find_first_not_of(kBare) == std::string::npos) {
    return path;
  }
  std::string word = "'";
  for (const char letter : path) {
    word += letter == '\'' ? "'\\''" : std::string(1, letter);
  }
  return word + "'";
}

void PrintText(const Adoption& adoption, const std::string& file, const std::string& written, Output& out) {
  PrintList("goes into the section of the agent", adoption.becoming, out);
  PrintList("goes", adoption.going, out);
  PrintList("stays below the section", adoption.staying, out);
  PrintList("comes with the section", adoption.coming, out);
  if (!adoption.winning.empty()) {
    out.Write("wins over the section or loses to it, as \"devhost drift\" will say:\n");
  }
  for (const Finding& finding : adoption.winning) {
    out.Write(FindingText(finding));
  }
  if (!written.empty()) {
    const std::string folder = written + "/";
    out.Write("next:\n");
    out.Write(adoption.patch.empty() ? "" : "  patch " + ForShell(file) + " " + ForShell(folder + kPatchFile) + "\n");
    if (!HasNameOfTarget(file)) {
      out.Write("  put the file back as snmpd.conf, and give it " + ForShell(folder + kSettingsFile) +
                " with devhost apply\n");
      return;
    }
    out.Write("  devhost apply --file " + ForShell(file) + " " + ForShell(folder + kSettingsFile) +
              " --restart-command 'systemctl restart snmpd'\n");
  }
}

ExitStatus AdoptFile(const Arguments& arguments, Console& console) {
  const std::string file = arguments.Text(kHandWritten);
  const PrintStop printStop = [&](Stage stage, const std::string& reason) {
    PrintObject({{"file", file}, {"verdict", "stopped"}, {"stage", NameOf(stage)}, {"reason", reason}}, console.Out());
  };
  return GuardStops(arguments, console, printStop, [&](Stage&) {
    const NamedText text{file, ReadFileText(file)};
    // Refuses what "devhost apply --file" would refuse when the lines are gone, but for the name: a copy may have any.
    const DriverEntry agent = AgentForFile(file, ModuleFolder(arguments));
    const Adoption adoption = Adopt(text, std::filesystem::absolute(file).string(), agent);
    Masker masker(arguments.Has(kShowSecrets));
    masker.Xml(adoption.settings);
    const std::string difference = FileDifference(text, {file + " without these lines", adoption.text}, masker);
    const std::string written = arguments.Text(kWrite);
    if (!written.empty()) {
      Write(adoption, written);
    }
    if (arguments.Has(kAdoptJson)) {
      PrintJson(adoption, file, difference, written, console.Out());
    } else {
      PrintText(adoption, file, written, console.Out());
      console.Out().Write(arguments.Has(kDiff) ? difference : "");
    }
    return ExitStatus::Good;
  });
}

}  // namespace

Command MakeAdopt() {
  return {"adopt",
          "Say how a hand-written file becomes a managed one",
          {kHandWritten, kModuleFolder, kWrite, kDiff, kAdoptJson, kShowSecrets},
          kFooter,
          &AdoptFile};
}

}  // namespace devhost
