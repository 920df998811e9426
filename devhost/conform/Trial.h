#ifndef DEVHOST_CONFORM_TRIAL_H
#define DEVHOST_CONFORM_TRIAL_H

#include <chrono>
#include <random>
#include <string>

#include "devhost/conform/Profile.h"
#include "devhost/system/FileDescriptor.h"

namespace devhost {

// Notes which operation of the device was called last, and when, in a file that the process which waits reads: while this
// one runs, and when it has crashed or was killed.
class Trail {
 public:
  // What is in such a file.
  struct LastCall {
    std::string slot;                    // "" for none yet
    std::chrono::milliseconds age = {};  // how long ago it began; 0 where that cannot be read
  };
  static LastCall Read(const std::string& path);

  // Makes the file. One that cannot be made is done without.
  explicit Trail(const std::string& path);

  void Note(const std::string& slot);
  const std::string& Last() const { return m_last; }

 private:
  FileDescriptor m_file;
  std::string m_last;
};

// What one check has to work with.
struct Trial {
  Trial(const std::string& modulePath, const std::string& ownFolder, const Profile& itsProfile, unsigned long seed)
      : module(modulePath), folder(ownFolder), profile(itsProfile), random(seed), trail(ownFolder + "/slot") {}

  // A text of that many letters and digits that no driver can know.
  std::string RandomText(std::size_t length = 16);

  const std::string module;                                          // absolute path
  std::string agent;                                                 // the module of the real agent, absolute path
  std::chrono::milliseconds sessionTime = std::chrono::seconds(20);  // for random sessions
  std::string script;                                                // for devhost run, of what went wrong; "" for none
  const std::string folder;                                          // of this check alone, absolute
  const Profile profile;
  std::mt19937 random;
  Trail trail;
};

}  // namespace devhost

#endif
