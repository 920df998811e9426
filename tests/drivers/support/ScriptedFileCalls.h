#ifndef TESTS_DRIVERS_SUPPORT_SCRIPTED_FILE_CALLS_H
#define TESTS_DRIVERS_SUPPORT_SCRIPTED_FILE_CALLS_H

#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "drivers/common/FileCalls.h"

// The real calls, recorded by name, any of which can be made to fail.
class ScriptedFileCalls : public drivers::FileCalls {
 public:
  // Asked before each call with its name and its number from 0: 0 lets it through, anything else is the errno that it fails
  // with, undone. A failing Close closes all the same, as the system does.
  std::function<int(const std::string& name, std::size_t number)> script = [](const std::string&, std::size_t) { return 0; };
  // The most that one Read or Write moves.
  std::size_t most = std::numeric_limits<std::size_t>::max();

  std::vector<std::string> names;
  std::vector<std::pair<uid_t, gid_t>> owners;  // asked for with ChangeOwner

  int OpenFolder(const char* path) override;
  int OpenForReading(int folder, const char* name, drivers::Links links) override;
  int CreateNew(int folder, const char* name, mode_t mode) override;
  int Close(int descriptor) override;
  int OpenLock(int folder, const char* name) override;
  int Lock(int descriptor) override;
  int Stat(int folder, const char* name, struct stat& result) override;
  int StatOpened(int descriptor, struct stat& result) override;
  ssize_t Read(int descriptor, char* buffer, std::size_t size) override;
  ssize_t Write(int descriptor, const char* data, std::size_t size) override;
  int ChangeOwner(int descriptor, uid_t user, gid_t group) override;
  int ChangeMode(int descriptor, mode_t mode) override;
  int Sync(int descriptor) override;
  ssize_t AccessListSize(int descriptor) override;
  int RemoveAccessList(int descriptor) override;
  int LockOutWriters(int descriptor) override;
  int Rename(int folder, const char* from, const char* to) override;
  int RenameNew(int folder, const char* from, const char* to) override;
  int Exchange(int folder, const char* first, const char* second) override;
  int Remove(int folder, const char* name) override;

 private:
  bool Fails(const std::string& name);
};

#endif
