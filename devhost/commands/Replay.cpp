#include "devhost/replay/Replay.h"

#include <algorithm>
#include <string>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/engine/HostError.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kConversations{"paths", "", "Conversations, their folders, or a folder of such folders", Takes::Paths,
                                   true};

constexpr char kFooter[] =
    "A conversation is what \"devhost run --json --show-secrets\" has printed, in a file\n"
    "conversation.ndjson with its project.xml beside it. What the tool and the people at the\n"
    "devices did is played again to the drivers of the project, and what comes of it is\n"
    "compared. The first difference is shown and ends the conversation.\n"
    "\n"
    "The folder of the conversation is copied first, and {project} is the copy, so the files\n"
    "there stay as they are. What the project names outside of its folder is the real thing.\n"
    "Times, process ids, addresses, paths of modules, and members that a line lacks are not\n"
    "compared, nor what a script printed or expected.\n"
    "\n"
    "contract/conversations/ has conversations with the agent. A tool can be tested with them\n"
    "without any host: docs/write-a-configuration-tool.md.\n"
    "\n"
    "Exit status: 0 no difference; 1 a difference; 2 wrong usage, or a conversation or project\n"
    "that cannot be read or played.\n"
    "\n"
    "Example: does this build of the agent still answer as before?\n"
    "\n"
    "  devhost replay contract/conversations";

ExitStatus ReplayOne(const std::string& file, const Arguments& arguments, Console& console) {
  Masker secrets(arguments.Has(kShowSecrets));
  ReplayResult result;
  try {
    result = Replay(file, ModuleFolder(arguments), secrets);
  } catch (const HostError& error) {
    console.Complain(secrets.Text(error.what()));
    return ExitStatus::Wrong;
  }
  if (result.difference.what.empty()) {
    console.Out().Write(OneLine(file) + ": " + Counted(result.lines, "line") + ", no difference\n");
    return ExitStatus::Good;
  }
  std::string text = OneLine(file) + ":" + std::to_string(result.line) + ": " + result.difference.what + "\n";
  for (const std::string& detail : result.difference.details) {
    text += "  " + detail + "\n";
  }
  console.Out().Write(text);
  return ExitStatus::Failed;
}

ExitStatus ReplayAll(const Arguments& arguments, Console& console) {
  ExitStatus worst = ExitStatus::Good;
  for (const std::string& path : arguments.Texts(kConversations)) {
    for (const std::string& file : FindConversations(path)) {
      worst = std::max(worst, ReplayOne(file, arguments, console));
    }
  }
  return worst;
}

}  // namespace

Command MakeReplay() {
  return {"replay",
          "Play recorded conversations again and compare what comes back",
          {kConversations, kModuleFolder, kShowSecrets},
          kFooter,
          &ReplayAll};
}

}  // namespace devhost
