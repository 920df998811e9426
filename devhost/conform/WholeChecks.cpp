// Group "whole": the device with the real agent, and with another device.
#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/conform/ToolSession.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

void WorksWithTheAgent(Trial& trial) {
  Bench bench(trial);
  ToolSession session(bench);
  // One target, since the order of several is what other checks are about, and the device's own texts, for the file.
  ToolSettings settings = RandomToolSettings(trial, 1);
  for (auto& [name, value] : settings.switches) {
    value = name.find("Use") != std::string::npos ? "false" : value;
  }
  session.Set(settings);
  session.ExpectList();
  bench.Act([&] {
    Device device = bench.GetDevice();
    std::string text;
    Expect(device.CopyFrom(text) == 0, "CopyFrom failed for the file that the agent has installed", "CopyFrom");
    for (const auto& [name, value] : settings.texts) {
      Expect(text.find(value) != std::string::npos, "the file does not hold what the tool has sent as " + name, "CopyTo");
    }
  });
  session.Manage(false);
  session.ExpectList();
}

// A configuration of the profile may name one controller, which both devices have then.
bool HasFilesApart(const Profile& profile) {
  return profile.claims.count("local-file") != 0 || profile.config == Profile().config;
}

void SharesNoFile(Trial& trial, Device& one, Device& other) {
  for (Device* const device : {&one, &other}) {
    const std::string problem = GiveAFile(*device);
    if (!problem.empty()) {
      throw Blocked(problem + ": see file-round");
    }
  }
  const std::string text = "sysName " + trial.RandomText() + "\n";
  Expect(one.CopyTo(text) == 0, "CopyTo failed for one device when another one had got its file", "CopyTo");
  std::string found;
  Expect(other.CopyFrom(found) == 0 && found == kOrdinaryText,
         "the file of one device has changed when CopyTo was called on another one", "CopyTo");
  Expect(one.CopyFrom(found) == 0 && found == text, "a device does not have the file that CopyTo has given it", "CopyFrom");
}

void SharesNothing(Trial& trial) {
  Bench bench(trial);
  bench.Load(Bench::kDevice + 1);
  bench.ActOnDevice([&](Device& device) {
    const std::vector<ISupportSNMP*> devices = bench.Published();
    if (devices.size() < 2) {
      throw Blocked("the second device did not come up");
    }
    Device other(*devices[1], trial.trail);
    for (const Setting& setting : Settings()) {
      const std::string before = setting.get(other);
      const bool isSwitch = setting.kind == Setting::Kind::Switch;
      setting.set(device, !isSwitch ? trial.RandomText() : setting.get(device) == "true" ? "false" : "true");
      Expect(setting.get(other) == before, setting.name + " of one device has changed when that of another one was set",
             setting.setter);
    }
    if (HasFilesApart(trial.profile)) {
      SharesNoFile(trial, device, other);
    }
  });
}

}  // namespace

std::vector<Check> WholeChecks() {
  return {
      {"whole-agent", Severity::Contract, Level::Basic, "",
       "With the real agent, what the tool sends is in the device, in its file and in the list of devices.",
       "The tool makes the device managed, sends all settings, asks for the list, and gives the device up again. The "
       "device\n"
       "has to accept the agent's section in its file.",
       &WorksWithTheAgent},
      {"whole-two", Severity::Contract, Level::Basic, "", "Two devices of one module share no setting and no file.",
       "A project has many devices of one kind. Static variables of a module are shared by all, and so is a path that is "
       "not\n"
       "made from the configuration. Files are compared when the profile claims local-file or has no configuration of its "
       "own.",
       &SharesNothing},
  };
}

}  // namespace devhost
