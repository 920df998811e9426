#include <cctype>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "devhost/commands/Commands.h"
#include "devhost/commands/EmbeddedFiles.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kName{"name", "", "Name of the driver: lower-case letters, digits and _, a letter first", Takes::Text,
                          true};
const CommandOption kFolder{"folder", "", "The folder to make; it must not be there yet", Takes::Folder, true};

constexpr char kFooter[] =
    "Writes a driver of an SNMP-capable device that builds and works: its source, what CMake\n"
    "and make need, a project with the agent, and a session that tests it. Its README.md says\n"
    "how to go on.\n"
    "\n"
    "Exit status: 0 written; 1 a file could not be written; 2 wrong usage, a name that is not\n"
    "allowed, or a folder that is there already or cannot be made.\n"
    "\n"
    "Example: start a driver for a kettle.\n"
    "\n"
    "  devhost new-driver kettle kettle";

bool IsLower(char c) {
  return c >= 'a' && c <= 'z';
}

bool IsDriverName(const std::string& name) {
  bool isAllowed = !name.empty() && IsLower(name.front());
  for (const char c : name) {
    isAllowed = isAllowed && (IsLower(c) || (c >= '0' && c <= '9') || c == '_');
  }
  return isAllowed;
}

// "TeaKettle" for "tea_kettle".
std::string ClassName(const std::string& name) {
  std::string result;
  bool startsWord = true;
  for (const char c : name) {
    if (c != '_') {
      result += startsWord ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    startsWord = c == '_';
  }
  return result;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// Returns why a file could not be written, or "".
std::string WriteFiles(const std::string& name, const std::filesystem::path& folder) {
  const auto renamed = [&name](const std::string& text) {
    return Replaced(Replaced(text, "example_device", name), "ExampleDevice", ClassName(name));
  };
  for (const EmbeddedFile& example : ExampleFiles()) {
    const std::filesystem::path path = folder / renamed(example.name);
    std::ofstream file(path, std::ios::binary);
    file << renamed(example.text);
    file.close();
    if (!file) {
      return "cannot write " + Quoted(path.string());
    }
  }
  return "";
}

ExitStatus NewDriver(const Arguments& arguments, Console& console) {
  const std::string name = arguments.Text(kName);
  const std::string folder = arguments.Text(kFolder);
  if (!IsDriverName(name)) {
    console.Complain("a driver cannot have the name " + Quoted(name) +
                     "; allowed: lower-case letters, digits and _, a letter first");
    return ExitStatus::Wrong;
  }
  std::error_code error;
  if (!std::filesystem::create_directory(folder, error)) {
    console.Complain("cannot make the folder " + Quoted(folder) + ": " +
                     (error ? error.message() : "it is there already; allowed: a folder that is not there yet"));
    return ExitStatus::Wrong;
  }
  const std::string problem = WriteFiles(name, folder);
  if (!problem.empty()) {
    console.Complain(problem);
    return ExitStatus::Failed;
  }
  console.Out().Write("wrote the driver " + name + " into " + OneLine(folder) + "; go on with its README.md\n");
  return ExitStatus::Good;
}

}  // namespace

Command MakeNewDriver() {
  return {"new-driver", "Write a driver of a device that builds, to start from", {kName, kFolder}, kFooter, &NewDriver};
}

}  // namespace devhost
