#include "devhost/report/TextWriter.h"

#include <algorithm>
#include <map>

#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

// The select-graphic-rendition codes of the first words; the others are printed plainly.
std::string_view ColorOf(std::string_view word) {
  static const std::map<std::string_view, std::string_view> kColors = {
      {"error", "1;31"},        {"expect", "1;31"}, {"manners", "1;31"}, {"command", "1;36"},
      {"event", "1;36"},        {"flag", "1;36"},   {"restart", "1;36"}, {"reply", "1;32"},
      {"notification", "1;33"}, {"print", "1"},     {"load", "2"},       {"unload", "2"},
      {"invalidate", "2"},      {"log", "2"}};
  const auto color = kColors.find(word);
  return color == kColors.end() ? std::string_view() : color->second;
}

std::string WithFeedsAs(std::string_view replacement, const std::string& text) {
  std::string replaced;
  replaced.reserve(text.size());
  for (const char character : text) {
    if (character == '\n') {
      replaced += replacement;
    } else {
      replaced += character;
    }
  }
  return replaced;
}

std::string Joined(const std::string& left, const std::string& right) {
  return left.empty() || right.empty() ? left + right : left + " " + right;
}

const char* Text(bool value) {
  return value ? "true" : "false";
}

std::string Ids(const VariableEntry& variable) {
  return std::to_string(variable.deviceId) + " " + std::to_string(variable.variableId);
}

std::string CountsLine(const std::vector<OperationCount>& counts) {
  std::string line;
  for (const OperationCount& count : counts) {
    line += " " + count.operation + "=" + std::to_string(count.count);
  }
  return line;
}

std::string DaemonLine(const DaemonState& daemon) {
  return (daemon.running ? " running pid=" + std::to_string(daemon.pid) : " stopped") +
         " address=" + AsWord(daemon.address) + (daemon.online ? " online" : " offline") +
         (daemon.pending ? " pending" : "");
}

}  // namespace

void TextWriter::Report(const Occurrence& occurrence, const Where& where) {
  const std::string known = DriverOf(occurrence);
  const std::string driver = known.empty() ? "-" : known;
  switch (occurrence.kind) {
    case Occurrence::Kind::Load:
      return Line("load", driver + " " + std::to_string(occurrence.driverId) + " " + occurrence.text);
    case Occurrence::Kind::Unload:
      return Line("unload", driver);
    case Occurrence::Kind::Command:
      return Line("command", Joined(driver, TextOf(occurrence)));
    case Occurrence::Kind::Reply:
      return Xml("reply", driver, occurrence.text);
    case Occurrence::Kind::Notification:
      return Xml("notification", driver, occurrence.text);
    case Occurrence::Kind::Event:
      return Line("event", TextOf(occurrence));
    case Occurrence::Kind::Log:
      return Line("log", Joined(driver + " " + std::to_string(occurrence.level), occurrence.text));
    case Occurrence::Kind::Invalidate:
      return Line("invalidate", driver);
    case Occurrence::Kind::Status:
      return Line("status", Joined(driver, TextOf(occurrence)));
    case Occurrence::Kind::Manners:
      return Line("manners", Joined(driver, TextOf(occurrence)) + " (" + where.text + ")");
    case Occurrence::Kind::Failure:
    case Occurrence::Kind::StateProblem:
      return Line("error", where.text + ": " + occurrence.text);
  }
}

