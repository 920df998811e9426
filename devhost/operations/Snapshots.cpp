#include "devhost/operations/Snapshots.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

#include "devhost/state/StateFile.h"
#include "devhost/state/StateStore.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

namespace fs = std::filesystem;

constexpr char kAbout[] = "about.xml";
constexpr char kFormat[] = "1";  // of a snapshot; a later version that writes more raises it
constexpr char kFileBefore[] = "before.conf";
constexpr char kSettingsBefore[] = "before.xml";
constexpr char kFileAfter[] = "after.conf";
constexpr char kSettingsAfter[] = "after.xml";
constexpr char kRestartDue[] = "restart-due";
constexpr char kUnchanged[] = "unchanged";
constexpr char kUnfinished[] = ".new";

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw SnapshotError("cannot use the snapshots in " + Quoted(path) + ": " + reason);
}

std::string Reason(int error) {
  return std::generic_category().message(error);
}

std::string DeviceFolder(const std::string& folder, unsigned long deviceId) {
  return folder + "/driver-" + std::to_string(deviceId);
}

// 0 for what is not a whole number from 1.
template <class Number>
Number NumberOf(const std::string& text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number > 0 ? number : 0;
}

// The problem of one snapshot, which the others do not share.
[[noreturn]] void FailAlone(const std::string& path, const std::string& reason) {
  throw SnapshotError("the snapshot in " + Quoted(path) + " is damaged: " + reason +
                      "; put that right, or rename the folder to leave the snapshot out");
}

// Opens a folder that nobody else can read or write.
FileDescriptor OpenPrivate(const std::string& path, void (*fail)(const std::string&, const std::string&) = &Fail) {
  FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status = {};
  if (!folder.IsOpen() || ::fstat(folder.Get(), &status) != 0) {
    fail(path, Reason(errno));
  }
  if (status.st_uid != ::geteuid() && status.st_uid != 0) {
    fail(path, "the folder belongs to another user; allowed: one of your own");
  }
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    fail(path, "other users can look into the folder, and snapshots hold communities; allowed: mode 0700");
  }
  return folder;
}

// For this user alone, whatever the umask.
FileDescriptor MakePrivate(const std::string& path) {
  const bool made = ::mkdir(path.c_str(), S_IRWXU) == 0;
  if (!made && errno != EEXIST) {
    Fail(path, Reason(errno));
  }
  if (made && ::chmod(path.c_str(), S_IRWXU) != 0) {
    Fail(path, Reason(errno));
  }
  return OpenPrivate(path);
}

[[noreturn]] void RefuseLock(const std::string& path, const std::string& reason) {
  Fail(path, "its file \"lock\" " + reason + "; allowed: a file with no other name, or none");
}

// Why an open file cannot serve as the lock; "" when it can. A file with a second name may be the lock of another folder.
std::string WrongWithLock(const FileDescriptor& lock) {
  struct stat status = {};
  if (::fstat(lock.Get(), &status) != 0) {
    return "cannot be looked at: " + Reason(errno);
  }
  return !S_ISREG(status.st_mode) ? "is not a file" : status.st_nlink != 1 ? "has a second name (a hard link)" : "";
}

FileDescriptor Lock(const FileDescriptor& folder, const std::string& path) {
  // Nobody waits for the other end of a pipe.
  FileDescriptor lock(
      ::openat(folder.Get(), "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!lock.IsOpen()) {
    RefuseLock(path, errno == ELOOP    ? "is a symbolic link"
                     : errno == EISDIR ? "is a folder"
                                       : "cannot be opened: " + Reason(errno));
  }
  if (const std::string wrong = WrongWithLock(lock); !wrong.empty()) {
    RefuseLock(path, wrong);
  }
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    Fail(path, errno == EWOULDBLOCK ? "another devhost is at work on this device; allowed: one at a time" : Reason(errno));
  }
  return lock;
}

