#ifndef DEVHOST_REPORT_TEXT_WRITER_H
#define DEVHOST_REPORT_TEXT_WRITER_H

#include <string>
#include <string_view>

#include "devhost/report/Reporter.h"
#include "devhost/system/Output.h"

namespace devhost {

struct TextStyle {
  bool pretty = false;  // XML on several indented lines
  bool color = false;   // the first word in colour, for a terminal
};

// Writes what happens as text for people, most of it on one line. The first word says what it is; docs/scripts.md has all of
// them. Control characters are made visible.
class TextWriter : public Reporter {
 public:
  // The output must outlive the writer.
  TextWriter(Output& output, TextStyle style) : m_output(output), m_style(style) {}

  void Report(const Occurrence& occurrence, const Where& where) override;
  void Report(const ScriptOccurrence& occurrence, const Where& where) override;
  bool Failed() const override { return m_output.Error() != 0; }

 private:
  void Line(std::string_view word, std::string_view text);
  // One line for each line of a text, behind `before`.
  void EachLine(std::string_view word, const std::string& before, const std::string& text);
  void Xml(std::string_view word, const std::string& driver, const std::string& xml);
  void Write(std::string_view word, std::string_view text);
  void ShowFile(const ScriptOccurrence& file);
  void ShowSettings(const ScriptOccurrence& settings);
  void ShowVariables(const ScriptOccurrence& shown);

  Output& m_output;
  TextStyle m_style;
};

}  // namespace devhost

#endif
