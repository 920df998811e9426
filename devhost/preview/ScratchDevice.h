#ifndef DEVHOST_PREVIEW_SCRATCH_DEVICE_H
#define DEVHOST_PREVIEW_SCRATCH_DEVICE_H

#include <stdexcept>
#include <string>

#include "devhost/engine/Host.h"
#include "devhost/system/PrivateFolder.h"

namespace devhost {

// A device of which no copy can be made: what and why, in one line.
class ScratchError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A copy of a device in a folder of its own, on which its driver can work without anybody noticing. The folder is private,
// lies where temporary files do, and goes with this object.
class ScratchDevice {
 public:
  // `device` is the device's driver in the project; its configuration has to name the `folder` that holds the snmpd.conf, as
  // docs/device-drivers.md tells. Throws ScratchError, FolderError, and FileError when the file cannot be read.
  explicit ScratchDevice(const DriverEntry& device);

  // The driver with its configuration changed to the copy.
  const DriverEntry& Driver() const { return m_driver; }
  // The device's own snmpd.conf, and its text when the copy was made; a file that does not exist has none.
  const std::string& RealPath() const { return m_realPath; }
  const std::string& RealText() const { return m_realText; }
  // The text of the copy as it is now.
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
