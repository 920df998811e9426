#ifndef DEVHOST_COMMANDS_FLEET_OUTPUT_H
#define DEVHOST_COMMANDS_FLEET_OUTPUT_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "devhost/commands/ExitStatus.h"
#include "devhost/fleet/FleetRun.h"
#include "devhost/fleet/Inventory.h"

namespace devhost {

class Console;

// A command that is run for each device of a fleet.
struct FleetOperation {
  std::string name;
  bool changes = false;        // devices; else it only looks
  bool takesSettings = false;  // on its standard input
};

// What the end of that command means, by its JSON and its exit status. A success without an answer is none.
FleetResult JudgeFleetEnd(const FleetOperation& operation, const FleetEnd& end);

// The exit status of the whole run.
ExitStatus FleetStatus(const FleetOperation& operation, const std::vector<FleetResult>& results);

// Prints a run: with JSON, a line for each device when it has come to its end and a last one with the counts; else a table
// at the end. On a terminal, standard error shows meanwhile how far the run is.
class FleetOutput {
 public:
  // Both are borrowed.
  FleetOutput(const std::vector<FleetDevice>& devices, bool json, Console& console);

  // A device has come to its end.
  void Tell(std::size_t number, std::size_t wave, const FleetResult& result);
  // So has the run.
  void Report(const FleetOutcome& outcome);

 private:
  void TellJson(std::size_t number, std::size_t wave, const FleetResult& result);
  void PrintTable(const std::vector<FleetResult>& results);
  void ShowProgress(const std::string& text);

  const std::vector<FleetDevice>& m_devices;
  const bool m_json;
  Console& m_console;
  const bool m_showsProgress;
  std::map<std::string, std::size_t> m_counts;  // of devices, by verdict
  std::size_t m_done = 0;
};

}  // namespace devhost

#endif
