#include "devhost/commands/Findings.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "devhost/commands/Console.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

const char* Name(Severity severity) {
  return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

// How many bytes the UTF-8 character at the front of `text` has, 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  if (length == 0 || length > text.size()) {
    return 0;
  }
  for (std::size_t at = 1; at != length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80U) {
      return 0;
    }
  }
  const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
  const bool surrogate = first == 0xED && byte(1) >= 0xA0;
  const bool beyond = first == 0xF4 && byte(1) >= 0x90;
  return overlong || surrogate || beyond ? 0 : length;
}

void AppendJsonText(std::string& json, std::string_view text) {
  json += '"';
  for (std::size_t at = 0; at != text.size();) {
    const std::size_t length = CharacterLength(text.substr(at));
    const unsigned char first = static_cast<unsigned char>(text[at]);
    if (length == 0) {
      json += "\xEF\xBF\xBD";
    } else if (first == '"' || first == '\\') {
      json.append(1, '\\').append(1, text[at]);
    } else if (first < 0x20 || first == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(first));
      json += escape;
    } else {
      json.append(text.substr(at, length));
    }
    at += length == 0 ? 1 : length;
  }
  json += '"';
}

void AppendMember(std::string& json, const char* name, std::string_view text) {
  json.append(json.back() == '{' ? "\"" : ",\"").append(name).append("\":");
  AppendJsonText(json, text);
}

std::size_t CountOf(const std::vector<Finding>& findings, Severity severity) {
  return static_cast<std::size_t>(std::count_if(
      findings.begin(), findings.end(), [severity](const Finding& finding) { return finding.severity == severity; }));
}

}  // namespace

std::string FindingText(const Finding& finding) {
  const std::string line = finding.line == 0 ? "" : ":" + std::to_string(finding.line);
  return OneLine(finding.file) + line + ": " + Name(finding.severity) + ": " + OneLine(finding.reason) + " [" +
         finding.rule + "]\n    " + OneLine(finding.remedy) + "\n";
}

std::string FindingJson(const Finding& finding) {
  std::string json = "{";
  AppendMember(json, "file", finding.file);
  json += ",\"line\":" + std::to_string(finding.line);
  AppendMember(json, "severity", Name(finding.severity));
  AppendMember(json, "rule", finding.rule);
  AppendMember(json, "reason", finding.reason);
  AppendMember(json, "remedy", finding.remedy);
  return json + "}\n";
}

ExitStatus PrintFindings(const std::vector<Finding>& findings, const std::string& file, bool json, Output& out) {
  for (const Finding& finding : findings) {
    out.Write(json ? FindingJson(finding) : FindingText(finding));
  }
  const std::size_t notes = CountOf(findings, Severity::Note);
  const bool clean = notes == findings.size();
  if (!json) {
    out.Write(OneLine(file) + ": " +
              (clean ? "no findings"
                     : Counted(CountOf(findings, Severity::Error), "error") + ", " +
                           Counted(CountOf(findings, Severity::Warning), "warning")) +
              (notes == 0 ? "" : ", " + Counted(notes, "note")) + "\n");
  }
  return clean ? ExitStatus::Good : ExitStatus::Failed;
}

}  // namespace devhost
