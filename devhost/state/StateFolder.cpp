#include "devhost/state/StateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "devhost/state/StateFile.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"
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

// Whether the last name of a path is a symbolic link that leads to nothing.
bool IsDanglingLink(const std::filesystem::path& path) {
  std::error_code ignored;
  const std::filesystem::path link = path.has_filename() ? path : path.parent_path();
  return std::filesystem::is_symlink(std::filesystem::symlink_status(link, ignored)) &&
         !std::filesystem::exists(link, ignored);
}

[[noreturn]] void RefuseFolder(const std::string& path, const std::string& reason) {
  throw StateError("cannot keep states in " + Quoted(path) + ": " + reason +
                   "; allowed: a folder that can be written, or one that can be made");
}

FileDescriptor OpenFolder(const std::string& path) {
  std::error_code error;
  // When this fails, opening the folder fails too and says so.
  std::filesystem::create_directories(path, error);
  FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.IsOpen()) {
    const int opening = errno;
    RefuseFolder(path, IsDanglingLink(path) ? "it is a symbolic link to nothing"
                                            : Reason(opening == ENOENT && error ? error.value() : opening));
  }
  // Where the lock file exists already, only the first state would fail in a folder that cannot be written.
  if (::faccessat(folder.Get(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
    RefuseFolder(path, Reason(errno));
  }
  return folder;
}

FileDescriptor Lock(int folder, const std::string& path) {
  FileDescriptor lock(::openat(folder, kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!lock.IsOpen()) {
    throw StateError("cannot keep states in " + Quoted(path) +
                     ": its file \"lock\" cannot be opened: " + (errno == ELOOP ? "it is a symbolic link" : Reason(errno)));
  }
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    throw StateError("cannot keep states in " + Quoted(path) + ": " +
                     (errno == EWOULDBLOCK ? "another devhost is using it; allowed: one at a time" : Reason(errno)));
  }
  return lock;
}

// A state that was read: as it stands in its file, and as a node; both empty when there is none.
struct ReadState {
  std::string text;
  h7::auto_com<H7XML::INode> node;
};

// Throws StateError with the place when the state is damaged.
ReadState ReadSoundFile(int folder, const std::string& path, const std::string& name) {
  std::string place = PathIn(path, name);
  std::string damage;
  try {
    std::optional<std::string> text = ReadStateFile(folder, name);
    if (!text) {
      return {};
    }
    if (!text->empty()) {
      h7::auto_com<H7XML::INode> node = ReadXmlNode(*text);
      return {std::move(*text), std::move(node)};
    }
    damage = "the file is empty";
  } catch (const XmlError& error) {
    place += ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column());
    damage = OneLine(error.what());
  } catch (const StateError& error) {
    damage = error.what();
  }
  throw StateError(place + ": the state is damaged: " + damage);
}

}  // namespace

StateFolder::StateFolder(const std::string& path)
    : m_path(path), m_folder(OpenFolder(path)), m_lock(Lock(m_folder.Get(), path)) {}

h7::auto_com<H7XML::INode> StateFolder::Load(unsigned long driverId) {
  const std::string name = FileName(driverId);
  std::string problem;
  try {
    return ReadSoundFile(m_folder.Get(), m_path, name).node;
  } catch (const StateError& error) {
    problem = error.what();
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

std::string LookIntoStateFolder(const std::string& path, unsigned long driverId) {
  const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.IsOpen()) {
    throw StateError("cannot look into the state folder " + Quoted(path) + ": " + Reason(errno) +
                     "; allowed: a folder that devhost run --state has made");
  }
  return ReadSoundFile(folder.Get(), path, FileName(driverId)).text;
}

}  // namespace devhost
