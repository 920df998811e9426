#ifndef DRIVERS_HOSTPROBE_STATE_CHECKS_H
#define DRIVERS_HOSTPROBE_STATE_CHECKS_H

#include <string>

#include "host/INode.h"
#include "host/auto_com.h"

namespace drivers {

class Report;

// The state that a probe keeps: texts that a host may lose on their way through a file.
h7::auto_com<H7XML::INode> MakeState();

// What `state`, which came back from the host, has lost; nothing when it is whole.
std::string WhatIsWrongWithState(const H7XML::INode& state);

// Compares the sample values of the probe's configuration, if it has them.
void CheckConfiguration(Report& report, const H7XML::INode& config);

}  // namespace drivers

#endif
