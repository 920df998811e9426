#ifndef DEVHOST_SCRIPT_SCRIPT_EXPECTATIONS_H
#define DEVHOST_SCRIPT_SCRIPT_EXPECTATIONS_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "devhost/engine/Occurrence.h"
#include "devhost/project/DriverNames.h"
#include "devhost/report/ScriptOccurrence.h"
#include "devhost/script/Script.h"
#include "devhost/secrets/Masker.h"

namespace devhost {

// The text with {time} wherever a managed section carries the time at which it was generated.
std::string WithoutTimes(const std::string& text);

// Judges the expectations of a script, and remembers what they can be about: the last reply, notification, log line and
// output.
class ScriptExpectations {
 public:
  // Both must outlive this object.
  ScriptExpectations(const DriverNames& names, const Masker& secrets) : m_names(names), m_secrets(secrets) {}

  // Before an action. What comes from now on is new, unless the action only shows or judges something.
  void BeginAction(const Action& action);
  // Remembers a reply, a notification or a log line.
  void Note(const Occurrence& occurrence);
  // Remembers all that a program wrote; nothing while it runs.
  void NoteOutput(std::optional<std::string> output) { m_outputs.last = std::move(output); }

  // Returns what is not met, or nothing when the expectation is met. `lookUp` gives what the expectation is about where that
  // is not remembered here; a std::runtime_error out of it is reported as not met. Throws FileError when a golden file
  // cannot be read.
  std::optional<ScriptOccurrence> Check(const ExpectAction& action, const std::function<std::string()>& lookUp) const;

 private:
  struct Memory {
    const char* name;
    std::optional<std::string> last = std::nullopt;
    std::size_t news = 0;  // how many since the last action that could have caused any
  };

  // The memory that an expectation is about, or null.
  const Memory* MemoryOf(ExpectAction::Subject subject) const;
  std::string Found(const ExpectAction& action, const std::function<std::string()>& lookUp) const;
  std::optional<ScriptOccurrence> CheckNone(const ExpectAction& action) const;
  std::optional<ScriptOccurrence> Compare(const ExpectAction& action, std::string found, const std::string& expected) const;
  // What an expectation is about, for messages.
  std::string TitleOf(const ExpectAction& action) const;
  // A text as an expectation about that subject shows it, and what is expected: such a text, a pattern, or a file.
  std::string Shown(const ExpectAction& action, const std::string& text) const;
  std::string ShownExpected(const ExpectAction& action) const;

  const DriverNames& m_names;
  const Masker& m_secrets;
  Memory m_replies{"reply"};
  Memory m_notifications{"notification"};
  Memory m_logs{"log line"};
  Memory m_outputs{"output"};
};

}  // namespace devhost

#endif
