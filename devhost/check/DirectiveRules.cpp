#include <algorithm>

#include "devhost/check/Rules.h"

// Directives that the daemon does not take, and users.
namespace devhost {

namespace {

// The words of a createUser line behind the engine that it may name: user, kind, passphrase, kind, passphrase.
std::vector<std::string_view> WordsOfUser(const Directive& setting) {
  std::vector<std::string_view> words(setting.words.size());
  std::transform(setting.words.begin(), setting.words.end(), words.begin(),
                 [](const DirectiveWord& word) { return std::string_view(word.text); });
  const bool hasEngine = words.size() > 1 && words[0] == "-e";
  words.erase(words.begin(), words.begin() + (hasEngine ? 2 : 0));
  return words;
}

bool IsKeyOption(std::string_view word) {
  return word == "-m" || word == "-l";
}

// The names are shown only from the list of those that are known: what stands in the file may hold a community.
void JudgeUnknown(const Sight& sight, Report& report) {
  const std::string_view keyword = sight.Keyword();
  const DirectiveNames& known = sight.circumstances.Directives();
  if (keyword.empty() || known.daemon.count(keyword) != 0 ||
      WithoutByteOrderMark(sight.line.text).size() != sight.line.text.size()) {
    return;
  }
  if (report.IsFull()) {
    report.Add("", "");
    return;
  }
  const auto ofPrograms = known.programs.find(keyword);
  if (ofPrograms != known.programs.end()) {
    report.Add(*ofPrograms + " belongs into snmp.conf: the daemon does not know it here and ignores the line",
               "move the line to snmp.conf, or write [snmp] in front of it");
    return;
  }
  const std::string nearest(NearestDirectiveName(keyword, known.daemon));
  const std::string reason = "the daemon does not know this directive and ignores the line";
  if (nearest.empty()) {
    report.Add(reason, "correct or remove the line; \"snmpd -H\" lists the directives");
  } else if (keyword.substr(0, nearest.size()) == nearest) {
    report.Add(reason + ": what stands directly behind " + nearest + " is part of the word",
               "write a space behind " + nearest);
  } else {
    report.Add(reason + "; did you mean " + nearest + "?", "write " + nearest + ", or remove the line");
  }
}

void JudgeOtherSection(const Sight& sight, Report& report) {
  const std::optional<Directive>& elsewhere = sight.line.elsewhere;
  const DirectiveNames& known = sight.circumstances.Directives();
  if (elsewhere && known.daemon.count(elsewhere->keyword) != 0 && !IsInclude(elsewhere->keyword) &&
      known.programs.count(elsewhere->keyword) == 0) {
    report.Add("a directive of the daemon in a section of other programs: the daemon ignores the line",
               "write a line [snmpd] above it, or move it above the line in brackets");
  }
}

void JudgePassphrase(const Sight& sight, Report& report) {
  if (sight.Keyword() != "createuser") {
    return;
  }
  const std::vector<std::string_view> words = WordsOfUser(*sight.line.setting);
  const bool hasAuthKey = words.size() > 2 && IsKeyOption(words[2]);
  const std::size_t privacy = hasAuthKey ? 5 : 4;
  if ((words.size() > 2 && !hasAuthKey) || (words.size() > privacy && !IsKeyOption(words[privacy]))) {
    report.Add("a passphrase in plain text: whoever gets to see this file, or a copy of it, can be this user everywhere",
               "stop the daemon and put the line into snmpd.conf of its persistent folder, where it makes a key of it");
  }
}

}  // namespace

std::vector<Rule> DirectiveRules() {
  using S = Severity;
  return {
      {"unknown-directive", S::Error, JudgeUnknown},
      {"other-section", S::Error, JudgeOtherSection},
      {"plain-passphrase", S::Warning, JudgePassphrase},
  };
}

}  // namespace devhost
