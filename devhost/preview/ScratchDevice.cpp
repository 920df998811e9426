#include "devhost/preview/ScratchDevice.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "devhost/preview/Preview.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

namespace fs = std::filesystem;

constexpr char kName[] = "snmpd.conf";

// Where the driver's configuration says that the device's file lies; it is there to be changed.
std::string& FolderIn(XmlElement& config, const DriverEntry& device) {
  const auto found = std::find_if(config.attributes.begin(), config.attributes.end(),
                                  [](const XmlAttribute& attribute) { return attribute.name == "folder"; });
  if (found == config.attributes.end()) {
    throw PreviewError(device.origin + ": the <config> of " + device.name +
                       " names no folder, so no copy of the device can be made; allowed: a device whose snmpd.conf lies in "
                       "a folder that its <config> names");
  }
  return found->value;
}

std::string ReadDevice(const std::string& path, const std::string& folder, const DriverEntry& device) {
  std::error_code ignored;
  if (fs::exists(fs::symlink_status(path, ignored))) {
    return ReadRegularFile(path);
  }
  if (!fs::is_directory(folder, ignored)) {
    throw PreviewError(device.origin + ": there is no folder " + Quoted(folder) + " for the snmpd.conf of " + device.name +
                       "; make it, or name the right one");
  }
  return std::string();
}

}  // namespace

ScratchDevice::ScratchDevice(const DriverEntry& device) : m_driver(device) {
  XmlElement config = ReadXml(device.configXml);
  std::string& folder = FolderIn(config, device);
  m_realPath = PathIn(folder, kName);
  m_realText = ReadDevice(m_realPath, folder, device);
  CopyFile();
  folder = m_folder.Path();
  m_driver.configXml = XmlText(config, XmlStyle::Compact);
}

void ScratchDevice::CopyFile() const {
  std::error_code error;
  if (fs::is_symlink(fs::symlink_status(m_realPath, error))) {
    // A driver may treat a link differently from a file. This one leads to a copy of what the real one leads to.
    m_folder.Write("target", m_realText);
    fs::create_symlink("target", m_folder.PathOf(kName), error);
    if (error) {
      throw PreviewError("cannot make a link in " + Quoted(m_folder.Path()) + ": " + error.message());
    }
  } else if (fs::exists(m_realPath, error)) {
    m_folder.Write(kName, m_realText);
  }
}

std::string ScratchDevice::Text() const {
  std::error_code ignored;
  const std::string copy = m_folder.PathOf(kName);
  return fs::exists(copy, ignored) ? ReadRegularFile(copy) : std::string();
}

}  // namespace devhost
