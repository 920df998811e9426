#include <signal.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/commands/FleetOutput.h"
#include "devhost/commands/RotateOptions.h"
#include "devhost/fleet/FleetRecord.h"
#include "devhost/fleet/FleetRun.h"
#include "devhost/fleet/Inventory.h"
#include "devhost/fleet/Waves.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kOperation{
    "operation",   "",   "What is done with each device: apply, preview, drift, probe, check, rotate",
    Takes::Choice, true, {"apply", "preview", "drift", "probe", "check", "rotate"}};
const CommandOption kInventory{"inventory", "", "File that lists the devices", Takes::Path, true};
const CommandOption kJobs{"--jobs", "N", "How many devices at a time (default: 8)", Takes::Text};
const CommandOption kWave{"--wave", "LIST", "Waves, as in 1,10%,100%: how many devices have had their turn after each",
                          Takes::Text};
const CommandOption kDeadline{"--deadline", "SECONDS", "The most time for one device (default: 300)", Takes::Text};
const CommandOption kRecord{"--record", "FILE", "Remember in this file which devices are done (apply, rotate)", Takes::Path};
const CommandOption kResume{"--resume", "", "Go on where the run of the record has ended (apply, rotate)"};
const CommandOption kKeepGoing{"--keep-going", "", "Go on with the other devices when one has failed (apply, rotate)"};
const CommandOption kFleetJson{"--json", "", "Print one JSON object for each device, and one at the end"};

constexpr char kFooter[] =
    "Runs \"devhost apply\", \"preview\", \"drift\", \"probe\", \"check\" or \"rotate\" for each device of\n"
    "the inventory, in a process of its own. The inventory may stand before the operation.\n"
    "docs/fleet.md describes inventories. In a settings file, {deviceId} stands for the id of the\n"
    "device, so several devices can share one. All files of settings and communities are read\n"
    "before the first device is touched.\n"
    "\n"
    "rotate takes the steps of \"devhost rotate\": --read and --write, --status, --finish, --abort.\n"
    "All devices get the same communities. A device on which another rotation is open has failed.\n"
    "\n"
    "When a change has failed on a device, what runs is brought to its end, and no other device is\n"
    "changed, unless --keep-going says so. SIGINT, SIGTERM and SIGHUP end what runs; the report says\n"
    "what was and what was not done. --resume leaves out the devices that have got the same settings,\n"
    "or had the same step of a rotation, in the run of the record. When all is done, the record is\n"
    "removed.\n"
    "\n"
    "Exit status: 0 all is well: changed, waiting, unchanged, no drift, no finding; 1 a change has\n"
    "failed on a device, or it had no turn, or, without a change, something would change, has\n"
    "drifted or was found; 2 a wrong command line, inventory, project, file or record, and nothing\n"
    "was started, or, without a change, a device that could not be judged.\n"
    "\n"
    "Example: give all devices their settings, the first one alone.\n"
    "\n"
    "  devhost fleet apply fleet.xml --yes --wave 1,100% --record fleet.record\n"
    "\n"
    "Example: give all devices the read community in the file new, and end that a week later.\n"
    "\n"
    "  devhost fleet rotate fleet.xml --read new --yes\n"
    "  devhost fleet rotate fleet.xml --finish --yes";

// What the command line asks for cannot be done, and nothing was started.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

unsigned int NumberOf(const Arguments& arguments, const CommandOption& option, unsigned int byDefault, unsigned int most) {
  if (!arguments.Has(option)) {
    return byDefault;
  }
  const std::string text = arguments.Text(option);
  unsigned int number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || stop != text.data() + text.size() || number == 0 || number > most) {
    throw UsageError(std::string(option.name) + " is " + Quoted(text) + "; allowed: a whole number from 1 to " +
                     std::to_string(most));
  }
  return number;
}

// Refuses options that the operation does not have.
void RequireOwnOptions(const std::string& operation, const Arguments& arguments) {
  const bool changes = operation == "apply" || operation == "rotate";
  for (const CommandOption* const option : {&kYes, &kDryRun, &kAccept, &kRecord, &kResume, &kKeepGoing, &kNoProbe}) {
    if (!changes && arguments.Has(*option)) {
      throw UsageError(std::string(option->name) + " is for apply and rotate; allowed with " + operation + ": leave it out");
    }
  }
  if (operation != "drift" && arguments.Has(kAskDaemon)) {
    throw UsageError(std::string(kAskDaemon.name) + " is for drift; allowed with " + operation + ": leave it out");
  }
  for (const CommandOption* const option : {&kRead, &kWrite, &kStatus, &kFinish, &kAbort}) {
    if (operation != "rotate" && arguments.Has(*option)) {
      throw UsageError(std::string(option->name) + " is for rotate; allowed with " + operation + ": leave it out");
    }
  }
}

