// Group "traps": the list of trap destinations.
#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Targets = std::vector<TrapTarget>;

// Does something to the list of a device that has just come up, and compares.
void ExpectTraps(Trial& trial, const std::function<void(Device&)>& action, const Targets& wanted, const std::string& slot) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    action(device);
    const Targets found = device.Traps();
    Expect(TextOf(found) == TextOf(wanted), "the list is " + Quoted(TextOf(found)) + " instead of " + Quoted(TextOf(wanted)),
           slot);
  });
}

void KeepsTheOrder(Trial& trial) {
  const Targets targets = {{"b", "x", "162"}, {"a", "", "1"}, {"b", "x", "162"}, {"c", "y", ""}, {"", "", ""}};
  ExpectTraps(
      trial, [&](Device& device) { device.SetTraps(targets); }, targets, "SetTrapTargetsSetting");
}

void AddsAtTheEnd(Trial& trial) {
  ExpectTraps(
      trial,
      [](Device& device) {
        device.ClearTraps();
        device.AddTrap({"a", "x", "162"});
        device.AddTrap({"b", "y", "163"});
      },
      {{"a", "x", "162"}, {"b", "y", "163"}}, "AddTrapTargetSetting");
}

void ClearsAll(Trial& trial) {
  ExpectTraps(
      trial,
      [](Device& device) {
        device.AddTrap({"a", "x", "162"});
        device.ClearTraps();
      },
      {}, "ClearTrapTargetSetting");
}

void ReplacesAll(Trial& trial) {
  const auto replace = [](Device& device) {
    device.SetTraps({{"a", "x", "162"}, {"b", "x", "162"}});
    device.SetTraps({{"c", "z", "164"}});
  };
  ExpectTraps(trial, replace, {{"c", "z", "164"}}, "SetTrapTargetsSetting");
}

void KeepsAThousand(Trial& trial) {
  Targets targets;
  targets.reserve(1000);
  for (int i = 1000; i != 2000; ++i) {
    targets.emplace_back("host" + std::to_string(i), "c", "162");
  }
  ExpectTraps(
      trial, [&](Device& device) { device.SetTraps(targets); }, targets, "SetTrapTargetsSetting");
}

}  // namespace

std::vector<Check> TrapsChecks() {
  return {
      {"traps-order", Severity::Contract, Level::Basic, "",
       "A list of trap targets is read in the order in which it was set, with duplicates and empty texts.",
       "The order of the targets is the order of the lines in snmpd.conf.", &KeepsTheOrder},
      {"traps-add", Severity::Contract, Level::Basic, "", "A target that is added stands at the end of the list.",
       "The agent sends the targets of the file one by one, in the order of the file.", &AddsAtTheEnd},
      {"traps-clear", Severity::Contract, Level::Basic, "", "A list that is cleared is empty.",
       "Every request of the tool begins with a cleared list.", &ClearsAll},
      {"traps-set", Severity::Contract, Level::Basic, "", "A list that is set replaces the one before.",
       "The tool sends the whole list.", &ReplacesAll},
      {"traps-many", Severity::Contract, Level::Basic, "", "A list may have 1000 targets.",
       "The interface knows no limit, and the agent would write what is left as if it were all.", &KeepsAThousand},
  };
}

}  // namespace devhost
