#include "devhost/check/DaemonText.h"

#include <optional>

#include "devhost/check/Source.h"
#include "devhost/check/UserLine.h"
#include "devhost/snmpd/PassiveDirectives.h"

namespace devhost {

bool DaemonText::Takes(const Directive& setting) {
  const std::optional<Source> source = ReadSource(setting);
  const bool isCrash = setting.keyword == "createuser" && ReadUserLine(setting).words.size() == 2;
  return IsPassiveDirective(setting.keyword) && !isCrash && !(source && IsLookedUp(*source));
}

void DaemonText::Add(const ConfigLine& line) {
  if (line.setting && Takes(*line.setting)) {
    // Not as it stands: brackets or a quote in front of the keyword could mean something else to another daemon.
    m_text += line.setting->keyword;
    m_text += ' ';
    m_text += line.text.substr(line.setting->restBegin, line.text.find('\0') - line.setting->restBegin);
  }
  m_text += '\n';
  m_numbers.push_back(line.number);
}

}  // namespace devhost
