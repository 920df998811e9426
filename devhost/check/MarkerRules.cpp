#include <algorithm>
#include <string_view>

#include "devhost/check/Rules.h"

// The markers of the section, and what the next write does with the file.
namespace devhost {

namespace {

bool HasStart(const Sight& sight) {
  return !sight.line.isIncluded && Contains(sight.line.text, kStartMarker);
}

bool HasEnd(const Sight& sight) {
  return !sight.line.isIncluded && Contains(sight.line.text, kEndMarker);
}

bool IsBlank(const Sight& sight) {
  return TrimmedView(WithoutByteOrderMark(sight.line.text)).empty();
}

// A setting for which the daemon uses the last line.
struct LastWins {
  std::string_view keyword;
  const char* name;  // the same as people write it
  // The value in every section, "" for what the user sets, "-" for what the agent's build sets.
  std::string_view fixed;
};

constexpr LastWins kLastWins[] = {{"syscontact", "sysContact", ""},
                                  {"syslocation", "sysLocation", ""},
                                  {"sysname", "sysName", ""},
                                  {"sysservices", "sysServices", "72"},
                                  {"sysobjectid", "sysObjectID", "-"},
                                  {"agentxsocket", "agentXSocket", "tcp:127.0.0.1:705"},
                                  {"master", "master", "agentx"},
                                  {"agentxtimeout", "agentXTimeout", "6"},
                                  {"agentxretries", "agentXRetries", "2"}};

const LastWins* FindLastWins(std::string_view keyword) {
  const auto found = std::find_if(std::begin(kLastWins), std::end(kLastWins),
                                  [keyword](const LastWins& known) { return known.keyword == keyword; });
  return found == std::end(kLastWins) ? nullptr : found;
}

// The one that the line sets; null when it sets none, or when the daemon rejects it.
const LastWins* Overrider(const Sight& sight) {
  const LastWins* const known = FindLastWins(sight.Keyword());
  return known == nullptr || IsRejected(*sight.line.setting) ? nullptr : known;
}

// The daemon has several words for the same thing, and ignores a dot in front of a number.
std::string_view Meaning(const LastWins& known, std::string_view value) {
  const bool isMaster = known.keyword == "master" && (value == "yes" || value == "on" || value == "all");
  value.remove_prefix(known.keyword == "sysobjectid" && value.substr(0, 1) == "." ? 1 : 0);
  return isMaster ? known.fixed : value;
}

std::string RemedyAgainst(const LastWins& known) {
  return known.fixed.empty() ? "remove this line, and set the value on the device"
                             : "remove this line, unless it is meant to win";
}

// A line that every section carries as it is.
bool IsFixed(const Directive& setting) {
  constexpr std::string_view kObjectPrefix = "1.3.6.1.4.1.";
  const std::string_view value = setting.rest;
  if (setting.keyword == "sysobjectid") {
    return value.substr(0, kObjectPrefix.size()) == kObjectPrefix &&
           value.find_first_not_of("0123456789", kObjectPrefix.size()) == std::string_view::npos;
  }
  const LastWins* const known = FindLastWins(setting.keyword);
  return (known != nullptr && !known->fixed.empty() && value == known->fixed) ||
         (setting.keyword == "includealldisks" && value == "10%");
}

// A line of the section that the next write replaces.
bool IsReplacedLine(const Sight& sight) {
  return sight.line.IsInside() && sight.layout.IsReplaced() && !sight.IsKept();
}

void JudgeStartWithoutEnd(const Sight& sight, Report& report) {
  if (sight.line.number == 0 || sight.line.number != sight.layout.unclosed) {
    return;
  }
  const bool alone = sight.layout.firstEnd == 0;
  report.Add(
      alone
          ? "a start marker without an end marker: the next write puts a new section above and keeps this one below it; its "
            "communities stay valid and its sysContact, sysLocation and sysName win"
          : "a start marker without an end marker below it: the agent reads all lines down to the end of the file",
      alone ? "write a line \"# " + std::string(kEndMarker) + "\" and an empty line after the section, or remove the section"
            : "remove this line and the rest of the section that it opened");
}

void JudgeEndWithoutStart(const Sight& sight, Report& report) {
  if (sight.line.number == sight.layout.firstEnd && sight.layout.firstEnd != 0 && sight.layout.firstStart == 0) {
    report.Add(
        "an end marker without a start marker does not make a section: the next write keeps the whole file below a new one",
        "remove this line");
  }
}

void JudgeMarkersReversed(const Sight& sight, Report& report) {
  if (sight.line.number != 0 && sight.line.number == sight.layout.firstEnd &&
      sight.layout.firstStart > sight.layout.firstEnd) {
    report.Add("the end marker stands above the start marker of " + report.LineName(sight.layout.firstStart) +
                   ": the next write drops everything down to here and keeps the section below",
               "remove this line");
  }
}

void JudgeStartAgain(const Sight& sight, Report& report) {
  if (!HasStart(sight) || sight.line.number == sight.layout.firstStart || sight.line.place == Place::EndMarker) {
    return;
  }
  const std::string first = report.LineName(sight.layout.firstStart);
  report.Add(sight.line.IsInside()
                 ? "a second start marker before the end marker: all from " + report.LineName(sight.line.section) +
                       " to the end marker counts as one section"
                 : "a second section: the next write does not replace it, so its communities stay valid and its "
                   "sysContact, sysLocation and sysName win over those of the section of " +
                       first,
             "remove the section that is out of date, markers included");
}

void JudgeEndAgain(const Sight& sight, Report& report) {
  if (HasEnd(sight) && sight.line.place == Place::Outside && sight.line.number != sight.layout.firstEnd) {
    report.Add("another end marker, with no section open: it is ignored", "remove this line");
  }
}

void JudgeMarkerInText(const Sight& sight, Report& report) {
  if (!HasStart(sight) && !HasEnd(sight)) {
    return;
  }
  std::string_view text = TrimmedView(sight.line.text);
  text.remove_prefix(std::min(text.find_first_not_of("# \t"), text.size()));
  if (text != kStartMarker && text != kEndMarker) {
    report.Add("the agent takes a line with a marker in the middle of other text for a marker and nothing else",
               "word the text differently");
  }
}

void JudgeTextAbove(const Sight& sight, Report& report) {
  const std::size_t limit = std::min(sight.layout.header, sight.layout.firstEnd);
  if (sight.layout.IsReplaced() && sight.line.number != 0 && sight.line.number < limit && !IsBlank(sight) &&
      sight.above.firstText == 0) {
    report.Add("text above the section: the next write drops it, from here to " + report.LineName(limit - 1),
               "move it below the section's last line and an empty line");
  }
}

void JudgeLineAfterTrailer(const Sight& sight, Report& report) {
  const Layout& layout = sight.layout;
  if (!layout.IsReplaced() || sight.line.isIncluded || sight.line.number <= layout.trailer || sight.IsKept()) {
    return;
  }
  if (TrimmedView(sight.line.text).find_first_not_of("# \t") != std::string_view::npos) {
    report.Add("a line directly after the section: the next write drops it",
               "put an empty line between the section and this line");
  }
}

void JudgeForeignLineInside(const Sight& sight, Report& report) {
  if (IsReplacedLine(sight) && sight.line.setting && sight.read.kind == ReadBack::Kind::Nothing &&
      !IsFixed(*sight.line.setting)) {
    report.Add("the agent neither reads nor writes this line: the next write drops it",
               "move it below the section; settings of the agent are written as it writes them, capitals included");
  }
}

void JudgeRetries(const Sight& sight, Report& report) {
  if (IsReplacedLine(sight) && sight.Keyword() == "agentxretries" && sight.line.setting->rest != "2") {
    report.Add("the agent does not keep agentXRetries: the next write puts 2 here",
               "put a line with agentXRetries below the section");
  }
}

void JudgeOldCommunity(const Sight& sight, Report& report) {
  if (sight.line.IsInside() && IsCommunityKeyword(sight.Keyword()) && (!sight.layout.IsReplaced() || sight.IsKept())) {
    report.Add("a community in a section that the next write does not replace: it stays valid beside the new ones",
               "remove this line together with its section");
  }
}

void JudgeOverride(const Sight& sight, Report& report) {
  const LastWins* const known = Overrider(sight);
  const auto section = sight.above.section.find(sight.Keyword());
  if (known == nullptr || section == sight.above.section.end() ||
      Meaning(*known, sight.line.setting->rest) == Meaning(*known, section->second.text) ||
      (sight.line.IsInside() && sight.line.section == sight.layout.firstStart)) {
    return;
  }
  report.Add("the daemon uses the last " + std::string(known->name) + ": this line wins over " +
                 report.LineName(section->second.line) + " of the section",
             RemedyAgainst(*known));
}

void JudgeFutureOverride(const Sight& sight, Report& report) {
  const LastWins* const known = Overrider(sight);
  if (known == nullptr || (!known->fixed.empty() && Meaning(*known, sight.line.setting->rest) == known->fixed)) {
    return;
  }
  const bool noSection = sight.layout.firstStart == 0;
  // The user has not set it yet.
  const bool notInSection = sight.line.section == 0 && sight.line.anchor > sight.layout.firstStart && sight.IsKept() &&
                            sight.above.section.count(sight.Keyword()) == 0;
  if (noSection || notInSection) {
    report.Add("the agent writes its section above this line, and the daemon uses the last " + std::string(known->name) +
                   ": this line will win over the agent's",
               RemedyAgainst(*known));
  }
}

}  // namespace

std::vector<Rule> MarkerRules() {
  using S = Severity;
  return {
      {"start-marker-without-end", S::Error, JudgeStartWithoutEnd},
      {"end-marker-without-start", S::Warning, JudgeEndWithoutStart},
      {"markers-reversed", S::Error, JudgeMarkersReversed},
      {"start-marker-again", S::Error, JudgeStartAgain},
      {"end-marker-again", S::Warning, JudgeEndAgain},
      {"marker-in-text", S::Error, JudgeMarkerInText},
      {"text-above-section", S::Error, JudgeTextAbove},
      {"line-after-trailer", S::Error, JudgeLineAfterTrailer},
      {"foreign-line-in-section", S::Error, JudgeForeignLineInside},
      {"retries-go-back", S::Warning, JudgeRetries},
      {"old-community", S::Error, JudgeOldCommunity},
      {"overrides-section", S::Error, JudgeOverride},
      {"will-override-section", S::Warning, JudgeFutureOverride},
  };
}

}  // namespace devhost
