#ifndef DEVHOST_CHECK_CHECK_FILE_H
#define DEVHOST_CHECK_CHECK_FILE_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/check/Rules.h"

namespace devhost {

// How to check a file.
struct CheckMeans {
  bool askDaemon = false;    // have the daemon's own parser read what it only remembers, too
  bool showSecrets = false;  // findings may quote communities
  Circumstances circumstances = {};
};

// What the check of one file found.
struct CheckResult {
  std::vector<Finding> findings;
  Unjudged unjudged;
  std::string daemonError;  // why the daemon could not be asked, in one line; "" when it was asked or need not be
};

// Checks the file and, when it is a regular file, who may read and change it. Throws FileError when it cannot be read.
CheckResult CheckFile(const std::string& path, const CheckMeans& means);

// Checks a text that is not read from a file; `name` is for findings and messages. The circumstances may say where it is, or
// will be.
CheckResult CheckText(const std::string& text, const std::string& name, const CheckMeans& means);

}  // namespace devhost

#endif
