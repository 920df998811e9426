#include "devhost/state/StateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "devhost/state/StateStore.h"
#include "devhost/system/FileDescriptor.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"

namespace devhost {

namespace {

[[noreturn]] void Fail(const std::string& what, int error) {
  throw StateError(what + ": " + std::generic_category().message(error));
}

void FlushFolder(int folder) {
  if (::fsync(folder) != 0) {
    Fail("its folder cannot be flushed to the disk", errno);
  }
}

// Writes a new file onto the disk. What a killed host has left under that name is in nobody's use.
void WriteNewFile(int folder, const std::string& name, const std::string& text) {
  if (::unlinkat(folder, name.c_str(), 0) != 0 && errno != ENOENT) {
    Fail("an old " + name + " cannot be removed", errno);
  }
  const FileDescriptor file(::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.IsOpen()) {
    Fail(name + " cannot be made", errno);
  }
  Output output(file.Get());
  output.Write(text);
  if (output.Error() != 0) {
    Fail("it cannot be written", output.Error());
  }
  if (::fsync(file.Get()) != 0) {
    Fail("it cannot be flushed to the disk", errno);
  }
}

std::string FreeName(int folder, const std::string& name) {
  std::string aside = name + ".damaged";
  struct stat status = {};
  for (unsigned int i = 2; ::fstatat(folder, aside.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0; ++i) {
    aside = name + ".damaged-" + std::to_string(i);
  }
  return aside;
}

}  // namespace

std::string WhoElseCanWrite(const struct stat& status) {
  if (status.st_uid != ::geteuid() && status.st_uid != 0) {
    return "it belongs to another user (id " + std::to_string(status.st_uid) + ")";
  }
  return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? "other users can write it" : "";
}

std::optional<std::string> ReadStateFile(int folder, const std::string& name) {
  struct stat status = {};
  const bool isThere = ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (!isThere && errno == ENOENT) {
    return std::nullopt;
  }
  // Nobody can change that now: the folder has been checked, too.
  if (isThere && S_ISREG(status.st_mode) && !WhoElseCanWrite(status).empty()) {
    throw StateError(WhoElseCanWrite(status));
  }
  try {
    return ReadRegularFileAt(folder, name, kLargestState);
  } catch (const FileError& error) {
    throw StateError(error.Reason());
  }
}

void ReplaceStateFile(int folder, const std::string& name, const std::string& text) {
  const std::string temporary = name + ".new";
  try {
    WriteNewFile(folder, temporary, text);
    if (::renameat(folder, temporary.c_str(), folder, name.c_str()) != 0) {
      Fail(temporary + " cannot take its name", errno);
    }
  } catch (...) {
    ::unlinkat(folder, temporary.c_str(), 0);
    throw;
  }
  FlushFolder(folder);
}

void RemoveStateFile(int folder, const std::string& name) {
  if (::unlinkat(folder, name.c_str(), 0) == 0) {
    FlushFolder(folder);
  } else if (errno != ENOENT) {
    Fail("it cannot be removed", errno);
  }
}

std::string PutStateFileAside(int folder, const std::string& name) {
  std::string aside = FreeName(folder, name);
  if (::renameat(folder, name.c_str(), folder, aside.c_str()) != 0) {
    Fail("it cannot be put aside", errno);
  }
  // Where that fails, the copy has its name all the same.
  ::fsync(folder);
  return aside;
}

std::string CopyStateFileAside(int folder, const std::string& name) {
  std::string aside = FreeName(folder, name);
  if (::linkat(folder, name.c_str(), folder, aside.c_str(), 0) == 0) {
    ::fsync(folder);
    return aside;
  }
  // Some file systems have no second names.
  return PutStateFileAside(folder, name);
}

}  // namespace devhost
