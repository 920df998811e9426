#ifndef DEVHOST_JSON_CHANGE_OBJECT_H
#define DEVHOST_JSON_CHANGE_OBJECT_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "devhost/operations/Apply.h"
#include "devhost/operations/Drift.h"
#include "devhost/operations/Probe.h"

namespace devhost {

// What has become of a change, in a word: "unchanged", "would-change", "stopped", "changed", "waits", "failed".
const char* VerdictOf(const Plan& plan);
const char* VerdictOf(Applied::Verdict verdict);

// A change of a device: device, verdict, changed, snapshot, difference, settings, findings, messages; with the daemon that
// was asked, probe. `applied` and `probe` may be null. Whoever knows that it has stopped adds stage and reason.
nlohmann::ordered_json ChangeObject(const std::string& device, const Plan& plan, const Applied* applied,
                                    const ProbeReport* probe, const std::vector<std::string>& messages);

// A probe: address, verdict, items, messages.
nlohmann::ordered_json ProbeObject(const ProbeReport& report);
const char* NameOf(ProbeReport::Verdict verdict);

// A drift: device, verdict, section, overridden, snapshot, difference, settings, messages.
nlohmann::ordered_json DriftObject(const Drift& drift, const std::string& device);

}  // namespace devhost

#endif
