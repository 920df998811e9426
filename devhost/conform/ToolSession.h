#ifndef DEVHOST_CONFORM_TOOL_SESSION_H
#define DEVHOST_CONFORM_TOOL_SESSION_H

#include <string>
#include <utility>
#include <vector>

#include "devhost/conform/Bench.h"

namespace devhost {

// What the tool sends for one device. No text is empty, so that nothing is filled from the file.
struct ToolSettings {
  std::vector<std::pair<std::string, std::string>> switches;  // element, "true" or "false"
  std::vector<std::pair<std::string, std::string>> texts;
  std::vector<TrapTarget> targets;
};

ToolSettings RandomToolSettings(Trial& trial, std::size_t targets);

// Whether the switch of that text is on: then the device may have the project's text instead of the one that was sent.
bool IsFromProject(const ToolSettings& settings, const std::string& text);

// The settings as the element that the tool sends for the device.
std::string ElementOf(const ToolSettings& settings);

// A session of the tool with the real agent and one device, which knows what the answers have to be. Each operation throws
// Violation where the answer is another one.
class ToolSession {
 public:
  // Loads the agent and the device, which has a file then, and makes it managed. Throws Blocked where the agent knows no
  // device or the device takes no file. `bench` outlives it.
  explicit ToolSession(Bench& bench);

  void Manage(bool isManaged);
  void Set(const ToolSettings& settings);
  // Asks for the list of devices. It has what was set last, where something was.
  void ExpectList();

 private:
  void Ask(const std::string& command, const Parameters& parameters, const std::string& expected);

  Bench& m_bench;
  bool m_isManaged = true;
  bool m_hasSettings = false;
  ToolSettings m_settings;
};

}  // namespace devhost

#endif
