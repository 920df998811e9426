#include <algorithm>

#include "devhost/check/Rules.h"

// What the agent's reader takes out of a section, where that is not what the lines seem to say.
namespace devhost {

namespace {

using Kind = ReadBack::Kind;

// The first word, as it stands: the reader minds capitals, the daemon does not.
std::string_view FirstWord(std::string_view text) {
  text = TrimmedView(text);
  return text.substr(0, text.find_first_of(" \t\r"));
}

// A setting that the reader takes for the one that it is.
bool IsOwnSetting(const Sight& sight) {
  return sight.line.setting && sight.read.kind != Kind::Nothing && FirstWord(sight.line.text) == sight.read.keyword;
}

std::string HeldBy(const ReadBack& read) {
  return read.keyword == "agentXTimeout" || read.keyword == "agentXRetries" ? "" : " of a device that holds none yet";
}

}  // namespace

void JudgeCommentRead(const Sight& sight, Report& report) {
  if (sight.read.kind != Kind::Nothing && sight.read.sets && sight.line.IsComment()) {
    report.Add(sight.line.number,
               "the agent reads this comment as a setting: it becomes the " + sight.read.keyword + HeldBy(sight.read),
               "move the comment below the section, or write " + sight.read.keyword + " in another way");
  }
}

void JudgeKeywordInValue(const Sight& sight, Report& report) {
  if (sight.line.setting && sight.read.kind != Kind::Nothing && !IsOwnSetting(sight)) {
    report.Add(sight.line.number,
               "the agent goes by " + sight.read.keyword + ", which stands somewhere in the line: all of it becomes the " +
                   sight.read.keyword + HeldBy(sight.read),
               "take a text without " + sight.read.keyword);
  }
}

void JudgeKeywordLost(const Sight& sight, Report& report) {
  if (IsOwnSetting(sight) && LosesKeyword(sight.line.text, sight.read)) {
    report.Add(sight.line.number,
               "the value holds " + sight.read.keyword +
                   " as a word of its own: the agent leaves it out when it reads the file for "
                   "a device that holds none yet",
               "take a value without that word");
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
    report.Add(sight.line.number,
               "the agent cuts lines at spaces, not at tabs, and expects " + read.keyword +
                   " at the very front: it reads another value than the daemon",
               "begin the line with " + read.keyword + " and put spaces behind it");
  }
}

void JudgeCarriageReturn(const Sight& sight, Report& report) {
  const std::string& taken = sight.read.kind == Kind::Field ? sight.read.value : sight.read.community;
  if (IsOwnSetting(sight) && Contains(taken, "\r")) {
    report.Add(sight.line.number, "a carriage return: the agent reads it as part of the value",
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
      sight.line.number,
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
        sight.line.number,
        "a device that holds no community yet takes this one with its quotes; the next write puts a second pair around it, "
        "and the daemon lets nobody in",
        "take a community without spaces, or set it on the device");
  }
}

void JudgeTrapReadBack(const Sight& sight, Report& report) {
  if (sight.read.kind != Kind::Trap || !IsOwnSetting(sight) || Contains(sight.read.target, "\t") ||
      TrimmedView(sight.read.community).empty()) {
    return;
  }
  if (sight.read.community != TrimmedView(sight.read.community)) {
    report.Add(
        sight.line.number,
        "a device that holds no trap targets yet takes everything behind the host for the community, spaces and port too; "
        "the daemon rejects what the next write makes of that",
        "see that the device holds its trap targets; no way of writing the line suits both the agent and the daemon");
  }
}

}  // namespace devhost
