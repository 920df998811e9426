#include <nlohmann/json.hpp>
#include <stdexcept>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/commands/ProbeOutput.h"
#include "devhost/commands/RotateOptions.h"
#include "devhost/json/ChangeObject.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;

constexpr char kFooter[] =
    "A new community with an overlap. --read and --write give the device new ones through the\n"
    "agent, as \"devhost apply\" does; the old ones stay valid, in lines of their own below the\n"
    "section of the agent. --status asks the daemon whether all of them work. --finish takes the\n"
    "old ones away when the daemon answers to the new ones; with --no-probe, without asking it.\n"
    "--abort puts the old ones back. Both then ask the daemon whether it still lets somebody in by\n"
    "those that have gone. A community is read from a file, without its last line feed, and never\n"
    "from the command line, which others can see. With - for both, standard input has two lines,\n"
    "the read community first. The last step can be said again: that changes nothing, or makes up\n"
    "for a restart that is due.\n"
    "\n"
    "With --file, one snmpd.conf of this machine takes the place of the device. --restart-command\n"
    "runs a program without a shell when the file was changed.\n"
    "\n"
    "Exit status: 0 done; 1 the change has failed, the daemon does not answer to a community, or\n"
    "still answers to one that has gone, or, with --dry-run, something would change; 2 nothing was\n"
    "changed: wrong usage, a rotation that cannot be started or ended, a new community that is not\n"
    "proven, or nobody said yes.\n"
    "\n"
    "Example: give the kitchen the read community in the file new, and end that a week later.\n"
    "\n"
    "  devhost rotate --project project.xml kitchen --read new --yes\n"
    "  devhost rotate --project project.xml kitchen --finish --yes";

ProbeMeans MeansOf(const Arguments& arguments) {
  ProbeMeans means;
  means.address = arguments.Text(kAddress);
  return means;
}

ExitStatus ShowStatus(const Target& target, const Arguments& arguments, Console& console) {
  const std::string device = OneLine(target.chosen.device.name);
  const RotationLook look = LookAtRotation(target, MeansOf(arguments));
  if (arguments.Has(kChangeJson)) {
    ordered_json object = {{"device", target.chosen.device.name}, {"open", look.isOpen}};
    object.update(ProbeObject(look.probe));
    PrintObject(object, console.Out());
    return StatusOf(look.probe.verdict);
  }
  console.Out().Write(look.isOpen ? "a rotation is open on " + device + "\n" : "no rotation is open on " + device + "\n");
  for (const std::string& message : look.probe.messages) {
    console.Complain(message);
  }
  console.Out().Write(ProbeText(look.probe, device));
  return StatusOf(look.probe.verdict);
}

// Throws RotationError unless the daemon answers to the communities that are to stay.
void RequireProof(const Target& target, const Arguments& arguments) {
  const RotationLook look = LookAtRotation(target, MeansOf(arguments));
  if (look.isOpen && look.probe.verdict == ProbeReport::Verdict::Unknown) {
    throw RotationError("nobody knows whether the new community works: " +
                        (look.probe.messages.empty() ? "" : look.probe.messages.back()) + "; allowed: --no-probe");
  }
  for (const ProbeItem& item : look.probe.items) {
    if (item.verdict == ProbeItem::Verdict::Differs && item.name.compare(0, 4, "old ") != 0) {
      throw RotationError("the daemon at " + look.probe.address + " does not answer to the new " + item.name +
                          "; allowed: --no-probe");
    }
  }
}

Change ChangeOf(const Target& target, const Arguments& arguments) {
  if (arguments.Has(kFinish)) {
    if (!arguments.Has(kNoProbe)) {
      RequireProof(target, arguments);
    }
    return FinishRotation(target);
  }
  if (arguments.Has(kAbort)) {
    return AbortRotation(target);
  }
  return StartRotation(target, ReadCommunities(arguments));
}

// Asks whether the communities that leave with the end of a rotation have left, too.
ProbeMore ProbeMoreOf(const Target& target, const Arguments& arguments) {
  if (!arguments.Has(kFinish) && !arguments.Has(kAbort)) {
    return nullptr;
  }
  const RotationEnd end = arguments.Has(kFinish) ? RotationEnd::Finish : RotationEnd::Abort;
  return [target, end, left = LeavingCommunities(target, end), means = MeansOf(arguments)](ProbeReport& report) {
    ProbeLeft(target, means, left, end, report);
  };
}

std::vector<std::string> WhatStays(const Target& target, const Arguments& arguments) {
  return arguments.Has(kFinish)  ? StayingPlaces(target, LeavingCommunities(target, RotationEnd::Finish), "old")
         : arguments.Has(kAbort) ? StayingPlaces(target, LeavingCommunities(target, RotationEnd::Abort), "new")
                                 : StayingPlaces(target, {}, "");
}

ExitStatus Rotate(const Arguments& arguments, Console& console) {
  return GuardStops(arguments, console, PrintStopOfChange(TargetName(arguments), console), [&](Stage& stage) {
    RequireOneTarget(arguments);
    const Target target = ReadTarget(arguments);
    if (arguments.Has(kStatus)) {
      stage = Stage::Plan;
      return ShowStatus(target, arguments, console);
    }
    RequireStep(arguments);
    RequireAnswer(arguments, console);
    Change change = ChangeOf(target, arguments);
    change.accepted = AcceptedRules(arguments);
    change.restartCommand = RestartWords(arguments);
    const std::vector<std::string> staying = WhatStays(target, arguments);
    return MakeChange(
        change, [&staying](const Plan&) { return staying; }, arguments, console, stage, ProbeMoreOf(target, arguments));
  });
}

}  // namespace

Command MakeRotate() {
  return {"rotate",
          "Give a device a new community, and keep the old one valid for a while",
          {kDeviceUnlessFile,
           kProjectUnlessFile,
           kModuleFolder,
           kDeviceState,
           kFile,
           kSnapshots,
           kRead,
           kWrite,
           kStatus,
           kFinish,
           kAbort,
           kAddress,
           kAccept,
           kDryRun,
           kDiff,
           kYes,
           kRestart,
           kNoProbe,
           kChangeJson,
           kShowSecrets},
          kFooter,
          &Rotate};
}

}  // namespace devhost
