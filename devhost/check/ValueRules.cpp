#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "devhost/check/Rules.h"
#include "devhost/check/Subtree.h"

// Values that the daemon rejects or takes for something else.
namespace devhost {

namespace {

constexpr std::size_t kLongestText = 255;

// The settings of the agent, in the words of the daemon.
bool IsAgentKeyword(std::string_view keyword) {
  constexpr std::string_view kOthers[] = {"trap2sink", "agentxretries", "agentxsocket",
                                          "master",    "sysservices",   "sysobjectid"};
  return IsSystemText(keyword) || IsCommunityKeyword(keyword) ||
         std::find(std::begin(kOthers), std::end(kOthers), keyword) != std::end(kOthers);
}

std::string_view FirstWord(std::string_view value) {
  return value.substr(0, value.find_first_of(" \t\r"));
}

// A number, perhaps with a unit. The daemon looks for the unit at the end of the line.
bool IsTime(std::string_view value) {
  constexpr std::string_view kUnits = "smhdwSMHDW";
  std::string_view text = FirstWord(value);
  if (!value.empty() && !Contains("0123456789", value.substr(value.size() - 1)) &&
      !Contains(kUnits, value.substr(value.size() - 1))) {
    return false;
  }
  if (!text.empty() && Contains(kUnits, text.substr(text.size() - 1))) {
    text.remove_suffix(1);
  }
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// A directive of the daemon.
bool IsKnown(const Sight& sight) {
  return IsAgentKeyword(sight.Keyword()) || sight.circumstances.Directives().daemon.count(sight.Keyword()) != 0;
}

void JudgeHash(const Sight& sight, Report& report) {
  if (!sight.line.setting || sight.line.setting->rest.compare(0, 1, "#") != 0 || !IsKnown(sight) ||
      IsInclude(sight.Keyword())) {
    return;
  }
  report.Add(std::string("the daemon takes a value that begins with # for a comment and rejects the line: ") +
                 (IsCommunityKeyword(sight.Keyword()) ? "nobody gets access by it"
                  : sight.Keyword() == "trap2sink"    ? "it sends no traps"
                  : IsAgentKeyword(sight.Keyword())   ? "its default is served"
                                                      : "it has no effect"),
             "begin the value with another character");
}

void JudgeMissingValue(const Sight& sight, Report& report) {
  if (sight.line.setting && sight.line.setting->rest.empty() && sight.Keyword() != "agentxtimeout" && IsKnown(sight)) {
    report.Add("no value: the daemon rejects the line", "give a value that is not only blanks, or remove the line");
  }
}

void JudgeTextLength(const Sight& sight, Report& report) {
  if ((IsSystemText(sight.Keyword()) || sight.Keyword() == "sysdescr") && sight.line.setting->rest.size() > kLongestText) {
    report.Add("the text is longer than 255 bytes: the daemon rejects the line and serves its default",
               "choose a text of at most 255 bytes; a letter outside ASCII has two bytes or more");
  }
}

void JudgeAgentXTimeout(const Sight& sight, Report& report) {
  if (sight.Keyword() != "agentxtimeout") {
    return;
  }
  const std::string_view word = FirstWord(sight.line.setting->rest);
  if (!IsTime(sight.line.setting->rest)) {
    report.Add("agentXTimeout is not a number of seconds: the daemon uses its built-in default",
               "give a number of seconds, for example 6");
  } else if (word.find_first_of("123456789") == std::string_view::npos) {
    report.Add("agentXTimeout is 0: every request to an AgentX subagent fails at once",
               "give a number of seconds, for example 6");
  }
}

// Directives that take one of few words, or a number, as the whole of their value.
enum class Takes { YesOrNo, OneOrTwo, Number };

struct PlainValue {
  std::string_view keyword;
  Takes takes;
};

constexpr PlainValue kPlainValues[] = {{"authtrapenable", Takes::OneOrTwo},
                                       {"avgbulkvarbindsize", Takes::Number},
                                       {"disableperl", Takes::YesOrNo},
                                       {"diskio_exclude_fd", Takes::YesOrNo},
                                       {"diskio_exclude_loop", Takes::YesOrNo},
                                       {"diskio_exclude_ram", Takes::YesOrNo},
                                       {"donotretainnotificationlogs", Takes::YesOrNo},
                                       {"dontlogtcpwrappersconnects", Takes::YesOrNo},
                                       {"dontretainlogs", Takes::YesOrNo},
                                       {"leave_pidfile", Takes::YesOrNo},
                                       {"maxgetbulkrepeats", Takes::Number},
                                       {"maxgetbulkresponses", Takes::Number},
                                       {"pdustatsmax", Takes::Number},
                                       {"pdustatsthreshold", Takes::Number},
                                       {"quit", Takes::YesOrNo},
                                       {"realstorageunits", Takes::YesOrNo},
                                       {"skipnfsinhostresources", Takes::YesOrNo},
                                       {"storageusenfs", Takes::OneOrTwo},
                                       {"strictdisman", Takes::YesOrNo}};

bool IsYesOrNo(std::string_view text) {
  constexpr std::string_view kWords[] = {"yes", "no", "true", "false", "0", "1"};
  return std::find(std::begin(kWords), std::end(kWords), InLowerCase(text)) != std::end(kWords);
}

bool IsWholeNumber(std::string_view text) {
  text.remove_prefix(text.substr(0, 1) == "-" || text.substr(0, 1) == "+" ? 1 : 0);
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// As the daemon takes one for itself, without MIB files.
bool IsObjectId(std::string_view text) {
  return text.find('"') == std::string_view::npos && JudgeSubtree(text) == Subtree::Good;
}

const PlainValue* FindPlainValue(std::string_view keyword) {
  const auto* const found = std::find_if(std::begin(kPlainValues), std::end(kPlainValues),
                                         [keyword](const PlainValue& value) { return value.keyword == keyword; });
  return found == std::end(kPlainValues) ? nullptr : found;
}

// The values of the system group that are not texts, and the kind of the engine's id.
void JudgeSystemValue(const Sight& sight, Report& report) {
  const std::string_view keyword = sight.Keyword();
  if ((keyword != "sysobjectid" && keyword != "sysservices" && keyword != "engineidtype") ||
      sight.line.setting->words.empty() || sight.line.setting->rest.front() == '#') {
    return;
  }
  const std::string_view word = FirstWord(sight.line.setting->rest);
  if (keyword == "sysobjectid" && !IsObjectId(sight.line.setting->rest)) {
    report.Add("sysObjectID is not an object identifier in numbers: the daemon rejects the line",
               "write numbers, for example .1.3.6.1.4.1.8072.3.2.10, without quotes");
  } else if (keyword == "sysservices" && !IsWholeNumber(word)) {
    report.Add("sysServices is not a whole number: the daemon serves the number in front, or 0",
               "write a number, for example 72");
  } else if (keyword == "engineidtype" && word != "1" && word != "2" && word != "3") {
    report.Add("the daemon knows 1 (IPv4), 2 (IPv6) and 3 (the address of the network card): it takes 1", "write 1, 2 or 3");
  }
}

void JudgePlainValue(const Sight& sight, Report& report) {
  const PlainValue* const known = FindPlainValue(sight.Keyword());
  if (known == nullptr || sight.line.setting->words.empty()) {
    return;
  }
  const std::string_view word = FirstWord(sight.line.setting->rest);
  if (known->takes == Takes::YesOrNo && !IsYesOrNo(word)) {
    report.Add("the daemon rejects a value other than yes, no, true, false, 1 and 0", "write yes or no, without quotes");
  } else if (known->takes == Takes::OneOrTwo && word.substr(0, 1) != "1" && word.substr(0, 1) != "2") {
    report.Add("the daemon rejects a value other than 1 (yes) and 2 (no)", "write 1 or 2");
  } else if (known->takes == Takes::Number && !IsWholeNumber(word)) {
    report.Add("the daemon rejects a value that is not a whole number", "write a number, without quotes");
  }
}

void JudgeDisks(const Sight& sight, Report& report) {
  const History& above = sight.above;
  if (sight.Keyword() == "includealldisks" && above.disksLine != 0 && !IsRejected(*sight.line.setting) &&
      DiskPercent(sight.line.setting->rest) != above.diskPercent) {
    report.Add("the daemon keeps the first includeAllDisks, that of " + report.LineName(above.disksLine) +
                   ": this line has no effect",
               "remove this line; a line with disk sets the limit of one disk");
  }
}

}  // namespace

long DiskPercent(const std::string& value) {
  constexpr long kUsual = 5;
  return Contains(value, "%") ? std::strtol(value.c_str(), nullptr, 10) : kUsual;
}

bool IsSystemText(std::string_view keyword) {
  return keyword == "syscontact" || keyword == "syslocation" || keyword == "sysname";
}

bool IsPlainValue(std::string_view keyword) {
  return FindPlainValue(keyword) != nullptr;
}

bool IsRejected(const Directive& setting) {
  return setting.rest.empty() || setting.rest.front() == '#' ||
         (IsSystemText(setting.keyword) && setting.rest.size() > kLongestText) ||
         (setting.keyword == "agentxtimeout" && !IsTime(setting.rest)) ||
         (setting.keyword == "sysobjectid" && !IsObjectId(setting.rest));
}

std::vector<Rule> ValueRules() {
  using S = Severity;
  return {
      {"value-begins-with-hash", S::Error, JudgeHash}, {"value-missing", S::Error, JudgeMissingValue},
      {"text-too-long", S::Error, JudgeTextLength},    {"agentx-timeout", S::Error, JudgeAgentXTimeout},
      {"value-wrong", S::Error, JudgePlainValue},      {"system-value-wrong", S::Error, JudgeSystemValue},
      {"first-disk-line-wins", S::Error, JudgeDisks},
  };
}

}  // namespace devhost