// The numbers of the snapshots in a folder, the smallest first. What has another name is not ours.
std::vector<unsigned long> NumbersIn(const std::string& folder) {
  std::vector<unsigned long> numbers;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const auto number = NumberOf<unsigned long>(entry->path().filename().string());
    if (number != 0) {
      numbers.push_back(number);
    }
  }
  if (error) {
    Fail(folder, error.message());
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

std::string ReadPart(const FileDescriptor& folder, const std::string& name) {
  std::optional<std::string> text = ReadStateFile(folder.Get(), name);
  if (!text) {
    throw StateError("its file " + name + " is missing");
  }
  return std::move(*text);
}

// The text of a file that is XML, for sure.
std::string ReadXmlPart(const FileDescriptor& folder, const std::string& name) {
  std::string text = ReadPart(folder, name);
  try {
    ReadXml(text);
  } catch (const XmlError& error) {
    throw StateError("its file " + name + " is not well-formed XML in line " + std::to_string(error.Line()) + ": " +
                     error.what());
  }
  return text;
}

std::string AttributeOf(const XmlElement& element, const char* name) {
  const std::string* const value = element.FindAttribute(name);
  return value == nullptr ? "" : *value;
}

bool Has(const std::string& snapshot, const char* part) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(snapshot + "/" + part, ignored));
}

Snapshot ReadOne(const std::string& path, unsigned long number) {
  try {
    const FileDescriptor folder = OpenPrivate(path, &FailAlone);
    const XmlElement about = ReadXml(ReadXmlPart(folder, kAbout));
    if (const std::string format = AttributeOf(about, "format"); format != kFormat) {
      throw StateError("it has the format \"" + format + "\", and this version reads the format " + kFormat);
    }
    Snapshot snapshot;
    snapshot.number = number;
    snapshot.time = NumberOf<std::int64_t>(AttributeOf(about, "time"));
    snapshot.operation = AttributeOf(about, "operation");
    snapshot.before = {ReadPart(folder, kFileBefore), ReadXmlPart(folder, kSettingsBefore)};
    // The file of the settings is written last.
    if (ReadStateFile(folder.Get(), kSettingsAfter)) {
      snapshot.after = DeviceCopy{ReadPart(folder, kFileAfter), ReadXmlPart(folder, kSettingsAfter)};
    }
    snapshot.isRestartDue = Has(path, kRestartDue);
    return snapshot;
  } catch (const StateError& error) {
    FailAlone(path, error.what());
  }
}

std::string About(const std::string& operation, const std::string& deviceName, std::int64_t time) {
  XmlElement about;
  about.name = "snapshot";
  about.attributes = {{"format", kFormat}, {"time", std::to_string(time)}, {"operation", operation}, {"device", deviceName}};
  return XmlText(about, XmlStyle::Compact) + "\n";
}

// A folder that is removed, with what it holds, when this ends: what a killed process has left there, and what a full disk
// leaves.
struct Unfinished {
  explicit Unfinished(std::string where) : path(std::move(where)) { Remove(); }
  ~Unfinished() { Remove(); }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;

  void Remove() const {
    std::error_code ignored;  // then it cannot be made, either
    fs::remove_all(path, ignored);
  }

  const std::string path;
};

// 0 when there is none, and when the folder cannot be looked into.
unsigned long YoungestIn(const std::string& path) {
  std::error_code error;
  const fs::directory_iterator opened(path, error);
  const std::vector<unsigned long> numbers = error ? std::vector<unsigned long>() : NumbersIn(path);
  return numbers.empty() ? 0 : numbers.back();
}

}  // namespace

unsigned long RestartDue(const std::string& folder, unsigned long deviceId) {
  const std::string path = DeviceFolder(folder, deviceId);
  const unsigned long youngest = YoungestIn(path);
  return youngest != 0 && Has(path + "/" + std::to_string(youngest), kRestartDue) ? youngest : 0;
}

unsigned long UnfinishedSnapshot(const std::string& folder, unsigned long deviceId) {
  const std::string path = DeviceFolder(folder, deviceId);
  const unsigned long youngest = YoungestIn(path);
  const std::string snapshot = path + "/" + std::to_string(youngest);
  return youngest != 0 && !Has(snapshot, kSettingsAfter) && !Has(snapshot, kUnchanged) ? youngest : 0;
}

