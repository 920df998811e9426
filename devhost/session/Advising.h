#ifndef DEVHOST_SESSION_ADVISING_H
#define DEVHOST_SESSION_ADVISING_H

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/secrets/Masker.h"

namespace devhost {

// What will surprise somebody who gives these settings to the device: the rules of "devhost advise" and, as warnings, the
// contract between tool and agent. Each finding names the `field` that it is about, as ShownSettings calls it, and
// "trapTargets[2].port"; "" for all of them. `now` is what the device holds. Throws RequestError for a text that cannot
// stand in XML.
nlohmann::ordered_json AdviseOnFields(const DeviceAnswers& settings, const DeviceAnswers& now, const Masker& secrets);

// Findings without what the session knows to be secret: a rule quotes the words of a line, and knows the communities of that
// line alone.
std::vector<Finding> Shown(std::vector<Finding> findings, const Masker& secrets);

}  // namespace devhost

#endif
