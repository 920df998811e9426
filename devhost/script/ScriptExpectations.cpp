#include "devhost/script/ScriptExpectations.h"

#include <stdexcept>

#include "devhost/secrets/Fields.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Difference.h"
#include "devhost/text/Pattern.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Subject = ExpectAction::Subject;
using Comparison = ExpectAction::Comparison;

constexpr char kTimePlaceholder[] = "{time}";

// The start of a text that may be a whole file.
std::string Beginning(const std::string& text) {
  constexpr std::size_t kLongest = 400;
  if (text.empty()) {
    return "(empty)";
  }
  return text.size() <= kLongest ? text : text.substr(0, kLongest) + "... (" + std::to_string(text.size()) + " bytes)";
}

ScriptOccurrence Unmet(const std::string& text, std::vector<std::string> details) {
  ScriptOccurrence unmet{ScriptOccurrence::Kind::Expect, 0, "", text};
  unmet.details = std::move(details);
  return unmet;
}

}  // namespace

std::string WithoutTimes(const std::string& text) {
  static const Pattern time("[A-Z][a-z]+day, [A-Z][a-z]+, [0-9]{2} [0-9]{4} at [0-9]{2}:[0-9]{2}:[0-9]{2}");
  return time.ReplaceIn(text, kTimePlaceholder);
}

void ScriptExpectations::BeginAction(const Action& action) {
  if (!std::holds_alternative<ExpectAction>(action) && !std::holds_alternative<PrintAction>(action) &&
      !std::holds_alternative<ShowAction>(action)) {
    m_notifications.news = m_logs.news = 0;
  }
}

void ScriptExpectations::Note(const Occurrence& occurrence) {
  using Kind = Occurrence::Kind;
  const Kind kind = occurrence.kind;
  if (kind == Kind::Reply || kind == Kind::Notification || kind == Kind::Log) {
    Memory& memory = kind == Kind::Reply ? m_replies : kind == Kind::Log ? m_logs : m_notifications;
    memory.last = occurrence.text;
    ++memory.news;
  }
}

std::optional<ScriptOccurrence> ScriptExpectations::Check(const ExpectAction& action,
                                                          const std::function<std::string()>& lookUp) const {
  if (action.comparison == Comparison::None) {
    return CheckNone(action);
  }
  std::string found;
  try {
    found = Found(action, lookUp);
  } catch (const std::runtime_error& error) {
    return Unmet(m_secrets.Text(error.what()), {"expected: " + Beginning(ShownExpected(action))});
  }
  return Compare(action, std::move(found),
                 action.comparison == Comparison::Golden ? ReadRegularFile(action.text) : action.text);
}

std::optional<ScriptOccurrence> ScriptExpectations::CheckNone(const ExpectAction& action) const {
  const Memory& memory = *MemoryOf(action.subject);
  if (memory.news == 0) {
    return std::nullopt;
  }
  return Unmet(std::string("there was a ") + memory.name,
               {"expected: none", "found:    " + Beginning(Shown(action, *memory.last)) +
                                      (memory.news == 1 ? "" : " (the last of " + std::to_string(memory.news) + ")")});
}

std::optional<ScriptOccurrence> ScriptExpectations::Compare(const ExpectAction& action, std::string found,
                                                            const std::string& expected) const {
  if (action.comparison == Comparison::Matches) {
    if (Pattern(expected).IsIn(found)) {
      return std::nullopt;
    }
    return Unmet(TitleOf(action) + " does not match",
                 {"expected: " + ShownExpected(action), "found:    " + Beginning(Shown(action, found))});
  }
  const bool golden = action.comparison == Comparison::Golden;
  if (golden && expected.find(kTimePlaceholder) != std::string::npos) {
    found = WithoutTimes(found);
  }
  if (found == expected) {
    return std::nullopt;
  }
  std::vector<std::string> details = ExplainDifference(
      expected, found, [&](const std::string& text) { return golden ? Shown(action, text) : ShownExpected(action); },
      [&](const std::string& text) { return Shown(action, text); });
  for (std::string& detail : details) {
    detail.erase(0, 2);  // the indentation that each has
  }
  return Unmet(TitleOf(action) + (golden ? " is not what the golden file " + Quoted(action.text) + " holds"
                                         : std::string(" is not as expected")),
               std::move(details));
}

const ScriptExpectations::Memory* ScriptExpectations::MemoryOf(Subject subject) const {
  return subject == Subject::Reply          ? &m_replies
         : subject == Subject::Notification ? &m_notifications
         : subject == Subject::Log          ? &m_logs
         : subject == Subject::Output       ? &m_outputs
                                            : nullptr;
}

std::string ScriptExpectations::Found(const ExpectAction& action, const std::function<std::string()>& lookUp) const {
  const Memory* const memory = MemoryOf(action.subject);
  if (memory == nullptr) {
    return lookUp();
  }
  if (!memory->last) {
    throw std::runtime_error(std::string("there has been no ") + memory->name + " yet" +
                             (action.subject == Subject::Output ? ": no program has run" : ""));
  }
  // As a shell takes it: the last line feed of an output is not part of its text.
  const std::string& last = *memory->last;
  const bool cut =
      action.subject == Subject::Output && action.comparison != Comparison::Golden && !last.empty() && last.back() == '\n';
  return cut ? last.substr(0, last.size() - 1) : last;
}

std::string ScriptExpectations::TitleOf(const ExpectAction& action) const {
  switch (action.subject) {
    case Subject::Setting:
      return "the setting " + (FindSetting(action.setting) == Setting::Unknown ? "" : Quoted(action.setting) + " ") + "of " +
             m_names.Name(action.driverId);
    case Subject::Flag:
      return "the flag of variable " + std::to_string(action.variableId) + " of device " + std::to_string(action.driverId);
    case Subject::State:
      return "the state of " + m_names.Name(action.driverId);
    case Subject::File:
      return "the file of " + m_names.Name(action.driverId);
    default:
      return std::string("the ") + MemoryOf(action.subject)->name;
  }
}

std::string ScriptExpectations::Shown(const ExpectAction& action, const std::string& text) const {
  // What a script expects is not learnt: its words stand in messages.
  Masker secrets = m_secrets;
  switch (action.subject) {
    case Subject::Setting:
      return secrets.SettingValue(action.setting, text);
    case Subject::File:
      return secrets.Config(text);
    case Subject::Reply:
    case Subject::Notification:
    case Subject::State:
      return secrets.Xml(text, action.comparison == Comparison::Golden ? XmlStyle::Indented : XmlStyle::Compact);
    default:
      return secrets.Text(text, WrittenBy::Others);
  }
}

std::string ScriptExpectations::ShownExpected(const ExpectAction& action) const {
  if (action.comparison == Comparison::Golden) {
    return "the text of " + Quoted(action.text);
  }
  // A pattern is part of a text, and free text says nothing of its parts: neither says where a secret stands.
  const bool isPart = action.comparison == Comparison::Matches;
  switch (action.subject) {
    case Subject::Setting:
      return Shown(action, action.text);
    case Subject::File:
    case Subject::Reply:
    case Subject::Notification:
    case Subject::State:
      return isPart ? m_secrets.Pattern(action.text) : Shown(action, action.text);
    default:
      return isPart ? m_secrets.Pattern(action.text) : m_secrets.Expected(action.text);
  }
}

}  // namespace devhost
