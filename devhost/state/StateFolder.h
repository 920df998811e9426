#ifndef DEVHOST_STATE_STATE_FOLDER_H
#define DEVHOST_STATE_STATE_FOLDER_H

#include <cstddef>
#include <map>
#include <set>
#include <string>

#include "devhost/state/StateFile.h"
#include "devhost/state/StateStore.h"
#include "devhost/system/FileDescriptor.h"

namespace devhost {

// Keeps states on disk: that of driver ID in the file driver-ID.xml of a folder. docs/persisted-state.md describes the rest.
class StateFolder : public StateStore {
 public:
  // Makes the folder when it is missing, for this user alone, and locks it for as long as the object, or the process, lives.
  // Throws StateError when that is not possible, for instance because another host uses it, and for a folder that another
  // user owns or can write. No state of more than `largest` bytes is kept.
  explicit StateFolder(const std::string& path, std::size_t largest = kLargestState);

  h7::auto_com<H7XML::INode> Load(unsigned long driverId) override;
  // Also throws StateError for a state that could not be read again, and where a damaged one stands that could not be put
  // aside. Of a loaded state whose element has another name, a copy is kept first: the driver cannot have written that one.
  void Save(unsigned long driverId, const std::string& xml) override;

 private:
  const std::string m_path;
  const std::size_t m_largest;
  FileDescriptor m_folder;
  FileDescriptor m_lock;
  std::map<std::string, std::string> m_elements;  // of loaded states, by their file
  std::set<std::string> m_notAside;               // damaged files that could not be put aside; they are not overwritten
};

// What is kept for that driver in a state folder, as XML text; "" when nothing is kept. Changes and locks nothing there: a
// host may be using the folder. Throws StateError, also for a state that is damaged, or that others could have written.
std::string LookIntoStateFolder(const std::string& path, unsigned long driverId);

}  // namespace devhost

#endif
