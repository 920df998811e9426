#include "devhost/report/Printer.h"

#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

// The select-graphic-rendition codes of the first words; the others are printed plainly.
std::string_view ColorOf(std::string_view word) {
  if (word == "error" || word == "expect" || word == "manners") {
    return "1;31";
  }
  if (word == "command" || word == "event" || word == "flag" || word == "restart") {
    return "1;36";
  }
  if (word == "reply") {
    return "1;32";
  }
  if (word == "notification") {
    return "1;33";
  }
  if (word == "print") {
    return "1";
  }
  return word == "load" || word == "unload" || word == "invalidate" || word == "log" ? "2" : "";
}

// What one line cannot hold is written as a reference, so that the XML stays the same.
std::string XmlOnOneLine(const std::string& xml) {
  std::string line;
  line.reserve(xml.size());
  for (const char character : xml) {
    if (character == '\n') {
      line += "&#10;";
    } else {
      line += character;
    }
  }
  return line;
}

// Every line on a line of its own, further in than the first word.
std::string Indented(const std::string& text) {
  std::string indented = "\n  ";
  for (const char character : text) {
    indented += character;
    if (character == '\n') {
      indented += "  ";
    }
  }
  return indented;
}

std::string Joined(const std::string& left, const std::string& right) {
  return left.empty() || right.empty() ? left + right : left + " " + right;
}

}  // namespace

void Printer::Print(const Occurrence& occurrence, const std::string& where) {
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
      m_masker.LearnFromXml(occurrence.text);
      return Xml("reply", driver, occurrence.text);
    case Occurrence::Kind::Notification:
      return Xml("notification", driver, occurrence.text);
    case Occurrence::Kind::Event:
      return Line("event", m_masker.Text(TextOf(occurrence)));
    case Occurrence::Kind::Log:
      return Line("log", Joined(Joined(driver, std::to_string(occurrence.level)), m_masker.Text(occurrence.text)));
    case Occurrence::Kind::Invalidate:
      return Line("invalidate", driver);
    case Occurrence::Kind::Manners:
      return Line("manners", Joined(driver, m_masker.Text(TextOf(occurrence))) + " (" + where + ")");
    case Occurrence::Kind::Failure:
    case Occurrence::Kind::StateProblem:
      return Line("error", where + ": " + m_masker.Text(occurrence.text));
  }
}

void Printer::Line(std::string_view word, std::string_view text) {
  Write(word, OneLine(text));
}

void Printer::Xml(std::string_view word, const std::string& driver, const std::string& plain) {
  const std::string xml = m_masker.Xml(plain);
  constexpr std::size_t kWidth = 100;
  if (m_style.pretty && word.size() + driver.size() + xml.size() + 2 > kWidth) {
    try {
      return Write(word, driver + Indented(XmlText(ReadXml(xml), XmlStyle::Indented)));
    } catch (const XmlError&) {
      // Nested too deep to be laid out, or no XML at all: it is printed as it came.
    }
  }
  Write(word, Joined(driver, XmlOnOneLine(xml)));
}

void Printer::Write(std::string_view word, std::string_view text) {
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
