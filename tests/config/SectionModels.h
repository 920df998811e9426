#ifndef TESTS_CONFIG_SECTION_MODELS_H
#define TESTS_CONFIG_SECTION_MODELS_H

#include <string>
#include <vector>

#include "device/TrapTarget.h"

// The rules of the managed section, followed literally, token by token and at any cost. Tests compare the fast code with
// these models.
namespace section_models {

// Returns the file that results from a new section and a file's old text.
std::string Merge(const std::string& section, const std::string& oldText);

// Returns the lines inside all sections, without empty ones.
std::vector<std::string> LinesInside(const std::string& text);

// A device, as far as the reader sees it.
struct Word {
  std::string value;
  bool erased = false;
};
struct Device {
  Word communityRead;
  Word communityWrite;
  Word sysContact;
  Word sysLocation;
  Word sysName;
  std::vector<TrapTarget> traps;
  bool trapsErased = false;
  std::string agentXTimeout;
};

void Fill(const std::string& text, Device& device);

}  // namespace section_models

#endif
