#ifndef TESTS_DEVHOST_REPORT_WRITTEN_H
#define TESTS_DEVHOST_REPORT_WRITTEN_H

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "devhost/system/Output.h"
#include "tests/support/ScratchFolder.h"

// What `write` writes to the output that it is given.
template <class Write>
std::string Written(Write write) {
  const testsupport::ScratchFolder folder;
  const int file = ::open(folder.Path("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  devhost::Output output(file);
  write(output);
  ::close(file);
  return folder.Read("out");
}

#endif
