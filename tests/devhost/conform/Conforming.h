#ifndef TESTS_DEVHOST_CONFORM_CONFORMING_H
#define TESTS_DEVHOST_CONFORM_CONFORMING_H

#include <string>
#include <vector>

#include "devhost/conform/Conform.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// A profile that claims all there is to claim, in a file, because the processes of the checks read it again.
inline const testsupport::ScratchFolder& Profiles() {
  static const testsupport::ScratchFolder folder;
  return folder;
}

inline std::string SkeletonModule(const std::string& fault) {
  return CONFORM_MODULE_FOLDER "/" + fault + ".so";
}

inline Conformance ConformanceOf(const std::string& module, const std::string& profile) {
  Conformance conformance;
  conformance.module = module;
  conformance.agent = MODULE_FOLDER "/snmp_configuration_agent.so";
  conformance.program = DEVHOST_PROGRAM;
#ifdef CONFORM_EMULATOR
  conformance.runner = {CONFORM_EMULATOR};
#endif
  conformance.profileFile = Profiles().Write("profile.xml", profile);
  conformance.profile = ReadProfile(ReadNamedText(conformance.profileFile));
  conformance.seed = 7;
  conformance.sessionTime = std::chrono::seconds(1);
  return conformance;
}

// The skeleton with one fault, which claims everything.
inline Conformance SkeletonConformance(const std::string& fault) {
  return ConformanceOf(SkeletonModule(fault),
                       "<conform><claim name='keeps-state'/><claim name='safe-actions'/><claim name='local-file'/>"
                       "<claim name='withdraws' out='Withdraw' back='Announce'/>"
                       "<claim name='goes-off-line' out='SetOnline online=false' back='SetOnline online=true'/>"
                       "</conform>");
}

// The same for whoever expects a finding, also of random sessions, which end with the first one: a busy machine plays few a
// second.
inline Conformance UntilAFinding(const std::string& fault) {
  Conformance conformance = SkeletonConformance(fault);
  conformance.sessionTime = std::chrono::minutes(2);
  return conformance;
}

inline std::vector<const Check*> AllChecks() {
  std::vector<const Check*> checks;
  checks.reserve(Checks().size());
  for (const Check& check : Checks()) {
    checks.push_back(&check);
  }
  return checks;
}

inline std::vector<Outcome> OutcomesOf(const Conformance& conformance,
                                       const std::vector<const Check*>& checks = AllChecks()) {
  return RunChecks(conformance, checks, [](const Outcome&) {});
}

// One check of a module.
inline Outcome OutcomeOf(const Conformance& conformance, const std::string& id) {
  return OutcomesOf(conformance, {FindCheck(id)}).front();
}

}  // namespace devhost

#endif
