#include "devhost/state/StateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>
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

// For an open folder.
std::string WhoElseCanWriteInto(int folder) {
  struct stat status = {};
  const std::string who = ::fstat(folder, &status) == 0 ? WhoElseCanWrite(status) : Reason(errno);
  return who.empty() ? who : who + "; allowed: a folder of your own that no other user can write";
}

// Makes a folder and those above it where they are missing, for this user alone whatever the umask. Returns 0 or the error
// number of the last one.
int MakeFolder(const std::filesystem::path& path) {
  std::error_code ignored;
  if (path.empty() || std::filesystem::exists(path, ignored)) {
    return 0;
  }
  const int above = MakeFolder(path.parent_path());
  if (!path.has_filename()) {
    return above;  // a slash at its end
  }
  return ::mkdir(path.c_str(), S_IRWXU) == 0 && ::chmod(path.c_str(), S_IRWXU) == 0 ? 0 : errno;
}

FileDescriptor OpenFolder(const std::string& path) {
  // When this fails, opening the folder fails too and says so.
  const int making = MakeFolder(path);
  FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.IsOpen()) {
    const int opening = errno;
    RefuseFolder(path, IsDanglingLink(path) ? "it is a symbolic link to nothing"
                                            : Reason(opening == ENOENT && making != 0 ? making : opening));
  }
  const std::string others = WhoElseCanWriteInto(folder.Get());
  if (!others.empty()) {
    throw StateError("cannot keep states in " + Quoted(path) + ": " + others);
  }
  // Where the lock file exists already, only the first state would fail in a folder that cannot be written.
  if (::faccessat(folder.Get(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
    RefuseFolder(path, Reason(errno));
  }
  return folder;
}

[[noreturn]] void RefuseLock(const std::string& path, const std::string& reason) {
  throw StateError("cannot keep states in " + Quoted(path) + ": its file \"lock\" " + reason +
                   "; allowed: a file with no other name, or none");
}

// Why an open file cannot serve as the lock; "" when it can. A file with a second name may be the lock of another folder.
std::string WrongWithLock(int lock) {
  struct stat status = {};
  if (::fstat(lock, &status) != 0) {
    return "cannot be looked at: " + Reason(errno);
  }
  return !S_ISREG(status.st_mode) ? "is not a file" : status.st_nlink != 1 ? "has a second name (a hard link)" : "";
}

// Returns 0 or an error number. A host that was killed holds the lock until the system has taken its process apart, so a
// lock that somebody has is tried again for a moment.
int LockSoon(int lock) {
  constexpr int kTries = 100;
  for (int i = 0; ::flock(lock, LOCK_EX | LOCK_NB) != 0; ++i) {
    if (errno != EWOULDBLOCK || i == kTries) {
      return errno;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return 0;
}

FileDescriptor Lock(int folder, const std::string& path) {
  // Nobody waits for the other end of a pipe.
  FileDescriptor lock(::openat(folder, kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
  if (!lock.IsOpen()) {
    RefuseLock(path, errno == ELOOP    ? "is a symbolic link"
                     : errno == EISDIR ? "is a folder"
                                       : "cannot be opened: " + Reason(errno));
  }
  const std::string wrong = WrongWithLock(lock.Get());
  if (!wrong.empty()) {
    RefuseLock(path, wrong);
  }
  const int error = LockSoon(lock.Get());
  if (error != 0) {
    throw StateError("cannot keep states in " + Quoted(path) + ": " +
                     (error == EWOULDBLOCK ? "another devhost is using it; allowed: one at a time" : Reason(error)));
  }
  return lock;
}

// A state that was read: as it stands in its file, and as a node; both empty when there is none.
struct ReadState {
  std::string text;
  h7::auto_com<H7XML::INode> node;
};

// Throws StateError with the place when the state is damaged or must not be used.
ReadState ReadSoundFile(int folder, const std::string& path, const std::string& name) {
  std::string place = PathIn(path, name);
  std::string problem = "the state is damaged: ";
  try {
    std::optional<std::string> text = ReadStateFile(folder, name);
    if (!text) {
      return {};
    }
    if (!text->empty()) {
      h7::auto_com<H7XML::INode> node = ReadXmlNode(*text);
      return {std::move(*text), std::move(node)};
    }
    problem += "the file is empty";
  } catch (const XmlError& error) {
    place += ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column());
    problem += OneLine(error.what());
  } catch (const StateError& error) {
    problem = "the state cannot be used: " + std::string(error.what());
  }
  throw StateError(place + ": " + problem);
}

// Throws StateError for a state that could not be read again. Returns the name of its element.
std::string CheckReadable(const std::string& xml, std::size_t largest) {
  // One more for the line feed at its end.
  if (xml.size() >= largest) {
    throw StateError("it has " + std::to_string(xml.size() + 1) + " bytes; allowed: at most " + std::to_string(largest) +
                     ", because more could not be read again");
  }
  try {
    return ReadXmlNode(xml)->GetName();
  } catch (const XmlError& error) {
    throw StateError("it could not be read again: " + OneLine(error.what()));
  }
}

}  // namespace

StateFolder::StateFolder(const std::string& path, std::size_t largest)
    : m_path(path), m_largest(largest), m_folder(OpenFolder(path)), m_lock(Lock(m_folder.Get(), path)) {}

h7::auto_com<H7XML::INode> StateFolder::Load(unsigned long driverId) {
  const std::string name = FileName(driverId);
  std::string problem;
  try {
    h7::auto_com<H7XML::INode> node = ReadSoundFile(m_folder.Get(), m_path, name).node;
    if (node) {
      m_elements[name] = node->GetName();
    }
    return node;
  } catch (const StateError& error) {
    problem = error.what();
  }
  try {
    problem += "; kept as " + PutStateFileAside(m_folder.Get(), name);
    m_notAside.erase(name);
  } catch (const StateError& error) {
    problem += "; " + std::string(error.what()) + "; no other state is kept in its place";
    m_notAside.insert(name);
  }
  throw StateError(problem);
}

void StateFolder::Save(unsigned long driverId, const std::string& xml) {
  const std::string name = FileName(driverId);
  try {
    if (m_notAside.count(name) != 0) {
      throw StateError("the one in its place could not be put aside");
    }
    if (xml.empty()) {
      RemoveStateFile(m_folder.Get(), name);
    } else {
      const std::string element = CheckReadable(xml, m_largest);
      const auto loaded = m_elements.find(name);
      if (loaded != m_elements.end() && loaded->second != element) {
        CopyStateFileAside(m_folder.Get(), name);
        m_elements.erase(loaded);
      }
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
  const std::string others = WhoElseCanWriteInto(folder.Get());
  if (!others.empty()) {
    throw StateError("cannot look into the state folder " + Quoted(path) + ": " + others);
  }
  return ReadSoundFile(folder.Get(), path, FileName(driverId)).text;
}

}  // namespace devhost
