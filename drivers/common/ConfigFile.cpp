#include "drivers/common/ConfigFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "drivers/common/FileDescriptor.h"
#include "drivers/common/FileStatus.h"
#include "drivers/common/WriterLock.h"

namespace drivers {

namespace {

const char kName[] = "snmpd.conf";
// One fixed name: under the writer's lock it can only be what a killed writer left, so the next one may remove it.
const char kTemporaryName[] = ".snmpd.conf.new";

// More than anybody who edits files needs: each round means that somebody replaced the file within a few system calls.
const int kMostRounds = 10;

const mode_t kPermissionBits = 07777;
const mode_t kPrivate = 0600;  // communities are secrets

// An access list with the three entries of the mode and nothing else: a version, and entries of a tag, rights and an id.
const ssize_t kSizeOfListOfMode = 4 + 3 * (2 + 2 + 4);

int LastStatus() {
  return FileStatusOfErrno(errno);
}

// An open that follows no link fails with ELOOP at a link and with ENXIO at a socket.
int StatusOfFailedOpen() {
  return errno == ELOOP ? kFileIsSymbolicLink : errno == ENXIO ? kFileIsNotRegular : LastStatus();
}

bool IsBeyondFileSystem(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

}  // namespace

// What stands under the file's name before a write.
struct ConfigFile::Former {
  bool exists = false;
  struct stat attributes = {};
};

ConfigFile::ConfigFile(const std::string& folder, std::shared_ptr<FileCalls> calls)
    : m_folder(folder), m_calls(std::move(calls)) {}

std::string ConfigFile::GetPath() const {
  const bool hasSlash = !m_folder.empty() && m_folder.back() == '/';
  return m_folder + (hasSlash ? "" : "/") + kName;
}

int ConfigFile::Read(std::string& text, Links links) const {
  const FileDescriptor folder(*m_calls, m_calls->OpenFolder(m_folder.c_str()));
  if (!folder.IsOpen()) {
    return LastStatus();
  }
  const FileDescriptor file(*m_calls, m_calls->OpenForReading(folder.Get(), kName, links));
  if (!file.IsOpen()) {
    const bool isMissing = errno == ENOENT;
    const int failed = StatusOfFailedOpen();
    Former former;
    const int status = isMissing && links == Links::Follow ? LookAtFormer(folder.Get(), former) : isMissing ? 0 : failed;
    if (status == 0) {
      text.clear();
    }
    return status;
  }
  return ReadOpened(file.Get(), text);
}

int ConfigFile::ReadOpened(int descriptor, std::string& text) const {
  struct stat attributes = {};
  if (m_calls->StatOpened(descriptor, attributes) != 0) {
    return LastStatus();
  }
  if (!S_ISREG(attributes.st_mode)) {
    return kFileIsNotRegular;
  }
  if (attributes.st_size > static_cast<off_t>(kMaximumSize)) {
    return FileStatusOfErrno(EFBIG);
  }
  // Room for one byte more than the file has: the read that finds its end needs some. A file that grows meanwhile, or does
  // not say its size, is read on.
  std::string content(static_cast<std::size_t>(attributes.st_size) + 1, '\0');
  std::size_t length = 0;
  while (length <= kMaximumSize) {
    if (length == content.size()) {
      content.resize(2 * length);
    }
    const ssize_t count = m_calls->Read(descriptor, content.data() + length, content.size() - length);
    if (count == 0) {
      content.resize(length);
      text = std::move(content);
      return 0;
    }
    if (count > 0) {
      length += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return LastStatus();
    }
  }
  return FileStatusOfErrno(EFBIG);
}

int ConfigFile::Replace(const std::string& text) const {
  return Install(text, nullptr);
}

int ConfigFile::ReplaceExpected(const std::string& expected, const std::string& text) const {
  return Install(text, &expected);
}

int ConfigFile::Install(const std::string& text, const std::string* expected) const {
  if (text.size() > kMaximumSize) {
    return kTextTooLarge;
  }
  const FileDescriptor folder(*m_calls, m_calls->OpenFolder(m_folder.c_str()));
  if (!folder.IsOpen()) {
    return LastStatus();
  }
  WriterLock lock(*m_calls, folder.Get());
  int status = lock.Take();
  Former former;
  if (status == 0) {
    status = LookAtFormer(folder.Get(), former);
  }
  if (status == 0 && expected != nullptr) {
    status = CompareFile(folder.Get(), *expected, text);
  }
  if (status == 0 && former.exists) {
    status = RefuseAccessList(folder.Get());
  }
  if (status != 0) {
    return status;
  }
  status = RemoveLeftover(folder.Get(), former);
  if (status != 0) {
    return status;
  }
  status = WriteTemporary(folder.Get(), text, former);
  bool isExchanged = false;
  if (status == 0) {
    status = expected == nullptr ? RenameTemporary(folder.Get())
             : former.exists     ? ExchangeTemporary(folder.Get(), *expected, text, isExchanged)
                                 : AddTemporary(folder.Get(), *expected, text);
  }
  if (status != 0) {
    m_calls->Remove(folder.Get(), kTemporaryName);
  } else if (isExchanged) {
    status = DropDisplaced(folder.Get(), *expected, text);
  }
  return status != 0 ? status : Sync(folder.Get());
}

int ConfigFile::LookAtFormer(int folder, Former& former) const {
  if (m_calls->Stat(folder, kName, former.attributes) != 0) {
    return errno == ENOENT ? 0 : LastStatus();
  }
  if (S_ISLNK(former.attributes.st_mode)) {
    return kFileIsSymbolicLink;
  }
  if (!S_ISREG(former.attributes.st_mode)) {
    return kFileIsNotRegular;
  }
  former.exists = true;
  return 0;
}

// The mode of a file with an access list says what the list gives at most. As a mode of the new file, it would give that to
// the file's group.
int ConfigFile::RefuseAccessList(int folder) const {
  const FileDescriptor file(*m_calls, m_calls->OpenForReading(folder, kName, Links::Refuse));
  if (!file.IsOpen()) {
    return errno == ENOENT ? kFileWasChanged : StatusOfFailedOpen();
  }
  bool isFound = false;
  const int status = FindAccessList(file.Get(), isFound);
  return status == 0 && isFound ? FileStatusOfErrno(EPERM) : status;
}

// A new file has the list that its folder gives to new files.
int ConfigFile::DropAccessList(int descriptor) const {
  bool isFound = false;
  const int status = FindAccessList(descriptor, isFound);
  return isFound && m_calls->RemoveAccessList(descriptor) != 0 ? LastStatus() : status;
}

// Whether there is an access list that says more than the mode.
int ConfigFile::FindAccessList(int descriptor, bool& isFound) const {
  const ssize_t size = m_calls->AccessListSize(descriptor);
  isFound = size > kSizeOfListOfMode;
  return size >= 0 || errno == ENODATA || errno == EOPNOTSUPP ? 0 : LastStatus();
}

int ConfigFile::RemoveLeftover(int folder, const Former& former) const {
  struct stat leftover = {};
  if (m_calls->Stat(folder, kTemporaryName, leftover) != 0) {
    return errno == ENOENT ? 0 : LastStatus();
  }
  // A writer that was killed has left it to its own user, or has given it to the owner of the file already.
  const bool isOfWriter = leftover.st_uid == ::geteuid() || leftover.st_uid == 0 ||
                          (former.exists && leftover.st_uid == former.attributes.st_uid);
  if (S_ISDIR(leftover.st_mode)) {
    return kFolderInTheWay;
  }
  if (!isOfWriter) {
    return kTemporaryOfAnotherUser;
  }
  // The name goes and nothing behind it: a link is not followed, nobody waits for a pipe.
  return m_calls->Remove(folder, kTemporaryName) != 0 && errno != ENOENT ? LastStatus() : 0;
}

int ConfigFile::CompareFile(int folder, const std::string& expected, const std::string& wanted) const {
  const FileDescriptor file(*m_calls, m_calls->OpenForReading(folder, kName, Links::Refuse));
  if (!file.IsOpen()) {
    return errno != ENOENT ? StatusOfFailedOpen() : expected.empty() ? 0 : kFileWasChanged;
  }
  return CompareOpened(file.Get(), expected, wanted);
}

int ConfigFile::CompareDisplaced(int folder, const std::string& expected, const std::string& wanted) const {
  const FileDescriptor file(*m_calls, m_calls->OpenForReading(folder, kTemporaryName, Links::Refuse));
  if (!file.IsOpen()) {
    return StatusOfFailedOpen();
  }
  // Whoever still has it open for writing would go on in a file that is about to vanish. Where the system does not say, the
  // content alone decides.
  if (m_calls->LockOutWriters(file.Get()) != 0 && errno != EACCES && errno != EINVAL) {
    return LastStatus();
  }
  return CompareOpened(file.Get(), expected, wanted);
}

int ConfigFile::CompareOpened(int descriptor, const std::string& expected, const std::string& wanted) const {
  std::string text;
  const int status = ReadOpened(descriptor, text);
  // A host that ended right after the new text was put in place does not know that it is.
  return status != 0 ? status : text == expected || text == wanted ? 0 : kFileWasChanged;
}

int ConfigFile::RenameTemporary(int folder) const {
  return m_calls->Rename(folder, kTemporaryName, kName) != 0 ? LastStatus() : 0;
}

int ConfigFile::CompareAndRename(int folder, const std::string& expected, const std::string& wanted) const {
  const int status = CompareFile(folder, expected, wanted);
  return status != 0 ? status : RenameTemporary(folder);
}

int ConfigFile::AddTemporary(int folder, const std::string& expected, const std::string& wanted) const {
  if (m_calls->RenameNew(folder, kTemporaryName, kName) == 0) {
    return 0;
  }
  if (IsBeyondFileSystem(errno)) {
    return CompareAndRename(folder, expected, wanted);
  }
  return errno == EEXIST ? kFileWasChanged : LastStatus();
}

int ConfigFile::ExchangeTemporary(int folder, const std::string& expected, const std::string& wanted,
                                  bool& isExchanged) const {
  // An edit that came while the new text was flushed is seen here without putting the new text in its place for a moment.
  const int status = CompareFile(folder, expected, wanted);
  if (status != 0) {
    return status;
  }
  isExchanged = m_calls->Exchange(folder, kTemporaryName, kName) == 0;
  if (isExchanged) {
    return 0;
  }
  return IsBeyondFileSystem(errno) ? CompareAndRename(folder, expected, wanted)
         : errno == ENOENT         ? kFileWasChanged
                                   : LastStatus();
}

int ConfigFile::DropDisplaced(int folder, const std::string& expected, const std::string& wanted) const {
  int status = CompareDisplaced(folder, expected, wanted);
  if (status == 0 && m_calls->Remove(folder, kTemporaryName) != 0) {
    status = LastStatus();
  }
  if (status != 0) {
    PutBack(folder, wanted);
    Sync(folder);
  }
  return status;
}

void ConfigFile::PutBack(int folder, const std::string& wanted) const {
  // What should come out of an exchange: what stands in place, unless somebody replaced or changed that, too. Then theirs is
  // the newest, and goes back in place.
  std::string inPlace = wanted;
  for (int round = 0; round < kMostRounds; ++round) {
    std::string displaced;
    ReadDisplaced(folder, displaced);
    if (m_calls->Exchange(folder, kTemporaryName, kName) != 0) {
      // Somebody else's text must not stay under the name that the next writer removes.
      m_calls->Rename(folder, kTemporaryName, kName);
      return;
    }
    std::string taken;
    if (ReadDisplaced(folder, taken) != 0 || taken == inPlace) {
      break;
    }
    inPlace = std::move(displaced);
  }
  m_calls->Remove(folder, kTemporaryName);
}

int ConfigFile::ReadDisplaced(int folder, std::string& text) const {
  const FileDescriptor file(*m_calls, m_calls->OpenForReading(folder, kTemporaryName, Links::Refuse));
  return file.IsOpen() ? ReadOpened(file.Get(), text) : StatusOfFailedOpen();
}

int ConfigFile::WriteTemporary(int folder, const std::string& text, const Former& former) const {
  FileDescriptor file(*m_calls, m_calls->CreateNew(folder, kTemporaryName, kPrivate));
  if (!file.IsOpen()) {
    return LastStatus();
  }
  const int status = FillTemporary(file.Get(), text, former);
  // Some file systems report a full disk only now. An interrupted close has closed.
  const int closed = file.Close() != 0 && errno != EINTR ? LastStatus() : 0;
  return status != 0 ? status : closed;
}

int ConfigFile::FillTemporary(int descriptor, const std::string& text, const Former& former) const {
  int status = DropAccessList(descriptor);
  if (status != 0) {
    return status;
  }
  // Owner first: a change of owner takes set-id bits away. The mode stays private until the text is complete.
  if (former.exists && m_calls->ChangeOwner(descriptor, former.attributes.st_uid, former.attributes.st_gid) != 0) {
    return LastStatus();
  }
  status = WriteAll(descriptor, text);
  if (status != 0) {
    return status;
  }
  const mode_t mode = former.exists ? former.attributes.st_mode & kPermissionBits : kPrivate;
  if (m_calls->ChangeMode(descriptor, mode) != 0) {
    return LastStatus();
  }
  return Sync(descriptor);
}

int ConfigFile::WriteAll(int descriptor, const std::string& text) const {
  std::size_t written = 0;
  while (written != text.size()) {
    const ssize_t count = m_calls->Write(descriptor, text.data() + written, text.size() - written);
    if (count > 0) {
      written += static_cast<std::size_t>(count);
    } else if (count == 0) {
      return FileStatusOfErrno(EIO);
    } else if (errno != EINTR) {
      return LastStatus();
    }
  }
  return 0;
}

int ConfigFile::Sync(int descriptor) const {
  while (m_calls->Sync(descriptor) != 0) {
    if (errno != EINTR) {
      return LastStatus();
    }
  }
  return 0;
}

}  // namespace drivers
