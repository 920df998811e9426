#ifndef DEVHOST_PREVIEW_SCRATCH_DEVICE_H
#define DEVHOST_PREVIEW_SCRATCH_DEVICE_H

#include <string>

#include "devhost/driver/DriverEntry.h"
#include "devhost/system/PrivateFolder.h"

namespace devhost {

// A copy of a device on which its driver can work without touching the device. Its folder is private, lies where temporary
// files do, and goes with this object.
class ScratchDevice {
 public:
  // `device` is the device's driver in the project; docs/device-drivers.md says how its configuration names the folder of
  // the snmpd.conf. Throws PreviewError when no copy can be made of such a device, FolderError, and FileError when the file
  // cannot be read.
  explicit ScratchDevice(const DriverEntry& device);

  // The driver with its configuration changed to the copy.
  const DriverEntry& Driver() const { return m_driver; }
  // The device's own snmpd.conf, and its text when the copy was made: "" when there is no file.
  const std::string& RealPath() const { return m_realPath; }
  const std::string& RealText() const { return m_realText; }
  // The text of the copy as it is now; "" when there is no file. Throws FileError when it cannot be read.
  std::string Text() const;

 private:
  void CopyFile() const;

  DriverEntry m_driver;
  std::string m_realPath;
  std::string m_realText;
  PrivateFolder m_folder;
};

}  // namespace devhost

#endif
