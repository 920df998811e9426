#include "devhost/operations/History.h"

#include <ctime>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/json/SnapshotObject.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;
using Takes = CommandOption::Takes;

const CommandOption kFrom{"--from", "NUMBER", "Print how the device differs from what it was before this snapshot",
                          Takes::Text};
const CommandOption kTo{"--to", "NUMBER", "Compare with what it was before this snapshot, not with the device as it is now",
                        Takes::Text};
const CommandOption kHistoryJson{"--json", "", "Print one JSON object for each snapshot, or one for the difference"};

constexpr char kFooter[] =
    "Without --from, one line for each snapshot, the oldest first: number, local time, operation,\n"
    "and the settings that it has changed. Snapshot N is what the device was like before that\n"
    "operation; with --from N, the device is asked for what it is like now, and never changed.\n"
    "\n"
    "Exit status: 0 the snapshots are listed, or there is no difference; 1 there is one; 2 wrong\n"
    "usage, a snapshot that is missing, or a device that cannot be asked.\n"
    "\n"
    "Example: what has changed in the kitchen since before snapshot 3?\n"
    "\n"
    "  devhost history --project project.xml kitchen --from 3";

std::string LocalTime(std::int64_t time) {
  const std::time_t seconds = static_cast<std::time_t>(time);
  std::tm fields = {};
  char text[64] = "";
  if (::localtime_r(&seconds, &fields) != nullptr) {
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &fields);
  }
  return text;
}

std::string LineOf(const Snapshot& snapshot, bool showSecrets) {
  std::string line = std::to_string(snapshot.number) + "  " + LocalTime(snapshot.time) + "  " +
                     OneLine(ShownOperation(snapshot, showSecrets));
  std::string separator = "  ";
  for (const std::string& name : ChangedBy(snapshot, showSecrets)) {
    line += separator + name;
    separator = ", ";
  }
  return line + (snapshot.after ? "" : "  (did not finish)") + "\n";
}

std::string LineOf(const ordered_json& object) {
  return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

std::string LineOf(const DamagedSnapshot& damaged, bool json) {
  return json ? LineOf(ordered_json{{"snapshot", damaged.number}, {"damaged", damaged.problem}})
              : std::to_string(damaged.number) + "  " + OneLine(damaged.problem) + "\n";
}

ExitStatus List(const SnapshotList& list, const Target& target, bool json, Console& console) {
  std::map<unsigned long, std::string> lines;
  for (const Snapshot& snapshot : list.snapshots) {
    lines[snapshot.number] =
        json ? LineOf(SnapshotObject(snapshot, target.showSecrets)) : LineOf(snapshot, target.showSecrets);
  }
  for (const DamagedSnapshot& damaged : list.damaged) {
    lines[damaged.number] = LineOf(damaged, json);
  }
  for (const auto& line : lines) {
    console.Out().Write(line.second);
  }
  if (lines.empty() && !json) {
    console.Out().Write("no snapshots of " + OneLine(target.chosen.device.name) + "\n");
  }
  return ExitStatus::Good;
}

NamedCopy CopyOf(const Snapshot& snapshot, const std::string& file) {
  return {file + " before snapshot " + std::to_string(snapshot.number), snapshot.before};
}

NamedCopy CopyOfNow(const Target& target, const std::string& file, Console& console) {
  DeviceLook look = LookAtDevice(target);
  for (const std::string& message : look.messages) {
    console.Complain(message);
  }
  if (!look.problem.empty()) {
    throw SnapshotError(look.problem);
  }
  return {file + (look.isReachable ? " now" : " as it was last known"), std::move(look.now)};
}

// 0 when the option is not given.
unsigned long NumberOf(const Arguments& arguments, const CommandOption& option) {
  return arguments.Has(option) ? SnapshotNumber(option.name, arguments.Text(option)) : 0;
}

ExitStatus Compare(const SnapshotList& snapshots, const Target& target, const Arguments& arguments, Console& console) {
  const std::string file = FileNameOf(target);
  const unsigned long to = NumberOf(arguments, kTo);
  const NamedCopy before = CopyOf(FindSnapshot(snapshots, NumberOf(arguments, kFrom)), file);
  const NamedCopy after = to == 0 ? CopyOfNow(target, file, console) : CopyOf(FindSnapshot(snapshots, to), file);
  const CopyDifference difference = CompareCopies(before, after, target.showSecrets);
  if (arguments.Has(kHistoryJson)) {
    PrintObject(DifferenceObject(difference), console.Out());
  } else {
    console.Out().Write(difference.IsNone() ? "no difference\n" : difference.file + SettingLines(difference.settings));
  }
  return difference.IsNone() ? ExitStatus::Good : ExitStatus::Failed;
}

ExitStatus History(const Arguments& arguments, Console& console) {
  const PrintStop printStop = [&](Stage stage, const std::string& reason) {
    PrintObject({{"device", TargetName(arguments)}, {"verdict", "stopped"}, {"stage", NameOf(stage)}, {"reason", reason}},
                console.Out());
  };
  return GuardStops(arguments, console, printStop, [&](Stage& stage) {
    if (arguments.Has(kTo) && !arguments.Has(kFrom)) {
      throw std::runtime_error("--to stands alone; allowed: --from NUMBER --to NUMBER");
    }
    const Target target = ReadTarget(arguments);
    const SnapshotList snapshots = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
    stage = Stage::Plan;
    return arguments.Has(kFrom) ? Compare(snapshots, target, arguments, console)
                                : List(snapshots, target, arguments.Has(kHistoryJson), console);
  });
}

}  // namespace

Command MakeHistory() {
  return {"history",
          "List what was changed on a device, and compare",
          {kDeviceUnlessFile, kProjectUnlessFile, kModuleFolder, kDeviceState, kFile, kSnapshots, kFrom, kTo, kHistoryJson,
           kShowSecrets},
          kFooter,
          &History};
}

}  // namespace devhost
