#ifndef DEVHOST_COMMANDS_PROBE_OUTPUT_H
#define DEVHOST_COMMANDS_PROBE_OUTPUT_H

#include <string>

#include "devhost/commands/ExitStatus.h"
#include "devhost/operations/Probe.h"

// What commands print about a probe.
namespace devhost {

// A line for each thing that was asked, with its verdict in front, and one that sums them up.
std::string ProbeText(const ProbeReport& report, const std::string& device);

// What is of interest of that where the probe is only a part of the command: what differs, or else the sum.
std::string ShortProbeText(const ProbeReport& report, const std::string& device);

// 0 as configured, 1 it differs, 2 nobody knows.
ExitStatus StatusOf(ProbeReport::Verdict verdict);

}  // namespace devhost

#endif
