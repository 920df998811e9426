#include "devhost/operations/Probe.h"

#include <nlohmann/json.hpp>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/commands/ProbeOutput.h"
#include "devhost/json/ChangeObject.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;

const CommandOption kNoTraps{"--no-traps", "", "Send no test traps"};
const CommandOption kProbeJson{"--json", "", "Print one JSON object: device, address, verdict, items, messages"};

constexpr char kFooter[] =
    "Contact, name and location as the daemon serves them; whether the communities work; whether\n"
    "somebody listens on the AgentX socket; and a test trap from this machine to each target.\n"
    "\"sent\" means that nobody objected: whether a trap is received, only the receiver knows.\n"
    "Nothing is changed: the write community is tried on an object that nobody can set.\n"
    "\n"
    "The project says where the daemon is: on the host of a driver with a host, on the port of\n"
    "127.0.0.1 that local_snmpd.so is given. Elsewhere --address is needed. With --file, one\n"
    "snmpd.conf of this machine takes the place of the device: its daemon is on this machine, where\n"
    "the agentaddress lines of the file say, or on port 161.\n"
    "\n"
    "Exit status: 0 as configured; 1 something differs, or a trap cannot be sent; 2 wrong usage,\n"
    "there is no daemon to ask, or it does not answer.\n"
    "\n"
    "Example: does the kitchen serve what it is configured to?\n"
    "\n"
    "  devhost probe --project project.xml kitchen --address kitchen.example";

// `stage` says where it was that nobody knows.
void PrintJson(const ProbeReport& report, const std::string& device, Stage stage, Output& out) {
  ordered_json object = {{"device", device}};
  object.update(ProbeObject(report));
  if (report.verdict == ProbeReport::Verdict::Unknown) {
    object["stage"] = NameOf(stage);
    object["reason"] = report.messages.empty() ? "" : report.messages.back();
  }
  PrintObject(object, out);
}

ExitStatus Probe(const Arguments& arguments, Console& console) {
  const PrintStop printStop = [&](Stage stage, const std::string& reason) {
    ProbeReport unknown;
    unknown.messages = {reason};
    PrintJson(unknown, TargetName(arguments), stage, console.Out());
  };
  return GuardStops(arguments, console, printStop, [&](Stage& stage) {
    RequireOneTarget(arguments);
    const Target target = ReadTarget(arguments);
    ProbeMeans means;
    means.address = arguments.Text(kAddress);
    means.sendsTraps = !arguments.Has(kNoTraps);
    stage = Stage::Plan;
    const ProbeReport report = ProbeDevice(target, means);
    if (arguments.Has(kProbeJson)) {
      PrintJson(report, target.chosen.device.name, stage, console.Out());
    } else {
      for (const std::string& message : report.messages) {
        console.Complain(message);
      }
      console.Out().Write(ProbeText(report, OneLine(target.chosen.device.name)));
    }
    return StatusOf(report.verdict);
  });
}

}  // namespace

Command MakeProbe() {
  return {"probe",
          "Ask the daemon of a device what it serves, and try its trap targets",
          {kDeviceUnlessFile, kProjectUnlessFile, kModuleFolder, kDeviceState, kFile, kAddress, kNoTraps, kProbeJson,
           kShowSecrets},
          kFooter,
          &Probe};
}

}  // namespace devhost
