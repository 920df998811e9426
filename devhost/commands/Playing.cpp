#include "devhost/commands/Playing.h"

#include <unistd.h>

#include <cstdlib>

#include "devhost/commands/CommonOptions.h"
#include "devhost/report/JsonWriter.h"
#include "devhost/report/TextWriter.h"
#include "devhost/state/StateFolder.h"

namespace devhost {

namespace {

// `when` is "" when it was not given.
bool WantsColor(const std::string& when, int descriptor) {
  if (when == "always" || when == "never") {
    return when == "always";
  }
  const char* const terminal = std::getenv("TERM");
  return ::isatty(descriptor) == 1 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
         std::string(terminal) != "dumb";
}

}  // namespace

Project PlayedProject(const Arguments& arguments) {
  const std::string modules = ModuleFolder(arguments);
  return arguments.Has(kPlayedProject) ? ReadProject(arguments.Text(kPlayedProject), modules) : AgentAlone(modules);
}

std::unique_ptr<StateStore> OpenStates(const Arguments& arguments) {
  if (!arguments.Has(kPlayedStates)) {
    return std::make_unique<StateMemory>();
  }
  return std::make_unique<StateFolder>(arguments.Text(kPlayedStates));
}

std::unique_ptr<Reporter> MakeReporter(const Arguments& arguments, Output& output) {
  if (arguments.Has(kJsonLines)) {
    return std::make_unique<JsonWriter>(output);
  }
  const bool color = WantsColor(arguments.Text(kColor), output.Descriptor());
  return std::make_unique<TextWriter>(output, TextStyle{arguments.Has(kPretty), color});
}

}  // namespace devhost
