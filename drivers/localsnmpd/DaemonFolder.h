#ifndef DRIVERS_LOCALSNMPD_DAEMON_FOLDER_H
#define DRIVERS_LOCALSNMPD_DAEMON_FOLDER_H

#include <string>

#include "devhost/system/FileDescriptor.h"
#include "drivers/localsnmpd/ServedConfig.h"

namespace drivers {

// The files of one device's daemon. In the device's folder:
//
//   snmpd.conf          the device's own, not touched here
//   snmpd.conf.served   what the daemon reads in its place
//   daemon/             for the driver and its daemon alone (mode 0700); the daemon's working folder:
//     driver.conf       what the daemon reads after that
//     log               what it writes, anew with each start
//     agentx            the socket for its subagents
//     data/             what it keeps: its engine id, values that were set over SNMP
//
// The daemon gets all names relative to its working folder, because the path of a socket has at most 107 bytes.
class DaemonFolder {
 public:
  static constexpr char kServedName[] = "snmpd.conf.served";
  static constexpr char kDriverConfigName[] = "driver.conf";
  static constexpr char kDataName[] = "data";

  // `folder` need not exist yet.
  explicit DaemonFolder(const std::string& folder);

  // Makes what is missing of daemon/, writes driver.conf and an empty log, and locks it for this object. Returns what is
  // wrong, in one line, or nothing.
  std::string Prepare();
  // Writes snmpd.conf.served, mode 0600. Returns the same.
  std::string WriteServed(const std::string& text) const;
  // What the daemon has written to its log; empty when there is none.
  std::string ReadLog() const;

  // Open after Prepare.
  const devhost::FileDescriptor& GetFolder() const { return m_daemon; }
  const devhost::FileDescriptor& GetLog() const { return m_log; }

  // The absolute path of daemon/.
  std::string GetPath() const;
  // Where the daemon looks for included files.
  IncludePaths GetIncludePaths() const;

 private:
  std::string m_folder;
  devhost::FileDescriptor m_daemon;
  devhost::FileDescriptor m_log;
};

}  // namespace drivers

#endif
