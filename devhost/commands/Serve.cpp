#include <poll.h>
#include <signal.h>

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/PageOpener.h"
#include "devhost/console/Server.h"
#include "devhost/console/TokenFile.h"
#include "devhost/system/FileText.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kServedProject{"--project", "FILE", "Project file", Takes::Path, true};
const CommandOption kServedStates{"--state", "DIR", "Keep the drivers' states in this folder, which is made when missing",
                                  Takes::Folder};
const CommandOption kPort{"--port", "N", "Listen on this port of 127.0.0.1 (default: a free one)", Takes::Text};
const CommandOption kReadOnly{"--read-only", "", "Refuse every request that would change something"};
const CommandOption kOpen{"--open", "", "Open the page in the user's browser"};
const CommandOption kTokenFile{"--token-file", "FILE",
                               "Write the address with its token into this file instead of printing it", Takes::Path};

constexpr char kFooter[] =
    "A web page on this machine in which somebody manages the SNMP settings of a project's\n"
    "devices, and an interface for programs: docs/console.md and docs/console-api.md.\n"
    "\n"
    "The address of the page is printed once. What follows its \"#\" is the token, which lets\n"
    "whoever has it use the console: do not pass it on. The console listens on 127.0.0.1\n"
    "alone, so other machines cannot reach it. Secrets stay in the drivers' process unless\n"
    "--show-secrets is given.\n"
    "\n"
    "The drivers run in a process of their own. When one of them ends or hangs it, the page\n"
    "stays, says which driver and call it was, and can start the process again.\n"
    "\n"
    "Ctrl-C, SIGTERM or SIGHUP ends the console: the drivers are unloaded, and their states\n"
    "are kept. A second one ends it at once.\n"
    "\n"
    "Exit status: 0 it was ended, and the states are kept; 1 it could not listen, the\n"
    "drivers' process did not end in order, or a state could not be kept; 2 wrong usage, or a\n"
    "project, module or state folder that is wrong.\n"
    "\n"
    "Example: look at the devices of a project without changing them.\n"
    "\n"
    "  devhost serve --project project.xml --read-only --open";

// What the host process is started with. It is this program, wherever it was installed, and whatever has replaced its file.
constexpr char kProgram[] = "/proc/self/exe";

std::vector<std::string> HostWords(const Arguments& arguments) {
  std::vector<std::string> words = {"devhost", "__host", "--project", arguments.Text(kServedProject)};
  for (const CommandOption* const option : {&kServedStates, &kModuleFolder}) {
    if (arguments.Has(*option)) {
      words.insert(words.end(), {option->name, arguments.Text(*option)});
    }
  }
  for (const CommandOption* const option : {&kReadOnly, &kShowSecrets}) {
    if (arguments.Has(*option)) {
      words.emplace_back(option->name);
    }
  }
  return words;
}

// The port, or nothing for a word that is not one.
std::optional<std::uint16_t> PortOf(const std::string& text) {
  if (text.empty()) {
    return 0;
  }
  const bool isNumber = text.size() <= 5 && text.find_first_not_of("0123456789") == std::string::npos;
  const unsigned long port = isNumber ? std::stoul(text) : 65536;
  return port <= 65535 ? std::optional(static_cast<std::uint16_t>(port)) : std::nullopt;
}

FrontOptions OptionsOf(const Arguments& arguments) {
  FrontOptions options;
  options.version = DEVHOST_VERSION;
  const std::string project = arguments.Text(kServedProject);
  options.project = project.substr(project.rfind('/') + 1);
  options.isReadOnly = arguments.Has(kReadOnly);
  options.showsSecrets = arguments.Has(kShowSecrets);
  options.program = kProgram;
  options.words = HostWords(arguments);
  return options;
}

// Passes on what the host process complains about, as far as whoever reads it keeps up: the console does not wait for a
// terminal that was stopped.
void PassOn(Console& console, std::string_view text) {
  struct pollfd ready = {console.Errors().Descriptor(), POLLOUT, 0};
  if (::poll(&ready, 1, 0) == 1 && (ready.revents & POLLOUT) != 0) {
    console.Errors().Write(text);
  }
}

ExitStatus StatusOf(const Server::End& end, Console& console) {
  if (end.signal != 0) {
    ::signal(end.signal, SIG_DFL);
    ::raise(end.signal);
  }
  if (end.hasFailed) {  // and it has said why
    return end.exitStatus == static_cast<int>(ExitStatus::Wrong) ? ExitStatus::Wrong : ExitStatus::Failed;
  }
  if (end.exitStatus != 0) {
    console.Complain("the console did not end in order: " + end.reason);
    return ExitStatus::Failed;
  }
  return ExitStatus::Good;
}

ExitStatus Serve(const Arguments& arguments, Console& console) {
  const std::optional<std::uint16_t> port = PortOf(arguments.Text(kPort));
  if (!port) {
    console.Complain("--port is \"" + arguments.Text(kPort) + "\"; allowed: 0 to 65535, where 0 stands for a free one");
    return ExitStatus::Wrong;
  }
  Server server(OptionsOf(arguments), *port, [&console](std::string_view text) { PassOn(console, text); });
  std::optional<TokenFile> file;
  if (arguments.Has(kTokenFile)) {
    file.emplace(arguments.Text(kTokenFile), server.Address() + "\n");
  }
  std::optional<PageOpener> opener;
  const auto open = [&] {
    console.Out().Write(file ? "Console: http://127.0.0.1:" + std::to_string(server.Port()) + "/, with the token in " +
                                   arguments.Text(kTokenFile) + "\n"
                             : "Console: " + server.Address() + "\n");
    if (console.Out().Error() != 0) {
      server.Stop();  // nobody can know the token
      return;
    }
    if (arguments.Has(kOpen)) {
      opener.emplace(server.Address(), console);
    }
  };
  const Server::End end = server.Run(open, [&opener] {
    if (opener) {
      opener->Tick();
    }
  });
  opener.reset();
  file.reset();
  return StatusOf(end, console);
}

}  // namespace

Command MakeServe() {
  return {"serve",
          "Manage the devices of a project in a web page on this machine",
          {kServedProject, kServedStates, kModuleFolder, kPort, kReadOnly, kShowSecrets, kOpen, kTokenFile},
          kFooter,
          &Serve};
}

}  // namespace devhost
