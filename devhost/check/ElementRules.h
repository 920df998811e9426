#ifndef DEVHOST_CHECK_ELEMENT_RULES_H
#define DEVHOST_CHECK_ELEMENT_RULES_H

#include <set>
#include <string>

#include "devhost/check/Report.h"
#include "devhost/xml/XmlReader.h"

// What the agent makes of a device settings element itself: it reads the children that it knows, and an element is the whole
// state of a device, so a child that it does not find empties a setting or switches it off.
namespace devhost {

// Adds a finding for each element that the agent would pass over, because it does not know the name or has read another one
// of that name, and for each switch that is neither on nor off.
void JudgeElements(const XmlElement& settings, Report& report);

// Adds one finding that names the settings that are missing, and what becomes of them. With `held`, only settings with these
// names count: a device loses nothing that it does not hold.
void JudgeMissing(const XmlElement& settings, const std::set<std::string>* held, Report& report);

// Adds a finding when no device is named, or not plainly.
void JudgeDeviceId(const XmlElement& settings, Report& report);

}  // namespace devhost

#endif
