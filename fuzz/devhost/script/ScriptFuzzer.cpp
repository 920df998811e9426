// Any text as a script: it is read, or refused in one line that begins with its place.
#include "devhost/script/ScriptReader.h"
#include "fuzz/support/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const devhost::DriverNames names({{1, "agent", "", ""}, {12, "kitchen", "", ""}});
  const devhost::Script script{"script", "/nowhere", fuzz::Input(data, size).Rest()};
  try {
    devhost::CheckScript(script, names);
  } catch (const devhost::ScriptError& error) {
    const std::string what = error.what();
    fuzz::Require(what.compare(0, 7, "script:") == 0, "no place: " + what);
    fuzz::Require(what.find('\n') == std::string::npos, "more than one line: " + what);
  }
  return 0;
}
