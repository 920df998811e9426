#include "devhost/commands/DeviceOptions.h"

#include <charconv>
#include <stdexcept>
#include <system_error>

#include "devhost/commands/CommonOptions.h"
#include "devhost/operations/FileTarget.h"
#include "devhost/project/ChosenDevice.h"
#include "devhost/project/Project.h"
#include "devhost/text/Words.h"

namespace devhost {

std::vector<Candidate> SuggestDevices(const Arguments& written, const std::string&) {
  std::vector<Candidate> devices;
  if (written.Has(kDeviceProject) && !written.Has(kFile)) {
    for (const DriverEntry& driver : ReadProject(written.Text(kDeviceProject), ModuleFolder(written)).drivers) {
      if (!IsAgent(driver)) {
        devices.push_back({driver.name, "driver " + std::to_string(driver.id)});
      }
    }
  }
  return devices;
}

Target ReadTarget(const Arguments& arguments) {
  Target target;
  if (arguments.Has(kFile)) {
    target = TargetOfFile(arguments.Text(kFile), ModuleFolder(arguments));
  } else {
    if (!arguments.Has(kDevice) || !arguments.Has(kDeviceProject)) {
      throw std::runtime_error("the device or its project is missing; allowed: DEVICE --project FILE, or --file FILE");
    }
    const std::string file = arguments.Text(kDeviceProject);
    target.chosen = ChooseDevice(file, ReadProject(file, ModuleFolder(arguments)), arguments.Text(kDevice));
    target.stateFolder = arguments.Text(kDeviceState);
    target.snapshotFolder = file + ".snapshots";
  }
  if (arguments.Has(kSnapshots)) {
    target.snapshotFolder = arguments.Text(kSnapshots);
  }
  target.showSecrets = arguments.Has(kShowSecrets);
  return target;
}

void RequireOneTarget(const Arguments& arguments) {
  NextText(arguments, kDevice);
}

std::string TargetName(const Arguments& arguments) {
  return arguments.Text(arguments.Has(kFile) ? kFile : kDevice);
}

std::string NextText(const Arguments& arguments, const CommandOption& argument) {
  if (arguments.Has(kFile) && arguments.Has(argument)) {
    throw std::runtime_error("a device and --file cannot stand together; allowed: one of the two");
  }
  return arguments.Text(arguments.Has(kFile) ? kDevice : argument);
}

unsigned long SnapshotNumber(const std::string& name, const std::string& text) {
  unsigned long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0) {
    throw SnapshotError(name + ": " + Quoted(text) + " is not a snapshot; allowed: a number from 1");
  }
  return number;
}

}  // namespace devhost
