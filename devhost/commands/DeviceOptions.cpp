#include "devhost/commands/DeviceOptions.h"

#include <charconv>
#include <system_error>

#include "devhost/commands/CommonOptions.h"
#include "devhost/project/ChosenDevice.h"
#include "devhost/project/Project.h"
#include "devhost/text/Words.h"

namespace devhost {

std::vector<Candidate> SuggestDevices(const Arguments& written, const std::string&) {
  std::vector<Candidate> devices;
  if (written.Has(kDeviceProject)) {
    for (const DriverEntry& driver : ReadProject(written.Text(kDeviceProject), ModuleFolder(written)).drivers) {
      if (!IsAgent(driver)) {
        devices.push_back({driver.name, "driver " + std::to_string(driver.id)});
      }
    }
  }
  return devices;
}

Target ReadTarget(const Arguments& arguments) {
  const std::string file = arguments.Text(kDeviceProject);
  Target target;
  target.chosen = ChooseDevice(file, ReadProject(file, ModuleFolder(arguments)), arguments.Text(kDevice));
  target.stateFolder = arguments.Text(kDeviceState);
  target.snapshotFolder = arguments.Has(kSnapshots) ? arguments.Text(kSnapshots) : file + ".snapshots";
  target.showSecrets = arguments.Has(kShowSecrets);
  return target;
}

unsigned long SnapshotNumber(const Arguments& arguments, const CommandOption& option) {
  unsigned long number = 0;
  const std::string text = arguments.Text(option);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (arguments.Has(option) && (error != std::errc() || end != text.data() + text.size() || number == 0)) {
    throw SnapshotError(std::string(option.name) + ": " + Quoted(text) + " is not a snapshot; allowed: a number from 1");
  }
  return number;
}

}  // namespace devhost
