// Group "state": what a driver keeps from one life to the next.
#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/state/StateStore.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Kind = Occurrence::Kind;
using D = ISupportSNMP;

void KeepsItsNameInItsState(Trial& trial) {
  StateMemory states;
  std::string name;
  {
    Bench bench(trial, &states);
    name = trial.RandomText();
    bench.ActOnDevice([&](Device& device) { device.Call("SetSysNameSetting", &D::SetSysNameSetting, name); });
    bench.Stop();
  }
  Bench bench(trial, &states);
  bench.ActOnDevice([&](Device& device) {
    Expect(device.Call("GetSysNameSetting", &D::GetSysNameSetting) == name,
           "SysName is not in the next life what it was when the state was taken", "GetPersistState");
  });
}

void SaysWhenItsStateHasChanged(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    const std::size_t before = bench.Lines(Kind::Invalidate).size();
    device.Call("SetSysNameSetting", &D::SetSysNameSetting, trial.RandomText());
    Expect(bench.Lines(Kind::Invalidate).size() > before, "DmInvalidateState was not called when SysName was set",
           "SetSysNameSetting");
  });
}

std::string Nested(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i != depth; ++i) {
    text += "<a>";
  }
  text += "x";
  for (std::size_t i = 0; i != depth; ++i) {
    text += "</a>";
  }
  return text;
}

void StartsWithAnyState(Trial& trial) {
  const std::vector<std::string> texts = {"<x/>", "<State/>", "<x a=\"1\"><y>z</y>t<y/></x>", Nested(200),
                                          "<State>" + std::string(std::size_t{10} << 20U, 'x') + "</State>"};
  for (const std::string& text : texts) {
    StateMemory states;
    states.Save(Bench::kDevice, text);
    Bench bench(trial, &states);
    const std::string problem = bench.TryLoad();
    Expect(problem.empty(), "with the state " + Quoted(text.substr(0, 40)) + ": " + problem);
    Expect(!bench.Published().empty(), "there is no device when the state is " + Quoted(text.substr(0, 40)), "Initialize");
  }
}

}  // namespace

std::vector<Check> StateChecks() {
  return {
      {"state-round", Severity::Contract, Level::Basic, "keeps-state",
       "The next life has the sysName that was set in the last one.",
       "GetPersistState returns the settings, and Initialize gets what was returned. The sysName stands for all.",
       &KeepsItsNameInItsState},
      {"state-called", Severity::Contract, Level::Full, "keeps-state",
       "A change of a setting makes the host ask for the state.",
       "The host asks when DmInvalidateState was called and before a stop; a controller may lose its power before that.",
       &SaysWhenItsStateHasChanged},
      {"state-hostile", Severity::Contract, Level::Full, "", "A driver starts without a state that is not its own.",
       "States are files, which get damaged and mixed up. Tried with empty and foreign elements, 200 levels, and 10 MiB. "
       "Do\n"
       "without the state, and say so in the log.",
       &StartsWithAnyState},
  };
}

}  // namespace devhost
