#include "devhost/operations/FileTarget.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "devhost/project/Project.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

namespace fs = std::filesystem;

constexpr char kName[] = "snmpd.conf";
constexpr char kModule[] = "local_snmpd.so";

// Why the file cannot be read as one, or "".
std::string WhyNot(const std::string& path) {
  struct stat status = {};
  std::error_code ignored;
  if (::lstat(path.c_str(), &status) != 0) {
    return errno == ENOENT ? "there is no such file; allowed: one that exists, and may be empty"
                           : std::generic_category().message(errno);
  }
  if (S_ISLNK(status.st_mode)) {
    return "it is a symbolic link to " + Quoted(fs::read_symlink(path, ignored).string()) + "; allowed: the file itself";
  }
  return S_ISREG(status.st_mode) ? "" : "it is not a regular file";
}

std::string ConfigFor(const std::string& folder) {
  XmlElement config;
  config.name = "config";
  // The port is for a daemon that is never started; without one, a free one would be looked for.
  config.attributes = {{"folder", folder}, {"port", "65535"}};
  return XmlText(config, XmlStyle::Compact);
}

}  // namespace

bool HasNameOfTarget(const std::string& path) {
  return fs::path(path).filename() == kName;
}

DriverEntry AgentForFile(const std::string& path, const std::string& moduleFolder) {
  const std::string reason = WhyNot(path);
  if (!reason.empty()) {
    throw FileError(path, reason);
  }
  DriverEntry agent = AgentAlone(moduleFolder).drivers.front();
  agent.id = kFileDeviceId + 1;
  return agent;
}

Target TargetOfFile(const std::string& path, const std::string& moduleFolder) {
  if (!HasNameOfTarget(path)) {
    throw FileError(path, "the drivers know the file by one name; allowed: " + std::string(kName));
  }
  const DriverEntry agent = AgentForFile(path, moduleFolder);
  const std::string absolute = fs::absolute(path).lexically_normal().string();
  Target target;
  target.chosen.agent = agent;
  target.chosen.device = {kFileDeviceId, path, PathIn(FolderOf(target.chosen.agent.module), kModule),
                          ConfigFor(FolderOf(absolute))};
  const std::string missing = WhyNoRegularFile(target.chosen.device.module);
  if (!missing.empty()) {
    throw ProjectError("cannot load the module " + Quoted(target.chosen.device.module) + ": " + missing);
  }
  target.file = path;
  target.snapshotFolder = path + ".snapshots";
  return target;
}

}  // namespace devhost
