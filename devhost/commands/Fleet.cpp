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
#include "devhost/commands/FleetOutput.h"
#include "devhost/fleet/FleetRecord.h"
#include "devhost/fleet/FleetRun.h"
#include "devhost/fleet/Inventory.h"
#include "devhost/fleet/Waves.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kOperation{"operation",   "",   "What is done with each device: apply, preview, drift, probe, check",
                               Takes::Choice, true, {"apply", "preview", "drift", "probe", "check"}};
const CommandOption kInventory{"inventory", "", "File that lists the devices", Takes::Path, true};
const CommandOption kJobs{"--jobs", "N", "How many devices at a time (default: 8)", Takes::Text};
const CommandOption kWave{"--wave", "LIST", "Waves, as in 1,10%,100%: how many devices have had their turn after each",
                          Takes::Text};
const CommandOption kDeadline{"--deadline", "SECONDS", "The most time for one device (default: 300)", Takes::Text};
const CommandOption kRecord{"--record", "FILE", "Remember in this file which devices are done (apply)", Takes::Path};
const CommandOption kResume{"--resume", "", "Go on where the run of the record has ended (apply)"};
const CommandOption kFleetJson{"--json", "", "Print one JSON object for each device, and one at the end"};

constexpr char kFooter[] =
    "Runs \"devhost apply\", \"preview\", \"drift\", \"probe\" or \"check\" for each device of the\n"
    "inventory, in a process of its own. docs/fleet.md describes the inventory. In a settings file, {deviceId}\n"
    "stands for the id of the device, so several devices can share one. All files of settings\n"
    "are read before the first device is touched.\n"
    "\n"
    "A wave in which a device has failed is the last one. SIGINT, SIGTERM and SIGHUP end what\n"
    "runs; the report says what was and what was not done. --resume leaves out the devices that\n"
    "have got the same settings in the run of the record. When all is done, the record is\n"
    "removed.\n"
    "\n"
    "Exit status: 0 all is well: changed, waiting, unchanged, no drift, no finding; 1 with apply\n"
    "a device has failed or had no turn, else something would change, has drifted or was found; 2 a\n"
    "wrong command line, inventory, project, settings file or record, and nothing was started, or\n"
    "without apply a device that could not be judged.\n"
    "\n"
    "Example: give all devices their settings, the first one alone.\n"
    "\n"
    "  devhost fleet apply fleet.xml --yes --wave 1,100% --record fleet.record";

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

FleetOperation OperationOf(const Arguments& arguments) {
  const std::string name = arguments.Text(kOperation);
  FleetOperation operation;
  operation.name = name;
  operation.changes = name == "apply" && !arguments.Has(kDryRun);
  operation.takesSettings = name == "apply" || name == "preview";
  if (name == "apply" && arguments.Has(kYes) == arguments.Has(kDryRun)) {
    throw UsageError("nobody is asked for each device of a fleet; allowed with apply: either --yes or --dry-run");
  }
  for (const CommandOption* const option : {&kYes, &kDryRun, &kAccept, &kRecord, &kResume}) {
    if (name != "apply" && arguments.Has(*option)) {
      throw UsageError(std::string(option->name) + " is for apply; allowed with " + name + ": leave it out");
    }
  }
  if (arguments.Has(kResume) && !arguments.Has(kRecord)) {
    throw UsageError("--resume needs to know the record; allowed: --record FILE --resume");
  }
  if (arguments.Has(kRecord) && !operation.changes) {
    throw UsageError("--record is for a run that changes something; allowed with --dry-run: leave it out");
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
  return words;
}

std::vector<FleetTask> TasksFor(const std::vector<FleetDevice>& devices, const FleetOperation& operation,
                                const Arguments& arguments) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  const std::string inventory = arguments.Text(kInventory);
  SettingsTexts settings;
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
    task.input = operation.takesSettings ? settings.Of(device) : "";
    // Only one host at a time uses a state folder.
    task.alone = device.state;
    tasks.push_back(std::move(task));
  }
  return tasks;
}

// What is known of a run while it goes on, and at its end.
class Rollout {
 public:
  Rollout(const Arguments& arguments, Console& console)
      : m_console(console),
        m_operation(OperationOf(arguments)),
        m_devices(ReadInventory(arguments.Text(kInventory), ModuleFolder(arguments))),
        m_tasks(TasksFor(m_devices, m_operation, arguments)),
        m_output(m_devices, arguments.Has(kFleetJson), console) {
    m_limits.jobs = NumberOf(arguments, kJobs, 8, 1000);
    m_limits.deadline = std::chrono::seconds(NumberOf(arguments, kDeadline, 300, 86400));
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
    return FleetRecord::KeyOf(m_devices[number].project, m_devices[number].name, m_tasks[number].input);
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
  return {
      "fleet",
      "Do the same with many devices, several at a time",
      {kOperation, kInventory, kModuleFolder, kJobs, kWave, kDeadline, kRecord, kResume, kAccept, kDryRun, kYes, kFleetJson},
      kFooter,
      &Fleet};
}

}  // namespace devhost
