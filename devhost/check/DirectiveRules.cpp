#include <algorithm>
#include <iterator>

#include "devhost/check/Rules.h"
#include "devhost/check/UserLine.h"

// Directives that the daemon does not take, and users.
namespace devhost {

namespace {

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
  const std::vector<std::string> words = ReadUserLine(*sight.line.setting).words;
  const bool hasAuthKey = words.size() > 2 && IsKeyOption(words[2]);
  const std::size_t privacy = hasAuthKey ? 5 : 4;
  if ((words.size() > 2 && !hasAuthKey) || (words.size() > privacy && !IsKeyOption(words[privacy]))) {
    report.Add("a passphrase in plain text: whoever gets to see this file, or a copy of it, can be this user everywhere",
               "stop the daemon and put the line into snmpd.conf of its persistent folder, where it makes a key of it");
  }
}

void JudgeUser(const Sight& sight, Report& report) {
  if (sight.Keyword() == "createuser") {
    const std::string problem = WhyNoUser(ReadUserLine(*sight.line.setting));
    if (!problem.empty()) {
      report.Add("the daemon does not make this user: " + problem, "correct the line, or remove it");
    }
  }
}

void JudgeEqualsSign(const Sight& sight, Report& report) {
  const bool isAgents = sight.line.IsInside() && sight.read.kind != ReadBack::Kind::Nothing;
  if (!sight.line.setting || isAgents || sight.line.setting->words.empty()) {
    return;
  }
  const DirectiveWord& first = sight.line.setting->words.front();
  if (first.quote == '\0' && (first.text == "=" || first.text == ":")) {
    report.Add("a sign between the directive and its value: the daemon takes it for the value, or for the first word of it",
               "write blanks alone between them");
  }
}

void JudgeUnknownSection(const Sight& sight, Report& report) {
  const std::string_view text = TrimmedView(sight.line.text);
  if (sight.line.setting || sight.line.elsewhere || text.substr(0, 1) != "[" || text.back() != ']') {
    return;
  }
  if (text != "[snmpd]" && text != "[snmp]" && text != "[agentx]") {
    report.Add("the daemon does not know this section: the lines below belong to the section above it",
               "write [snmpd] or [snmp], in lower case, or remove the line");
  }
}

void JudgeTypographicQuote(const Sight& sight, Report& report) {
  constexpr std::string_view kQuotes[] = {"\xE2\x80\x9C", "\xE2\x80\x9D", "\xE2\x80\x9E", "\xE2\x80\x98",
                                          "\xE2\x80\x99", "\xE2\x80\x9A", "\xC2\xAB",     "\xC2\xBB"};
  if (!sight.line.setting || IsSystemText(sight.Keyword())) {
    return;
  }
  for (const DirectiveWord& word : sight.line.setting->words) {
    const bool isQuoted = static_cast<unsigned char>(word.text.empty() ? '\0' : word.text.front()) >= 0x80 &&
                          std::any_of(std::begin(kQuotes), std::end(kQuotes), [&word](std::string_view quote) {
                            return word.text.compare(0, quote.size(), quote) == 0;
                          });
    if (isQuoted) {
      report.Add("a quote of a word processor: the daemon takes it for a part of the word",
                 "write the quote of the keyboard, or none");
      return;
    }
  }
}

}  // namespace

std::vector<Rule> DirectiveRules() {
  using S = Severity;
  return {
      {"unknown-directive", S::Error, JudgeUnknown},          {"other-section", S::Error, JudgeOtherSection},
      {"sign-behind-directive", S::Error, JudgeEqualsSign},   {"user-rejected", S::Error, JudgeUser},
      {"plain-passphrase", S::Warning, JudgePassphrase},      {"unknown-section", S::Error, JudgeUnknownSection},
      {"typographic-quote", S::Error, JudgeTypographicQuote},
  };
}

}  // namespace devhost
