#ifndef DRIVERS_LOCALSNMPD_DAEMON_FOLDER_H
#define DRIVERS_LOCALSNMPD_DAEMON_FOLDER_H

#include <string>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

// The files of one device's daemon. In the device's folder:
//
//   snmpd.conf          the device's own, not touched here
//   daemon/             for the driver and its daemon alone (mode 0700); the daemon's working folder:
//     driver.conf       what the daemon reads after that
//     agentx            the socket for its subagents
//     lock              locked while a device uses the folder
//     data/             what it stores: its engine id, values that were set over SNMP
//     kept/             what it reads of that at its next start, see KeptData.h
//
// The daemon gets all names by its working folder, because the path of a socket has at most 107 bytes. Secrets are
// in data/ and kept/ only, the keys of users, which have to survive a restart. What the daemon reads in place of snmpd.conf
// is in memory, and its log, which quotes that, has no name.
class DaemonFolder {
 public:
  // What the daemon calls the text that it reads in place of snmpd.conf: its standard input.
  static constexpr char kServedName[] = "/proc/self/fd/0";
  static constexpr char kDriverConfigName[] = "driver.conf";
  static constexpr char kDataName[] = "data";
  static constexpr char kKeptName[] = "kept";

  // `folder` need not exist yet.
  explicit DaemonFolder(const std::string& folder);

  // Makes what is missing of daemon/, writes driver.conf, opens an empty log, and locks the folder for the life of this
  // object. Returns what is wrong, in one line, or nothing.
  std::string Prepare();
  // Writes what the daemon may read of the data that it stored when it last ran. Call it while the daemon does not run.
  // Returns the same.
  std::string KeepData() const;
  // What the daemon has written to its log; empty when there is none.
  std::string ReadLog() const;

  // Open after Prepare.
  const devhost::FileDescriptor& GetFolder() const { return m_daemon; }
  const devhost::FileDescriptor& GetLog() const { return m_log; }

  // The absolute path of daemon/.
  std::string GetPath() const;

 private:
  std::string Lock();

  std::string m_folder;
  devhost::FileDescriptor m_daemon;
  devhost::FileDescriptor m_lock;  // open from the first Prepare on
  devhost::FileDescriptor m_log;
};

}  // namespace drivers

#endif
