#ifndef DEVHOST_CONSOLE_ASSETS_H
#define DEVHOST_CONSOLE_ASSETS_H

#include <string_view>
#include <vector>

#include "devhost/system/EmbeddedFile.h"

namespace devhost {

// All files of devhost/page/, which the build has put into the program.
const std::vector<EmbeddedFile>& PageFiles();

// A file of the page, as the console sends it.
struct Asset {
  std::string_view text;
  std::string_view packed;     // the same as gzip
  const char* type = nullptr;  // its Content-Type
};

// The file of the page for a path: "/" is index.html. Its text is empty when there is none, or when its name does not end
// like one that a page uses; then it is not for browsers.
Asset FindAsset(std::string_view path);

}  // namespace devhost

#endif
