#include <arpa/inet.h>

#include "devhost/check/Rules.h"

// The operands of lines about access, and the names that lead from one to another.
namespace devhost {

namespace {

// The agent writes nothing behind a community. What the daemon makes of more words there is a rule of its own.
const AccessLine* JudgedAccess(const Sight& sight) {
  const bool isAgents = sight.line.IsInside() && IsCommunityKeyword(sight.Keyword());
  return sight.access && !isAgents ? &*sight.access : nullptr;
}

void JudgeRejected(const Sight& sight, Report& report) {
  const AccessLine* const access = JudgedAccess(sight);
  if (access != nullptr && !access->problem.empty()) {
    const char* const consequence = access->isTakenAnyway ? "the daemon complains of the line, and takes it: "
                                                          : "the daemon makes nothing of the line: ";
    report.Add(consequence + access->problem, "correct the line, or remove it");
  }
}

void JudgeObjectName(const Sight& sight, Report& report) {
  const AccessLine* const access = JudgedAccess(sight);
  if (access != nullptr && access->problem.empty() && access->hasObjectName) {
    report.Add(
        "the name of an object in place of its numbers: a daemon without MIB files, as Debian runs it, rejects the line",
        "write numbers, for example .1.3.6.1.2.1.1");
  }
}

void JudgeSourceName(const Sight& sight, Report& report) {
  const AccessLine* const access = JudgedAccess(sight);
  if (access != nullptr && access->problem.empty() && access->hasHostName) {
    report.Add(
        "the name of a host in place of its address: the daemon looks it up once, at its start, and rejects the line when "
        "no "
        "name server answers",
        "write the address");
  }
}

// Names are judged behind the last line, since the daemon follows them then.
bool KnowsAllNames(const Sight& sight) {
  return sight.line.number == 0 && !sight.line.isIncluded && !sight.above.hasUnread;
}

void AddMissing(const Sight& sight, Report& report, const std::vector<AccessNames::Use>& uses, const std::string& reason,
                const char* remedy) {
  for (const AccessNames::Use& use : uses) {
    report.Begin(kNotDefinedRule, Severity::Error, use.line);
    report.Add(reason, remedy);
  }
  report.Begin(kNotDefinedRule, Severity::Error, sight.line.number);
}

void JudgeNotDefined(const Sight& sight, Report& report) {
  if (!KnowsAllNames(sight)) {
    return;
  }
  const AccessNames& names = sight.above.names;
  AddMissing(sight, report, names.MissingViews(), "no line defines the view: whoever has it sees nothing at all",
             "define it with view, or correct its name");
  AddMissing(sight, report, names.MissingGroups(), "nobody is in this group: the line gives access to nobody",
             "put somebody into it with group, or correct its name");
  AddMissing(sight, report, names.MissingNames(), "no com2sec line gives this security name to a community: nobody has it",
             "define it with com2sec, or correct it");
}

void JudgePowerless(const Sight& sight, Report& report) {
  if (!KnowsAllNames(sight)) {
    return;
  }
  for (const AccessNames::Use& use : sight.above.names.Powerless()) {
    report.Begin(kNoRightsRule, Severity::Warning, use.line);
    report.Add("no group with rights has this name: the line lets nobody in",
               "put the name into a group with group, and give the group rights with access");
  }
}

// Four numbers of at most three digits, without a mask.
bool IsBareAddress(std::string_view text) {
  in_addr address = {};
  return ::inet_pton(AF_INET, std::string(text).c_str(), &address) == 1;
}

void JudgeSourceMisread(const Sight& sight, Report& report) {
  const AccessLine* const access = JudgedAccess(sight);
  if (access == nullptr || !access->problem.empty() || access->kind != AccessLine::Kind::Community) {
    return;
  }
  const std::vector<DirectiveWord>& words = sight.line.setting->words;
  const std::size_t source = sight.Keyword() == "authcommunity" ? 2 : 1;
  if (words.size() > source && words[source].text == "0.0.0.0") {
    report.Add("0.0.0.0 is the address of one host that nobody has: the line lets nobody in",
               "write default, or 0.0.0.0/0, for everybody");
  }
  if (words.size() > source + 1 && IsBareAddress(words[source + 1].text)) {
    report.Add("a second address: the daemon takes it for a subtree of that number, in which nothing is",
               "write a line of its own for each address");
  }
}

const char* ReasonOf(UserNames::Mismatch what) {
  switch (what) {
    case UserNames::Mismatch::Again:
      return "the user is made a second time: the daemon uses this line, and the passphrase of the first is wrong";
    case UserNames::Mismatch::Case:
      return "createUser makes a user whose name differs in capitals: the daemon takes them for two users";
    case UserNames::Mismatch::NoPrivacy:
      return "the line demands encryption, but createUser gives this user no key for it: the user is let in by no means";
  }
  return "";
}

void JudgeUsers(const Sight& sight, Report& report) {
  if (!KnowsAllNames(sight)) {
    return;
  }
  for (const UserNames::Found& found : sight.above.users.Mismatches()) {
    report.Begin(kUserRule, Severity::Error, found.line);
    report.Add(ReasonOf(found.what), "let createUser and rouser or rwuser say the same");
  }
}

}  // namespace

std::vector<Rule> AccessRules() {
  using S = Severity;
  return {
      {"access-rejected", S::Error, JudgeRejected},
      {"object-by-name", S::Warning, JudgeObjectName},
      {"source-by-name", S::Warning, JudgeSourceName},
      {kNotDefinedRule, S::Error, JudgeNotDefined},
      {kNoRightsRule, S::Warning, JudgePowerless},
      {"source-misread", S::Error, JudgeSourceMisread},
      {kUserRule, S::Error, JudgeUsers},
  };
}

}  // namespace devhost
