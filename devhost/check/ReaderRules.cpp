#include <algorithm>

#include "devhost/check/Rules.h"

// What the agent's reader takes from a section where that differs from what the lines seem to say.
namespace devhost {

namespace {

using Kind = ReadBack::Kind;

// The first word as it is written: capitals matter to the reader, not to the daemon.
std::string_view FirstWord(std::string_view text) {
  text = TrimmedView(text);
  return text.substr(0, text.find_first_of(" \t\r"));
}

// A setting that the reader recognises as the one that the daemon sees.
bool IsOwnSetting(const Sight& sight) {
  return sight.line.setting && sight.read.kind != Kind::Nothing && FirstWord(sight.line.text) == sight.read.keyword;
}

std::string HeldBy(const ReadBack& read) {
  return read.keyword == "agentXTimeout" || read.keyword == "agentXRetries" ? "" : " of a device that holds none yet";
}

void JudgeCommentRead(const Sight& sight, Report& report) {
  if (sight.read.kind != Kind::Nothing && sight.read.sets && sight.line.IsComment()) {
    report.Add("the agent reads this comment as a setting: it becomes the " + sight.read.keyword + HeldBy(sight.read),
               "move the comment below the section, or spell " + sight.read.keyword + " differently");
  }
}

void JudgeKeywordInValue(const Sight& sight, Report& report) {
  if (sight.line.setting && sight.read.kind != Kind::Nothing && !IsOwnSetting(sight)) {
    report.Add("the agent finds " + sight.read.keyword + " in the line: the whole line becomes the " + sight.read.keyword +
                   HeldBy(sight.read),
               "choose a text without " + sight.read.keyword);
  }
}

void JudgeKeywordLost(const Sight& sight, Report& report) {
  if (IsOwnSetting(sight) && LosesKeyword(sight.line.text, sight.read)) {
    report.Add("the value contains " + sight.read.keyword +
                   " as a word of its own: the agent leaves it out when it reads the file for "
                   "a device that holds none yet",
               "choose a value without that word");
  }
}

void JudgeBlanks(const Sight& sight, Report& report) {
  if (!IsOwnSetting(sight) || LosesKeyword(sight.line.text, sight.read) || sight.line.setting->rest.empty() ||
      Contains(sight.line.text, std::string_view("\0", 1))) {
    return;
  }
  const ReadBack& read = sight.read;
  const std::string& rest = sight.line.setting->rest;
  const bool wrongWord = read.kind == Kind::Word && read.value != rest;
  const bool wrongField = read.kind == Kind::Field && (!read.sets || TrimmedView(read.value) != FirstWord(rest));
  const bool wrongTrap = read.kind == Kind::Trap && Contains(read.target, "\t");
  if (wrongWord || wrongField || wrongTrap) {
    report.Add("the agent separates words at spaces, not at tabs, and expects " + read.keyword +
                   " at the start of the line: it does not read the value that the daemon reads",
               "begin the line with " + read.keyword + " followed by spaces");
  }
}

void JudgeCarriageReturn(const Sight& sight, Report& report) {
  const std::string& taken = sight.read.kind == Kind::Field ? sight.read.value : sight.read.community;
  if (IsOwnSetting(sight) && Contains(taken, "\r")) {
    report.Add("a carriage return: the agent reads it as part of the value",
               "end the lines of the file with line feeds alone");
  }
}

void JudgeSettingTwice(const Sight& sight, Report& report) {
  const auto found = sight.above.section.find(sight.Keyword());
  if (sight.read.kind != Kind::Word || !IsOwnSetting(sight) || sight.line.section != sight.layout.firstStart ||
      found == sight.above.section.end()) {
    return;
  }
  const std::string first = report.LineName(found->second.first);
  report.Add(
      IsSystemText(sight.Keyword())
          ? "a second " + sight.read.keyword + " in the section: the daemon serves this one, the agent reads that of " +
                first
          : "a second " + sight.read.keyword + " in the section: the agent reads that of " + first + " and drops this one",
      "remove one of the two");
}

void JudgeQuotesAgain(const Sight& sight, Report& report) {
  if (IsOwnSetting(sight) && IsCommunityKeyword(sight.Keyword()) && sight.read.value.substr(0, 1) == "\"" &&
      sight.read.value.substr(0, 2) != "\"\"" && Contains(sight.read.value, " ")) {
    report.Add(
        "a device that holds no community yet takes this one with its quotes; the next write puts a second pair around it, "
        "and the daemon lets nobody in",
        "choose a community without spaces, or set it on the device");
  }
}

void JudgeTrapReadBack(const Sight& sight, Report& report) {
  if (sight.read.kind != Kind::Trap || !IsOwnSetting(sight) || Contains(sight.read.target, "\t") ||
      TrimmedView(sight.read.community).empty()) {
    return;
  }
  if (sight.read.community != TrimmedView(sight.read.community)) {
    report.Add(
        "a device that holds no trap targets yet takes everything after the host as the community, spaces and port too; "
        "the daemon rejects what the next write makes of it",
        "make sure that the device holds its trap targets; no way of writing the line suits both the agent and the daemon");
  }
}

}  // namespace

std::vector<Rule> ReaderRules() {
  using S = Severity;
  return {
      {"comment-read-as-setting", S::Error, JudgeCommentRead},
      {"keyword-in-value", S::Error, JudgeKeywordInValue},
      {"keyword-lost", S::Note, JudgeKeywordLost},
      {"blanks-misread", S::Error, JudgeBlanks},
      {"carriage-return", S::Warning, JudgeCarriageReturn},
      {"setting-twice", S::Error, JudgeSettingTwice},
      {"community-quoted-again", S::Note, JudgeQuotesAgain},
      {"trap-read-as-community", S::Note, JudgeTrapReadBack},
  };
}

}  // namespace devhost
