#include "drivers/localsnmpd/ServedConfig.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "devhost/snmpd/Directive.h"
#include "devhost/snmpd/IncludedFiles.h"
#include "devhost/snmpd/LineCutter.h"
#include "devhost/snmpd/WordCutter.h"
#include "drivers/localsnmpd/ServedDirectives.h"

namespace drivers {

namespace {

using devhost::Directive;
using devhost::IncludedFiles;

const int kDeepest = 8;
// The daemon reads the owner's lines as those of this section when they name no other.
const std::string_view kSection = "snmpd";

// The section that a line names in brackets in front of all else; nothing when it names none.
std::optional<std::string> SectionOf(std::string_view line, bool& isAlone) {
  devhost::WordCutter cutter(line);
  if (cutter.AtEnd()) {
    return std::nullopt;
  }
  const std::string word = cutter.Next().text;
  isAlone = cutter.AtEnd();
  if (word.compare(0, 1, "[") != 0) {
    return std::nullopt;
  }
  // What the daemon would refuse is a section that is not served.
  return word.back() == ']' && word.size() > 1 ? word.substr(1, word.size() - 2) : std::string();
}

class Composer {
 public:
  void Add(const std::string& file, std::string_view text, int depth) {
    bool isServed = true;  // whether the section that a former line switched to is served
    for (devhost::LineCutter lines(text); lines.Next();) {
      AddLine({file, lines.Number()}, std::string(lines.Line()), depth, isServed);
    }
  }

  ServedConfig Take() { return std::move(m_result); }

 private:
  using Place = ServedConfig::Place;

  void AddLine(const Place& place, std::string line, int depth, bool& isServed) {
    if (line.find('\0') != std::string::npos) {
      // The daemon would go on with the next line there.
      std::replace(line.begin(), line.end(), '\0', '?');
      Note(place, line, "the line holds a zero byte; the daemon gets a question mark in its place");
    }
    bool isAlone = false;
    const std::optional<std::string> section = SectionOf(line, isAlone);
    if (section && isAlone) {
      isServed = *section == kSection;
      LeaveOut(place, line, isServed ? "" : "the driver serves no other section than snmpd; its lines are left out");
      return;
    }
    const std::optional<Directive> directive = devhost::ReadDirective(line);
    if (!directive) {
      Serve(place, line);
    } else if (section ? *section != kSection : !isServed) {
      LeaveOut(place, line,
               section ? "the driver serves no other section than snmpd; the daemon does not get this line" : "");
    } else if (directive->keyword == "includefile" || directive->keyword == "includedir") {
      Include(place, line, *directive, depth);
    } else {
      AddDirective(place, line, *directive);
    }
  }

  void AddDirective(const Place& place, const std::string& line, const Directive& directive) {
    const std::string why = WhyNotServed(directive);
    if (IsReplacedByDriver(directive)) {
      LeaveOut(place, line, "");
    } else if (!why.empty()) {
      LeaveOut(place, line, why + "; the daemon does not get this line");
    } else {
      // Not as it stands: quotes, backslashes and brackets in front of it could mean something else to another daemon.
      Serve(place, directive.keyword + ' ' + line.substr(directive.restBegin));
    }
  }

  void Include(const Place& place, const std::string& line, const Directive& directive, int depth) {
    std::vector<IncludedFiles::File> files;
    std::string wrong = "files include each other too deeply";
    if (depth != kDeepest) {
      wrong = directive.keyword == "includedir" ? m_files.ReadFolder(directive.rest, files)
                                                : m_files.Read(directive.rest, files);
    }
    LeaveOut(place, line, wrong.empty() ? wrong : wrong + "; the daemon does not get it");
    for (const IncludedFiles::File& file : files) {
      Add(file.path, file.text, depth + 1);
    }
  }

  void Serve(const Place& place, const std::string& line) {
    m_result.text += line;
    m_result.text += '\n';
    m_result.places.push_back(place);
  }

  void LeaveOut(const Place& place, const std::string& line, const std::string& what) {
    if (!what.empty()) {
      Note(place, line, what);
    }
    Serve(place, "# " + line);
  }

  void Note(const Place& place, const std::string& line, const std::string& what) {
    m_result.notes.push_back({place, line, what});
  }

  IncludedFiles m_files;
  ServedConfig m_result;
};

}  // namespace

ServedConfig MakeServedConfig(const std::string& text) {
  Composer composer;
  composer.Add("snmpd.conf", text, 0);
  return composer.Take();
}

}  // namespace drivers
