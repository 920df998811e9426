#ifndef DRIVERS_HOSTPROBE_XML_CHECKS_H
#define DRIVERS_HOSTPROBE_XML_CHECKS_H

namespace drivers {

class Report;

// Checks how the host makes, changes and walks XML nodes. Nothing but `report` remains afterwards. Each check uses as few
// operations as it can, so that one wrong operation breaks one line.
void CheckXml(Report& report);

// Checks who owns nodes and texts, and for how long.
void CheckXmlOwnership(Report& report);

// Checks how texts are read as truth values and numbers.
void CheckTypedReaders(Report& report);

}  // namespace drivers

#endif
