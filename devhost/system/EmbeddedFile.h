#ifndef DEVHOST_SYSTEM_EMBEDDED_FILE_H
#define DEVHOST_SYSTEM_EMBEDDED_FILE_H

#include <string>

namespace devhost {

// A file of the source tree that the build has put into the program: see cmake/EmbeddedFiles.cmake.
struct EmbeddedFile {
  std::string name;  // as seen from the folder that was put in: a.js, vendor/b.js
  std::string text;
  std::string packed;  // the same as gzip; "" where that is not wanted
};

}  // namespace devhost

#endif