FleetOperation OperationOf(const Arguments& arguments) {
  const std::string name = arguments.Text(kOperation);
  RequireOwnOptions(name, arguments);
  if (name == "rotate") {
    RequireStep(arguments);
  }
  const bool mayChange = name == "apply" || (name == "rotate" && !arguments.Has(kStatus));
  if (mayChange && arguments.Has(kYes) == arguments.Has(kDryRun)) {
    throw UsageError("nobody is asked for each device of a fleet; allowed with " + name + ": either --yes or --dry-run");
  }
  FleetOperation operation;
  operation.name = name;
  operation.changes = mayChange && !arguments.Has(kDryRun);
  operation.takesSettings = name == "apply" || name == "preview";
  if (arguments.Has(kResume) && !arguments.Has(kRecord)) {
    throw UsageError("--resume needs to know the record; allowed: --record FILE --resume");
  }
  if (arguments.Has(kRecord) && !operation.changes) {
    throw UsageError("--record is for a run that changes something; allowed with --dry-run and --status: leave it out");
  }
  return operation;
}

[[noreturn]] void Refuse(const std::string& inventory, const FleetDevice& device, const std::string& problem) {
  throw InventoryError(inventory + ":" + std::to_string(device.line) + ": " + device.name + " of " + device.project + " " +
                       problem);
}

// The settings of each device, as they are when the command begins.
class SettingsTexts {
 public:
  std::string Of(const FleetDevice& device) {
    const auto [place, isNew] = m_texts.try_emplace(device.settings);
    if (isNew) {
      place->second = ReadRegularFile(device.settings);
    }
    constexpr char kPlaceholder[] = "{deviceId}";
    std::string text = place->second;
    for (std::size_t at = 0; (at = text.find(kPlaceholder, at)) != std::string::npos;) {
      text.replace(at, sizeof kPlaceholder - 1, std::to_string(device.id));
    }
    return text;
  }

 private:
  std::map<std::string, std::string> m_texts;  // by path
};

// What the programs read of all communities: files and standard input are read once, before the first device is touched.
std::string CommunityLines(const Arguments& arguments) {
  const Communities communities = ReadCommunities(arguments);
  return (communities.read.empty() ? "" : communities.read + "\n") +
         (communities.write.empty() ? "" : communities.write + "\n");
}

// The words behind the program and the operation.
std::vector<std::string> WordsFor(const FleetDevice& device, const FleetOperation& operation, const Arguments& arguments) {
  if (operation.name == "check") {
    return {"--json", "--", device.file};
  }
  std::vector<std::string> words = {"--json", "--module-dir", ModuleFolder(arguments), "--project", device.project};
  if (!device.state.empty()) {
    words.insert(words.end(), {"--state", device.state});
  }
  for (const CommandOption* const option : {&kYes, &kDryRun}) {
    if (arguments.Has(*option)) {
      words.emplace_back(option->name);
    }
  }
  if (arguments.Has(kAccept)) {
    words.insert(words.end(), {kAccept.name, arguments.Text(kAccept)});
  }
  words.push_back(std::to_string(device.id));
  if (operation.takesSettings) {
    words.emplace_back("-");
  }
  for (const CommandOption* const option : {&kStatus, &kFinish, &kAbort, &kNoProbe, &kAskDaemon}) {
    if (arguments.Has(*option)) {
      words.emplace_back(option->name);
    }
  }
  for (const CommandOption* const option : {&kRead, &kWrite}) {
    if (arguments.Has(*option)) {
      words.insert(words.end(), {option->name, "-"});
    }
  }
  return words;
}

std::vector<FleetTask> TasksFor(const std::vector<FleetDevice>& devices, const FleetOperation& operation,
                                const Arguments& arguments) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  const std::string inventory = arguments.Text(kInventory);
  SettingsTexts settings;
  const std::string communities = CommunityLines(arguments);
  std::vector<FleetTask> tasks;
  tasks.reserve(devices.size());
  for (const FleetDevice& device : devices) {
    if (operation.takesSettings && device.settings.empty()) {
      Refuse(inventory, device, "has no settings; write settings=\"FILE\"");
    }
    if (operation.name == "check" && device.file.empty()) {
      Refuse(inventory, device, "has no file that could be checked; write file=\"FILE\"");
    }
    FleetTask task;
    task.words = {program, operation.name};
    const std::vector<std::string> more = WordsFor(device, operation, arguments);
    task.words.insert(task.words.end(), more.begin(), more.end());
    task.input = operation.takesSettings ? settings.Of(device) : communities;
    // Only one host at a time uses a state folder, by whatever name.
    task.alone = device.state.empty() ? "" : std::filesystem::weakly_canonical(device.state).string();
    tasks.push_back(std::move(task));
  }
  return tasks;
}