SnapshotList ReadSnapshots(const std::string& folder, unsigned long deviceId) {
  const std::string path = DeviceFolder(folder, deviceId);
  std::error_code ignored;
  SnapshotList list;
  if (!fs::exists(fs::symlink_status(folder, ignored))) {
    return list;
  }
  OpenPrivate(folder);
  if (!fs::exists(fs::symlink_status(path, ignored))) {
    return list;
  }
  OpenPrivate(path);
  for (const unsigned long number : NumbersIn(path)) {
    try {
      list.snapshots.push_back(ReadOne(path + "/" + std::to_string(number), number));
    } catch (const SnapshotError& error) {
      list.damaged.push_back({number, error.what()});
    }
  }
  return list;
}

SnapshotFolder::SnapshotFolder(const std::string& folder, unsigned long deviceId, const SnapshotLimits& limits)
    : m_folder(DeviceFolder(folder, deviceId)), m_limits(limits) {
  MakePrivate(folder);
  m_lock = Lock(MakePrivate(m_folder), m_folder);
}

unsigned long SnapshotFolder::Begin(const std::string& operation, const std::string& deviceName, const DeviceCopy& before,
                                    std::int64_t time, bool restarts) {
  const std::vector<unsigned long> numbers = NumbersIn(m_folder);
  const unsigned long number = numbers.empty() ? 1 : numbers.back() + 1;
  if (number == 0) {
    Fail(PathOf(numbers.back()), "no number is left after this one; rename the folder to leave the snapshot out");
  }
  const std::string path = PathOf(number);
  const Unfinished unfinished(path + kUnfinished);
  try {
    {
      const FileDescriptor folder = MakePrivate(unfinished.path);
      ReplaceStateFile(folder.Get(), kFileBefore, before.file);
      ReplaceStateFile(folder.Get(), kSettingsBefore, before.settings);
      ReplaceStateFile(folder.Get(), kAbout, About(operation, deviceName, time));
      if (restarts || (!numbers.empty() && Has(PathOf(numbers.back()), kRestartDue))) {
        ReplaceStateFile(folder.Get(), kRestartDue, "");
      }
    }
    fs::rename(unfinished.path, path);
    if (::fsync(OpenPrivate(m_folder).Get()) != 0) {
      Fail(m_folder, "the folder cannot be flushed to the disk: " + Reason(errno));
    }
  } catch (const StateError& error) {
    Fail(unfinished.path, error.what());
  } catch (const fs::filesystem_error& error) {
    Fail(path, error.code().message());
  }
  RemoveOld(number, time);
  return number;
}

void SnapshotFolder::Finish(unsigned long number, const DeviceCopy& after) {
  const std::string path = PathOf(number);
  const FileDescriptor folder = OpenPrivate(path);
  try {
    ReplaceStateFile(folder.Get(), kFileAfter, after.file);
    ReplaceStateFile(folder.Get(), kSettingsAfter, after.settings);
  } catch (const StateError& error) {
    Fail(path, error.what());
  }
}

void SnapshotFolder::NoteUnchanged(unsigned long number) {
  const std::string path = PathOf(number);
  try {
    ReplaceStateFile(OpenPrivate(path).Get(), kUnchanged, "");
  } catch (const StateError& error) {
    Fail(path, error.what());
  }
}

void SnapshotFolder::EndRestart(unsigned long number) {
  const std::string path = PathOf(number);
  try {
    RemoveStateFile(OpenPrivate(path).Get(), kRestartDue);
  } catch (const StateError& error) {
    Fail(path, error.what());
  }
}

void SnapshotFolder::RemoveOld(unsigned long youngest, std::int64_t now) {
  const std::vector<unsigned long> numbers = NumbersIn(m_folder);
  const auto isOld = [this, now](unsigned long number) {
    try {
      return now - ReadOne(PathOf(number), number).time > m_limits.longest;
    } catch (const SnapshotError&) {
      return false;
    }
  };
  for (std::size_t i = 0; i < numbers.size() && numbers[i] != youngest; ++i) {
    if (numbers.size() - i > m_limits.most || isOld(numbers[i])) {
      std::error_code ignored;  // one that stays is in nobody's way
      fs::remove_all(PathOf(numbers[i]), ignored);
    }
  }
}

std::string SnapshotFolder::PathOf(unsigned long number) const {
  return m_folder + "/" + std::to_string(number);
}

}  // namespace devhost
