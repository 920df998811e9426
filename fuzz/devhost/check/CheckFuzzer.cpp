// Checks any text as an snmpd.conf, and as settings when it is XML. Findings are complete, lie in the text and show no
// secret.
#include <algorithm>

#include "devhost/check/Rules.h"
#include "devhost/check/SettingsText.h"
#include "devhost/commands/Findings.h"
#include "fuzz/support/Input.h"

namespace {

constexpr char kSecret[] = "Qx7secret";

void Check(const std::string& text, bool mayShowSecret) {
  static const std::vector<std::string> rules = devhost::RuleNames();
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  devhost::Report report("file", false);
  devhost::JudgeText(text, report);
  for (const devhost::Finding& finding : report.Take()) {
    fuzz::Require(finding.line <= lines, "a finding below the end");
    fuzz::Require(std::find(rules.begin(), rules.end(), finding.rule) != rules.end(), "unknown rule " + finding.rule);
    const std::string shown = devhost::FindingText(finding);
    const std::string json = devhost::FindingJson(finding);
    fuzz::Require(std::count(shown.begin(), shown.end(), '\n') == 2, "not two lines: " + shown);
    fuzz::Require(std::count(json.begin(), json.end(), '\n') == 1, "not one line: " + json);
    fuzz::Require(mayShowSecret || shown.find(kSecret) == std::string::npos, "shows a secret: " + shown);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).Rest();
  const bool hasSecret = text.find(kSecret) != std::string::npos;
  Check(text, true);
  Check(std::string("rocommunity ") + kSecret + "\n" + text, hasSecret);
  try {
    const devhost::SettingsText settings = devhost::RenderSettings(devhost::ReadXml(text));
    const auto lines = static_cast<std::size_t>(std::count(settings.text.begin(), settings.text.end(), '\n'));
    fuzz::Require(settings.origins.size() == lines, "lines from nowhere");
    Check(settings.text, true);
  } catch (const devhost::XmlError&) {
    // The text does not contain settings.
  }
  return 0;
}
