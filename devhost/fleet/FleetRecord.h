#ifndef DEVHOST_FLEET_FLEET_RECORD_H
#define DEVHOST_FLEET_FLEET_RECORD_H

#include <set>
#include <stdexcept>
#include <string>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// A record that cannot be used: which, and what is allowed, in one line.
class RecordError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Remembers in a file, for a later run, which devices have got which settings, so that a run that was interrupted can go on.
// A line of the file is a device; it is on the disk when Add returns. A line that a power cut has torn does not count.
class FleetRecord {
 public:
  // Makes the file with mode 0600, or opens it where `resumes` is set. Throws RecordError when it is there and `resumes` is
  // not set, when another run uses it, when it is not a file of this user alone, or not a record.
  FleetRecord(const std::string& path, bool resumes);

  // A device with the settings that it is to get, as one word. The settings themselves are not in it.
  static std::string KeyOf(const std::string& project, const std::string& device, const std::string& settings);

  // Whether the device of that key is done.
  bool Has(const std::string& key) const { return m_keys.count(key) != 0; }
  // The device of that key is done. Throws RecordError when that cannot be written.
  void Add(const std::string& key);
  // All is done: nothing is left to be resumed, so the file is removed.
  void Remove();

 private:
  void Lock() const;
  void Read();
  void Append(const std::string& line) const;

  const std::string m_path;
  FileDescriptor m_file;
  std::set<std::string> m_keys;
};

}  // namespace devhost

#endif
