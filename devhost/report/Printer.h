#ifndef DEVHOST_REPORT_PRINTER_H
#define DEVHOST_REPORT_PRINTER_H

#include <string>
#include <string_view>

#include "devhost/engine/Occurrence.h"
#include "devhost/secrets/Masker.h"
#include "devhost/system/Output.h"

namespace devhost {

struct PrintStyle {
  bool pretty = false;       // XML on several indented lines
  bool color = false;        // the first word in colour, for a terminal
  bool showSecrets = false;  // communities and passphrases as they are, not masked
};

// Prints what happens, one line each. The first word says what kind of line it is; docs/scripts.md tells the rest.
class Printer {
 public:
  Printer(Output& output, PrintStyle style) : m_output(output), m_style(style), m_masker(style.showSecrets) {}

  // `where` is appended to bad manners: what the script was doing.
  void Print(const Occurrence& occurrence, const std::string& where);

  // A line of that first word. Control characters in the text are made visible. Secrets are not looked for: what may hold
  // any goes through Secrets() before it is cut or put together.
  void Line(std::string_view word, std::string_view text);

  // XML about a driver, in the style that was asked for and without its secrets.
  void Xml(std::string_view word, const std::string& driver, const std::string& xml);

  Masker& Secrets() { return m_masker; }

  bool Failed() const { return m_output.Error() != 0; }

 private:
  void Write(std::string_view word, std::string_view text);

  Output& m_output;
  PrintStyle m_style;
  Masker m_masker;
};

}  // namespace devhost

#endif
