// Group "erased": the six flags that say that somebody has emptied a setting on purpose.
#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"

namespace devhost {

namespace {

std::vector<const Setting*> Erasable() {
  std::vector<const Setting*> erasable;
  for (const Setting& setting : Settings()) {
    if (setting.wasErased) {
      erasable.push_back(&setting);
    }
  }
  return erasable;
}

std::vector<bool> Flags(Device& device) {
  std::vector<bool> flags;
  flags.reserve(Settings().size());
  for (const Setting* const setting : Erasable()) {
    flags.push_back(setting->wasErased(device));
  }
  return flags;
}

void OnlyTheDeviceSetsFlags(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    const std::vector<const Setting*> erasable = Erasable();
    for (std::size_t i = 0; i != erasable.size(); ++i) {
      for (const Setting* const setting : erasable) {
        setting->set(device, trial.RandomText());
      }
      const std::vector<bool> before = Flags(device);
      erasable[i]->set(device, "");
      const std::vector<bool> after = Flags(device);
      for (std::size_t other = 0; other != erasable.size(); ++other) {
        Expect(other == i || after[other] == before[other],
               "the erased flag of " + erasable[other]->name + " has changed when " + erasable[i]->name + " was emptied",
               erasable[i]->setter);
      }
    }
    // All are erased now, since a flag that is false cannot be seen to be cleared.
    for (const Setting* const setting : erasable) {
      setting->set(device, "");
    }
    const std::vector<bool> before = Flags(device);
    for (const Setting& setting : Settings()) {
      setting.get(device);
    }
    Expect(Flags(device) == before, "an erased flag has changed when settings were read");
    std::string text;
    device.CopyFrom(text);
    Expect(Flags(device) == before, "an erased flag has changed in CopyFrom", "CopyFrom");
    device.CopyTo("# a text\n");
    Expect(Flags(device) == before, "an erased flag has changed in CopyTo", "CopyTo");
  });
}

void EmptyingSetsTheFlag(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    for (const Setting* const setting : Erasable()) {
      setting->set(device, trial.RandomText());
      setting->set(device, "");
      Expect(setting->wasErased(device), setting->name + " was emptied, and its erased flag is false", setting->setter);
    }
  });
}

void AValueClearsTheFlag(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    for (const Setting* const setting : Erasable()) {
      setting->set(device, trial.RandomText());
      setting->set(device, "");
      setting->set(device, trial.RandomText());
      Expect(!setting->wasErased(device), setting->name + " has a value, and its erased flag is true", setting->setter);
    }
  });
}

void EmptyingNothingErasesNothing(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    for (const Setting* const setting : Erasable()) {
      if (setting->get(device).empty() && !setting->wasErased(device)) {
        setting->set(device, "");
        Expect(!setting->wasErased(device), setting->name + " never held anything, and its erased flag is true",
               setting->setter);
      }
    }
  });
}

}  // namespace

std::vector<Check> ErasedChecks() {
  return {
      {"erased-own", Severity::Contract, Level::Basic, "",
       "Each setting has an erased flag of its own, which reading, CopyFrom and CopyTo leave alone.",
       "The agent fills an empty setting from snmpd.conf only while its flag is false. A flag that moves by itself brings\n"
       "back what a user has erased, or keeps out what the file holds.",
       &OnlyTheDeviceSetsFlags},
      {"erased-on-emptied", Severity::Practice, Level::Basic, "",
       "A setting that held something and is emptied has its erased flag set.",
       "Otherwise the agent fills it from the file again. docs/device-drivers.md has the table of the flags.",
       &EmptyingSetsTheFlag},
      {"erased-cleared", Severity::Practice, Level::Basic, "", "A setting that gets a value has its erased flag cleared.",
       "The flag says that a setting is empty on purpose, and it is not empty. docs/device-drivers.md has the table.",
       &AValueClearsTheFlag},
      {"erased-empty-stays", Severity::Practice, Level::Basic, "",
       "A setting that never held anything and is set empty keeps its erased flag clear.",
       "Tools send all settings at once, the empty ones, too. Nobody has erased these, and the file may hold a value for\n"
       "them. docs/device-drivers.md has the table.",
       &EmptyingNothingErasesNothing},
  };
}

}  // namespace devhost
