#include "devhost/commands/DeviceOptions.h"

#include "devhost/commands/CommonOptions.h"
#include "devhost/project/Project.h"

namespace devhost {

Target ReadTarget(const Arguments& arguments) {
  const std::string file = arguments.Text(kDeviceProject);
  Target target;
  target.chosen = ChooseDevice(file, ReadProject(file, ModuleFolder(arguments)), arguments.Text(kDevice));
  target.stateFolder = arguments.Text(kDeviceState);
  target.snapshotFolder = arguments.Has(kSnapshots) ? arguments.Text(kSnapshots) : file + ".snapshots";
  target.showSecrets = arguments.Has(kShowSecrets);
  return target;
}

}  // namespace devhost
