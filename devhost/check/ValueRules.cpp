#include <algorithm>
#include <string_view>

#include "devhost/check/Rules.h"

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

// A number, perhaps with a unit.
bool IsTime(std::string_view text) {
  constexpr std::string_view kUnits = "smhdwSMHDW";
  if (!text.empty() && Contains(kUnits, text.substr(text.size() - 1))) {
    text.remove_suffix(1);
  }
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

void JudgeHash(const Sight& sight, Report& report) {
  if (!IsAgentKeyword(sight.Keyword()) || sight.line.setting->rest.substr(0, 1) != "#") {
    return;
  }
  report.Add(std::string("the daemon takes a value that begins with # for a comment and rejects the line: ") +
                 (IsCommunityKeyword(sight.Keyword()) ? "nobody gets access by it"
                  : sight.Keyword() == "trap2sink"    ? "it sends no traps"
                                                      : "its default is served"),
             "begin the value with another character");
}

void JudgeMissingValue(const Sight& sight, Report& report) {
  if (IsAgentKeyword(sight.Keyword()) && sight.line.setting->rest.empty()) {
    report.Add("no value: the daemon rejects the line", "give a value that is not only blanks, or remove the line");
  }
}

void JudgeTextLength(const Sight& sight, Report& report) {
  if (IsSystemText(sight.Keyword()) && sight.line.setting->rest.size() > kLongestText) {
    report.Add("the text is longer than 255 bytes: the daemon rejects the line and serves its default",
               "choose a text of at most 255 bytes; a letter outside ASCII has two bytes or more");
  }
}

void JudgeAgentXTimeout(const Sight& sight, Report& report) {
  if (sight.Keyword() != "agentxtimeout") {
    return;
  }
  const std::string_view word = FirstWord(sight.line.setting->rest);
  if (!IsTime(word)) {
    report.Add("agentXTimeout is not a number of seconds: the daemon uses its built-in default",
               "give a number of seconds, for example 6");
  } else if (word.find_first_of("123456789") == std::string_view::npos) {
    report.Add("agentXTimeout is 0: every request to an AgentX subagent fails at once",
               "give a number of seconds, for example 6");
  }
}

}  // namespace

bool IsSystemText(std::string_view keyword) {
  return keyword == "syscontact" || keyword == "syslocation" || keyword == "sysname";
}

bool IsRejected(const Directive& setting) {
  return setting.rest.empty() || setting.rest.front() == '#' ||
         (IsSystemText(setting.keyword) && setting.rest.size() > kLongestText) ||
         (setting.keyword == "agentxtimeout" && !IsTime(FirstWord(setting.rest)));
}

std::vector<Rule> ValueRules() {
  using S = Severity;
  return {
      {"value-begins-with-hash", S::Error, JudgeHash},
      {"value-missing", S::Error, JudgeMissingValue},
      {"text-too-long", S::Error, JudgeTextLength},
      {"agentx-timeout", S::Error, JudgeAgentXTimeout},
  };
}

}  // namespace devhost
