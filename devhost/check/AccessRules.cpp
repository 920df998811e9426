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

}  // namespace

std::vector<Rule> AccessRules() {
  using S = Severity;
  return {
      {"access-rejected", S::Error, JudgeRejected},    {"object-by-name", S::Warning, JudgeObjectName},
      {"source-by-name", S::Warning, JudgeSourceName}, {kNotDefinedRule, S::Error, JudgeNotDefined},
      {kNoRightsRule, S::Warning, JudgePowerless},
  };
}

}  // namespace devhost
