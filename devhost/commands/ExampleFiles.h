#ifndef DEVHOST_COMMANDS_EXAMPLE_FILES_H
#define DEVHOST_COMMANDS_EXAMPLE_FILES_H

#include <string>
#include <vector>

namespace devhost {

// One file of examples/driver/, which the build has put into the program.
struct ExampleFile {
  std::string name;  // without a folder
  std::string text;
};

// All files of the example of a driver.
const std::vector<ExampleFile>& ExampleFiles();

}  // namespace devhost

#endif