// What tells the steps of a rotation apart, from each other and from settings, in a record.
std::string StepOf(const Arguments& arguments) {
  if (arguments.Text(kOperation) != "rotate") {
    return "";
  }
  std::string step = "rotate";
  for (const CommandOption* const option : {&kRead, &kWrite, &kFinish, &kAbort}) {
    step += arguments.Has(*option) ? std::string(" ") + option->name : "";
  }
  return step + "\n";
}

// What is known of a run while it goes on, and at its end.
class Rollout {
 public:
  Rollout(const Arguments& arguments, Console& console)
      : m_console(console),
        m_operation(OperationOf(arguments)),
        m_devices(ReadInventory(arguments.Text(kInventory), ModuleFolder(arguments))),
        m_step(StepOf(arguments)),
        m_tasks(TasksFor(m_devices, m_operation, arguments)),
        m_output(m_devices, arguments.Has(kFleetJson), console) {
    m_limits.jobs = NumberOf(arguments, kJobs, 8, 1000);
    m_limits.deadline = std::chrono::seconds(NumberOf(arguments, kDeadline, 300, 86400));
    // A run that only looks goes through all devices: what it finds on one says nothing about the others.
    m_limits.stopsAtFailure = m_operation.changes && !arguments.Has(kKeepGoing);
    m_limits.waves = WaveEnds(arguments.Text(kWave), m_devices.size());
    if (arguments.Has(kRecord)) {
      m_record.emplace(arguments.Text(kRecord), arguments.Has(kResume));
      for (std::size_t i = 0; i != m_tasks.size(); ++i) {
        m_tasks[i].isDone = m_record->Has(KeyOf(i));
      }
    }
  }

  ExitStatus Run() {
    const FleetOutcome outcome = RunFleet(
        m_tasks, m_limits, [this](const FleetEnd& end) { return JudgeFleetEnd(m_operation, end); },
        [this](std::size_t number, std::size_t wave, const FleetResult& result) { Take(number, wave, result); });
    m_output.Report(outcome);
    const ExitStatus status = std::max(m_recordStatus, FleetStatus(m_operation, outcome.results));
    if (status == ExitStatus::Good && m_record) {
      GuardRecord([this] { m_record->Remove(); });
    }
    if (outcome.signal != 0) {
      // Whoever waits for the program learns that a signal has ended it.
      ::signal(outcome.signal, SIG_DFL);
      ::raise(outcome.signal);
    }
    return std::max(m_recordStatus, status);
  }

 private:
  std::string KeyOf(std::size_t number) const {
    return FleetRecord::KeyOf(m_devices[number].project, m_devices[number].name, m_step + m_tasks[number].input);
  }

  void Take(std::size_t number, std::size_t wave, const FleetResult& result) {
    if (m_record && result.kind == FleetResult::Kind::Good && !m_tasks[number].isDone) {
      GuardRecord([&] { m_record->Add(KeyOf(number)); });
    }
    m_output.Tell(number, wave, result);
  }

  // The devices matter more than the record: without it, a later run only does more than it would have to.
  template <class Action>
  void GuardRecord(Action action) {
    try {
      action();
    } catch (const RecordError& error) {
      m_console.Complain(error.what());
      m_recordStatus = ExitStatus::Failed;
    }
  }

  Console& m_console;
  const FleetOperation m_operation;
  const std::vector<FleetDevice> m_devices;
  const std::string m_step;
  std::vector<FleetTask> m_tasks;
  FleetLimits m_limits;
  std::optional<FleetRecord> m_record;
  FleetOutput m_output;
  ExitStatus m_recordStatus = ExitStatus::Good;
};

ExitStatus Fleet(const Arguments& arguments, Console& console) {
  std::optional<Rollout> rollout;
  try {
    rollout.emplace(arguments, console);
  } catch (const std::runtime_error& error) {
    console.Complain(error.what());
    return ExitStatus::Wrong;
  }
  return rollout->Run();
}

}  // namespace

Command MakeFleet() {
  return {"fleet",
          "Do the same with many devices, several at a time",
          {kOperation, kInventory, kModuleFolder, kJobs,  kWave,   kDeadline, kKeepGoing, kRecord,  kResume,    kAccept,
           kDryRun,    kYes,       kRead,         kWrite, kStatus, kFinish,   kAbort,     kNoProbe, kAskDaemon, kFleetJson},
          kFooter,
          &Fleet};
}

}  // namespace devhost