void TextWriter::Report(const ScriptOccurrence& occurrence, const Where& where) {
  const std::string& driver = occurrence.driverName;
  switch (occurrence.kind) {
    case ScriptOccurrence::Kind::Restart:
      return Line("restart", "");
    case ScriptOccurrence::Kind::Command:
      return Line("command", driver + " " + TextOf(occurrence.name, occurrence.written));
    case ScriptOccurrence::Kind::Flag:
      return Line("flag", Ids(occurrence.variables.at(0)) + " " + Text(occurrence.variables.at(0).trapEnabled));
    case ScriptOccurrence::Kind::File:
      return ShowFile(occurrence);
    case ScriptOccurrence::Kind::Settings:
      return ShowSettings(occurrence);
    case ScriptOccurrence::Kind::Counts:
      return Line("counts", driver + CountsLine(occurrence.counts));
    case ScriptOccurrence::Kind::Daemon:
      return Line("daemon", driver + DaemonLine(occurrence.daemon));
    case ScriptOccurrence::Kind::State:
      return Xml("state", driver, occurrence.text);
    case ScriptOccurrence::Kind::Variables:
      return ShowVariables(occurrence);
    case ScriptOccurrence::Kind::Run:
      return Line("run", occurrence.text);
    case ScriptOccurrence::Kind::Output:
      return EachLine("output", "| ", occurrence.text);
    case ScriptOccurrence::Kind::Print:
      return Line("print", occurrence.text);
    case ScriptOccurrence::Kind::Error:
      return Line("error", where.text + ": " + occurrence.text);
    case ScriptOccurrence::Kind::Expect:
      Line("expect", where.text + ": " + occurrence.text);
      for (const std::string& detail : occurrence.details) {
        Line("expect", "  " + detail);
      }
      return;
    case ScriptOccurrence::Kind::Done:
      return;  // people see that themselves
  }
}

void TextWriter::ShowFile(const ScriptOccurrence& file) {
  EachLine("file", file.driverName + " | ", file.text);
  if (file.text.empty() || file.text.back() != '\n') {
    Line("file", file.driverName + (file.text.empty() ? " (empty)" : " (no line feed at the end)"));
  }
}

void TextWriter::ShowSettings(const ScriptOccurrence& settings) {
  const std::string before = settings.driverName + " ";
  for (const DeviceSetting& setting : settings.settings.settings) {
    Line("settings", before + setting.name + "=" + AsWord(setting.value) + (setting.erased ? " erased" : ""));
  }
  for (const DeviceTrapTarget& target : settings.settings.trapTargets) {
    Line("settings", before + "trapTarget=" + AsWord(target.target) + " community=" + AsWord(target.community) +
                         " port=" + AsWord(target.port));
  }
}

void TextWriter::ShowVariables(const ScriptOccurrence& shown) {
  for (const VariableEntry& variable : shown.variables) {
    Line(variable.user ? "user-variable" : "variable", Ids(variable) + " name=" + AsWord(variable.name) +
                                                           " hidden=" + Text(variable.hidden) +
                                                           " trapEnabled=" + Text(variable.trapEnabled));
  }
  if (shown.variables.empty()) {
    Line("variable", "(none)");
  }
}

void TextWriter::Line(std::string_view word, std::string_view text) {
  Write(word, OneLine(text));
}

void TextWriter::EachLine(std::string_view word, const std::string& before, const std::string& text) {
  for (std::size_t at = 0; at < text.size() && !Failed();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    Line(word, before + text.substr(at, end - at));
    at = end + 1;
  }
}

void TextWriter::Xml(std::string_view word, const std::string& driver, const std::string& xml) {
  constexpr std::size_t kWidth = 100;
  if (m_style.pretty && word.size() + driver.size() + xml.size() + 2 > kWidth) {
    try {
      return Write(word, driver + WithFeedsAs("\n  ", "\n" + XmlText(ReadXml(xml), XmlStyle::Indented)));
    } catch (const XmlError&) {
      // Nested too deep to be laid out, or no XML at all: it is printed as it came.
    }
  }
  // What one line cannot hold is written as a reference, so that the XML stays the same.
  Write(word, Joined(driver, WithFeedsAs("&#10;", xml)));
}

void TextWriter::Write(std::string_view word, std::string_view text) {
  const std::string_view color = m_style.color ? ColorOf(word) : std::string_view();
  std::string line;
  line.reserve(word.size() + text.size() + 16);
  if (color.empty()) {
    line.append(word);
  } else {
    line.append("\x1b[").append(color).append("m").append(word).append("\x1b[0m");
  }
  if (!text.empty()) {
    line.append(" ").append(text);
  }
  m_output.Write(line.append("\n"));
}

}  // namespace devhost
