#include <string>

#include "devhost/check/Advice.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/system/FileText.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr char kFooter[] =
    "The rules are those of \"devhost check\". Advice changes nothing and stops nothing: the\n"
    "agent writes what it is sent.\n"
    "\n"
    "Exit status: 0 no finding; 1 findings; 2 wrong usage, or a file that cannot be read or\n"
    "is not a device settings element.\n"
    "\n"
    "Example: is there anything in these settings that the daemon would misread?\n"
    "\n"
    "  devhost advise kitchen.xml";

ExitStatus AdviseOn(const Arguments& arguments, Console& console) {
  const NamedText settings = ReadNamedText(arguments.Text(kSettings));
  try {
    const std::vector<Finding> findings = AdviseOnRequest(settings.text, settings.name, arguments.Has(kShowSecrets));
    return PrintFindings(findings, settings.name, arguments.Has(kJson), console.Out());
  } catch (const XmlError& error) {
    console.Complain(settings.name + ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column()) +
                     ": the settings are not well-formed XML: " + error.what());
    return ExitStatus::Wrong;
  }
}

}  // namespace

Command MakeAdvise() {
  return {"advise",
          "Say what in settings will surprise, before they are sent",
          {kSettings, kJson, kShowSecrets},
          kFooter,
          &AdviseOn};
}

}  // namespace devhost
