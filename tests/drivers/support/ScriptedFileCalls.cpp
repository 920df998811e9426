#include "tests/drivers/support/ScriptedFileCalls.h"

#include <algorithm>
#include <cerrno>

bool ScriptedFileCalls::Fails(const std::string& name) {
  names.push_back(name);
  const int error = script(name, names.size() - 1);
  if (error != 0) {
    errno = error;
  }
  return error != 0;
}

int ScriptedFileCalls::OpenFolder(const char* path) {
  return Fails("OpenFolder") ? -1 : FileCalls::OpenFolder(path);
}

int ScriptedFileCalls::OpenForReading(int folder, const char* name, drivers::Links links) {
  return Fails("OpenForReading") ? -1 : FileCalls::OpenForReading(folder, name, links);
}

int ScriptedFileCalls::CreateNew(int folder, const char* name, mode_t mode) {
  return Fails("CreateNew") ? -1 : FileCalls::CreateNew(folder, name, mode);
}

int ScriptedFileCalls::Close(int descriptor) {
  const int closed = FileCalls::Close(descriptor);
  return Fails("Close") ? -1 : closed;
}

int ScriptedFileCalls::OpenLock(int folder, const char* name) {
  return Fails("OpenLock") ? -1 : FileCalls::OpenLock(folder, name);
}

int ScriptedFileCalls::Lock(int descriptor) {
  return Fails("Lock") ? -1 : FileCalls::Lock(descriptor);
}

int ScriptedFileCalls::Stat(int folder, const char* name, struct stat& result) {
  return Fails("Stat") ? -1 : FileCalls::Stat(folder, name, result);
}

int ScriptedFileCalls::StatOpened(int descriptor, struct stat& result) {
  return Fails("StatOpened") ? -1 : FileCalls::StatOpened(descriptor, result);
}

ssize_t ScriptedFileCalls::Read(int descriptor, char* buffer, std::size_t size) {
  return Fails("Read") ? -1 : FileCalls::Read(descriptor, buffer, std::min(size, most));
}

ssize_t ScriptedFileCalls::Write(int descriptor, const char* data, std::size_t size) {
  return Fails("Write") ? -1 : FileCalls::Write(descriptor, data, std::min(size, most));
}

int ScriptedFileCalls::ChangeOwner(int descriptor, uid_t user, gid_t group) {
  owners.emplace_back(user, group);
  return Fails("ChangeOwner") ? -1 : FileCalls::ChangeOwner(descriptor, user, group);
}

int ScriptedFileCalls::ChangeMode(int descriptor, mode_t mode) {
  return Fails("ChangeMode") ? -1 : FileCalls::ChangeMode(descriptor, mode);
}

int ScriptedFileCalls::Sync(int descriptor) {
  return Fails("Sync") ? -1 : FileCalls::Sync(descriptor);
}

ssize_t ScriptedFileCalls::AccessListSize(int descriptor) {
  return Fails("AccessListSize") ? -1 : FileCalls::AccessListSize(descriptor);
}

int ScriptedFileCalls::RemoveAccessList(int descriptor) {
  return Fails("RemoveAccessList") ? -1 : FileCalls::RemoveAccessList(descriptor);
}

int ScriptedFileCalls::Rename(int folder, const char* from, const char* to) {
  return Fails("Rename") ? -1 : FileCalls::Rename(folder, from, to);
}

int ScriptedFileCalls::LockOutWriters(int descriptor) {
  return Fails("LockOutWriters") ? -1 : FileCalls::LockOutWriters(descriptor);
}

int ScriptedFileCalls::RenameNew(int folder, const char* from, const char* to) {
  return Fails("RenameNew") ? -1 : FileCalls::RenameNew(folder, from, to);
}

int ScriptedFileCalls::Exchange(int folder, const char* first, const char* second) {
  return Fails("Exchange") ? -1 : FileCalls::Exchange(folder, first, second);
}

int ScriptedFileCalls::Remove(int folder, const char* name) {
  return Fails("Remove") ? -1 : FileCalls::Remove(folder, name);
}
