#include "devhost/check/Advice.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "devhost/check/ElementRules.h"
#include "devhost/check/Report.h"
#include "devhost/check/Rules.h"
#include "devhost/check/SettingsText.h"

namespace devhost {

namespace {

// The finding about a line of the section, moved to the element that the line comes from. Nothing for the lines of markers,
// and nothing for notes: a device that is being set holds its settings.
std::optional<Finding> OfElement(Finding finding, const SettingsText& rendered, const XmlElement& root) {
  if (finding.severity == Severity::Note) {
    return std::nullopt;
  }
  if (finding.line == 0) {
    finding.line = root.line;
    return finding;
  }
  const SettingOrigin& origin = rendered.OriginOf(finding.line);
  if (origin.setting.empty()) {
    return std::nullopt;
  }
  finding.line = origin.line;
  finding.reason.insert(0, origin.setting + ": ");
  return finding;
}

void SortByLine(std::vector<Finding>& findings) {
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& left, const Finding& right) { return left.line < right.line; });
}

}  // namespace

std::vector<Finding> Advise(const std::string& settings, const std::string& name, bool showSecrets,
                            const std::set<std::string>* held) {
  const XmlElement root = ReadXml(settings);
  const SettingsText rendered = RenderSettings(root);
  Report report(name, showSecrets);
  report.NameLines([&rendered](std::size_t line) {
    const SettingOrigin& origin = rendered.OriginOf(line);
    return origin.setting.empty() ? "the section's marker" : origin.setting + " in line " + std::to_string(origin.line);
  });
  JudgeText(rendered.text, report);
  std::vector<Finding> findings;
  for (Finding& finding : report.Take()) {
    if (auto moved = OfElement(std::move(finding), rendered, root)) {
      findings.push_back(std::move(*moved));
    }
  }
  Report elements(name, showSecrets);
  JudgeElements(root, elements);
  JudgeMissing(root, held, elements);
  for (const SettingOrigin& origin : rendered.lineBreakers) {
    elements.Begin(kLineFeedRule, Severity::Error, origin.line);
    elements.Add(origin.setting + ": a line feed: what follows it becomes a line of its own in snmpd.conf",
                 "choose a value of one line");
  }
  for (Finding& finding : elements.Take()) {
    findings.push_back(std::move(finding));
  }
  SortByLine(findings);
  return findings;
}

std::vector<Finding> AdviseOnRequest(const std::string& settings, const std::string& name, bool showSecrets) {
  std::vector<Finding> findings = Advise(settings, name, showSecrets);
  Report report(name, showSecrets);
  JudgeDeviceId(ReadXml(settings), report);
  for (Finding& finding : report.Take()) {
    findings.push_back(std::move(finding));
  }
  SortByLine(findings);
  return findings;
}

}  // namespace devhost
