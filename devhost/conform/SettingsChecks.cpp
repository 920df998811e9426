// Group "settings": what is set is what is read.
#include <malloc.h>

#include <algorithm>
#include <chrono>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

std::vector<std::string> ReadAll(Device& device) {
  std::vector<std::string> values;
  values.reserve(Settings().size());
  for (const Setting& setting : Settings()) {
    values.push_back(setting.get(device));
  }
  return values;
}

// A device may count a change of a setting as a reason to be dirty, and a switch may let the project give its text.
bool MayFollow(const Setting& setting, const Setting& wasSet) {
  return setting.name == "IsConfigDirty" || setting.ownSwitch == wasSet.name;
}

const Setting* SwitchOf(const Setting& text) {
  const auto found = std::find_if(Settings().begin(), Settings().end(),
                                  [&text](const Setting& setting) { return setting.name == text.ownSwitch; });
  return found == Settings().end() ? nullptr : &*found;
}

// Whether the text need not read as it was set.
bool IsFromProject(Device& device, const Setting& text) {
  const Setting* const ownSwitch = SwitchOf(text);
  return ownSwitch != nullptr && ownSwitch->get(device) == "true";
}

void SetAndCompare(Device& device, const Setting& setting, const std::string& value) {
  const std::vector<std::string> before = ReadAll(device);
  const bool isFromProject = IsFromProject(device, setting);
  setting.set(device, value);
  const std::vector<std::string> after = ReadAll(device);
  for (std::size_t i = 0; i != Settings().size(); ++i) {
    const Setting& other = Settings()[i];
    if (other.name == setting.name) {
      Expect(after[i] == value || isFromProject,
             other.name + " reads as " + Quoted(after[i]) + " after it was set to " + Quoted(value), setting.setter);
    } else if (!MayFollow(other, setting)) {
      Expect(after[i] == before[i], other.name + " has changed when " + setting.name + " was set", setting.setter);
    }
  }
}

void KeepsWhatIsSet(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    device.AddTrap({"192.0.2.1", "c", "162"});
    for (int round = 0; round != 2; ++round) {
      for (const Setting& setting : Settings()) {
        if (setting.kind == Setting::Kind::Switch) {
          SetAndCompare(device, setting, setting.get(device) == "true" ? "false" : "true");
        } else if (setting.kind == Setting::Kind::Text) {
          SetAndCompare(device, setting, trial.RandomText());
        }
      }
    }
  });
}

void KeepsEveryByte(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    const std::vector<std::string> texts = {
        "a b\tc",       "\"quoted\" 'text' # \\", "  blanks around it  ", "k\xC3\xBChl",
        "line\nfeed\r", std::string("a\0b", 3),   std::string(256, 'x'),  trial.RandomText(65536)};
    for (const Setting& setting : Settings()) {
      if (IsFromProject(device, setting)) {
        SwitchOf(setting)->set(device, "false");
      }
      for (const std::string& text : texts) {
        if (setting.kind == Setting::Kind::Text) {
          setting.set(device, text);
          Expect(setting.get(device) == text, setting.name + " does not read as it was set: " + Quoted(text),
                 setting.setter);
        }
      }
    }
  });
}

void GettersAreQuiet(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    const std::size_t calls = bench.Agent().calls.size();
    const std::vector<std::string> before = ReadAll(device);
    Expect(ReadAll(device) == before, "the settings read differently the second time");
    Expect(bench.Agent().calls.size() == calls, "the agent was called while settings were read");
  });
}

// What the allocator has given out.
std::size_t MemoryInUse() {
  const struct mallinfo2 info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

void LosesNoMemory(Trial& trial) {
  using Clock = std::chrono::steady_clock;
  constexpr std::size_t kTimes = 1000;
  constexpr std::size_t kMost = std::size_t{32} * 1024;
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    for (const Setting& setting : Settings()) {
      const std::string text = trial.RandomText(256);
      const auto set = [&] { setting.set(device, setting.kind == Setting::Kind::Switch ? "true" : text); };
      set();
      bench.ForgetAll();
      const std::size_t before = MemoryInUse();
      // A setter may do something that takes its time.
      const Clock::time_point end = Clock::now() + std::chrono::seconds(2);
      for (std::size_t i = 0; i != kTimes && Clock::now() < end; ++i) {
        set();
      }
      bench.ForgetAll();
      const std::size_t after = MemoryInUse();
      Expect(after <= before + kMost,
             std::to_string(after - std::min(after, before)) + " more bytes are in use after " + setting.name +
                 " was set a thousand times",
             setting.setter);
    }
  });
}

}  // namespace

std::vector<Check> SettingsChecks() {
  return {
      {"settings-kept", Severity::Contract, Level::Basic, "",
       "Each switch and text reads as it was set, unless the project gives the text, and no other setting moves.",
       "Only the device holds its settings: the agent sets what the tool has sent, asks again for each line that it "
       "writes,\n"
       "and keeps no copy. SysContact may be another text while UsePrimaryContactSetting is on, SysLocation while\n"
       "UseProjectOwnerAddressSetting is, and SysName while UseRoomDeviceSetting is.",
       &KeepsWhatIsSet},
      {"settings-bytes", Severity::Practice, Level::Full, "", "Texts are kept to the byte, up to 64 KiB.",
       "People enter places and names in all languages, and tools send line feeds by mistake. A device that has to change "
       "a\n"
       "text makes the tool show another one than the user has entered.",
       &KeepsEveryByte},
      {"settings-quiet", Severity::Contract, Level::Full, "", "Reading settings changes none and calls nobody.",
       "The agent reads all settings for every write, also while it is called by the device.", &GettersAreQuiet},
      {"settings-memory", Severity::Practice, Level::Full, "", "Setting a value over and over takes no more memory.",
       "A controller runs for years. Tried a thousand times for each setting, or for two seconds, with one value.",
       &LosesNoMemory},
  };
}

}  // namespace devhost
