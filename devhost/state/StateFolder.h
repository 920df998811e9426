#ifndef DEVHOST_STATE_STATE_FOLDER_H
#define DEVHOST_STATE_STATE_FOLDER_H

#include <string>

#include "devhost/state/StateStore.h"
#include "devhost/system/FileDescriptor.h"

namespace devhost {

// Keeps states on disk: that of driver ID in the file driver-ID.xml of a folder. docs/persisted-state.md describes the rest.
class StateFolder : public StateStore {
 public:
  // Makes the folder when it is missing and locks it for as long as the object, or the process, lives. Throws StateError
  // when that is not possible, for instance because another host uses it.
  explicit StateFolder(const std::string& path);

  h7::auto_com<H7XML::INode> Load(unsigned long driverId) override;
  void Save(unsigned long driverId, const std::string& xml) override;

 private:
  const std::string m_path;
  FileDescriptor m_folder;
  FileDescriptor m_lock;
};

// What is kept for that driver in a state folder, as XML text; "" when nothing is kept. Changes and locks nothing there: a
// host may be using the folder. Throws StateError, also for a state that is damaged.
std::string LookIntoStateFolder(const std::string& path, unsigned long driverId);

}  // namespace devhost

#endif
