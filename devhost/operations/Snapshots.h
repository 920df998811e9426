#ifndef DEVHOST_OPERATIONS_SNAPSHOTS_H
#define DEVHOST_OPERATIONS_SNAPSHOTS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// Snapshots that cannot be kept or read: where and why, in one line.
class SnapshotError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A device at one moment: its file, byte for byte, and its effective settings as a device settings element. Both hold
// secrets.
struct DeviceCopy {
  std::string file;
  std::string settings;
};

// What one operation has found and left.
struct Snapshot {
  unsigned long number = 0;  // counts from 1 for each device; numbers are never used again
  std::int64_t time = 0;     // of its start, in seconds since 1970
  std::string operation;     // "apply" or "undo 3"
  DeviceCopy before;
  std::optional<DeviceCopy> after;  // missing when the operation has failed or was interrupted
  bool isRestartDue = false;        // it has the mark of RestartDue
};

// How many snapshots of a device stay. The youngest one always does.
struct SnapshotLimits {
  std::size_t most = 100;
  std::int64_t longest = std::int64_t{400} * 24 * 60 * 60;  // in seconds
};

// A snapshot that cannot be read, is not whole, or could have been written by another user.
struct DamagedSnapshot {
  unsigned long number = 0;
  std::string problem;  // which file of it is damaged and how, and what to do, in one line
};

// The snapshots of one device, both lists with the oldest first.
struct SnapshotList {
  std::vector<Snapshot> snapshots;
  std::vector<DamagedSnapshot> damaged;
};

// The snapshots of one device that are kept in `folder`; none when there is no such folder. Changes and locks nothing.
// Throws SnapshotError for a folder of another user and one that others can look into.
SnapshotList ReadSnapshots(const std::string& folder, unsigned long deviceId);

// The number of the youngest snapshot when it has the mark that the restart after its operation is due; 0 when it has none,
// and when the folder cannot be looked into. Changes and locks nothing.
unsigned long RestartDue(const std::string& folder, unsigned long deviceId);

// The number of the youngest snapshot when its operation has not come to its end: it has failed, or the process was ended.
// 0 otherwise, also when it has failed and changed nothing, and when the folder cannot be looked into. Changes and locks
// nothing.
unsigned long UnfinishedSnapshot(const std::string& folder, unsigned long deviceId);

// Keeps snapshots of one device in a folder: FOLDER/driver-ID/NUMBER/ has a file for each text of a snapshot. Folders have
// mode 0700, files 0600.
class SnapshotFolder {
 public:
  // Makes the folder when it is missing and locks it for as long as this object, or the process, lives. Throws
  // SnapshotError, also for a folder of another user, one that others can read or write, and one that is in use.
  SnapshotFolder(const std::string& folder, unsigned long deviceId, const SnapshotLimits& limits = {});

  // Keeps what an operation has found, on the disk when this returns, and removes what is beyond the limits. `time` is now.
  // The snapshot has the mark of RestartDue when `restarts` is set, and when the youngest one before it has it.
  // Returns the snapshot's number. Throws SnapshotError; a new snapshot is then not there.
  unsigned long Begin(const std::string& operation, const std::string& deviceName, const DeviceCopy& before,
                      std::int64_t time, bool restarts = false);
  // Adds what the operation has left. Throws SnapshotError.
  void Finish(unsigned long number, const DeviceCopy& after);
  // Notes that the operation has failed and changed nothing, so there is nothing to bring to an end. Throws SnapshotError.
  void NoteUnchanged(unsigned long number);
  // Takes the mark of RestartDue away: the restart is done, or nothing asks for one. Throws SnapshotError.
  void EndRestart(unsigned long number);

 private:
  void RemoveOld(unsigned long youngest, std::int64_t now);
  std::string PathOf(unsigned long number) const;

  const std::string m_folder;  // of the device
  const SnapshotLimits m_limits;
  FileDescriptor m_lock;
};

}  // namespace devhost

#endif
