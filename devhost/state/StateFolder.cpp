#include "devhost/state/StateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

#include "devhost/app/FileText.h"
#include "devhost/app/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr char kLockName[] = "lock";

std::string Reason(int error) {
  return std::generic_category().message(error);
}

std::string FileName(unsigned long driverId) {
  return "driver-" + std::to_string(driverId) + ".xml";
}

FileDescriptor OpenFolder(const std::string& path) {
  std::error_code error;
  // What is wrong shows when the folder is opened.
  std::filesystem::create_directories(path, error);
  FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.IsOpen()) {
    throw StateError("cannot keep states in " + Quoted(path) + ": " +
                     Reason(errno == ENOENT && error ? error.value() : errno) +
                     "; allowed: a folder that can be written, or one that can be made");
  }
  return folder;
}

FileDescriptor Lock(int folder, const std::string& path) {
  FileDescriptor lock(::openat(folder, kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!lock.IsOpen()) {
    throw StateError("cannot keep states in " + Quoted(path) + ": its file \"lock\" cannot be opened: " + Reason(errno));
  }
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    throw StateError("cannot keep states in " + Quoted(path) + ": " +
                     (errno == EWOULDBLOCK ? "another devhost is using it; allowed: one at a time" : Reason(errno)));
  }
  return lock;
}

}  // namespace

StateFolder::StateFolder(const std::string& path)
    : m_path(path), m_folder(OpenFolder(path)), m_lock(Lock(m_folder.Get(), path)) {}

h7::auto_com<H7XML::INode> StateFolder::Load(unsigned long driverId) {
  const std::string name = FileName(driverId);
  std::string problem = PathIn(m_path, name);
  try {
    const std::optional<std::string> text = ReadStateFile(m_folder.Get(), name);
    if (!text) {
      return h7::auto_com<H7XML::INode>();
    }
    if (!text->empty()) {
      return ReadXmlNode(*text);
    }
    problem += ": the state is damaged: the file is empty";
  } catch (const XmlError& error) {
    problem += ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column()) +
               ": the state is damaged: " + OneLine(error.what());
  } catch (const StateError& error) {
    problem += ": the state is damaged: " + std::string(error.what());
  }
  try {
    problem += "; kept as " + PutStateFileAside(m_folder.Get(), name);
  } catch (const StateError& error) {
    problem += "; " + std::string(error.what());
  }
  throw StateError(problem);
}

void StateFolder::Save(unsigned long driverId, const std::string& xml) {
  const std::string name = FileName(driverId);
  try {
    if (xml.empty()) {
      RemoveStateFile(m_folder.Get(), name);
    } else {
      ReplaceStateFile(m_folder.Get(), name, xml + "\n");
    }
  } catch (const StateError& error) {
    throw StateError(PathIn(m_path, name) + ": the state is not kept: " + error.what());
  }
}

}  // namespace devhost
