#ifndef AGENT_EXPORTS_H
#define AGENT_EXPORTS_H

#include "host/HostApi.h"
#include "host/IDriver.h"

// All that the module exports to the host.
extern "C" {

// Returns `SNMPConfigurationAgent::Create`.
H7_HOST_API DriverCreationFunc GetCreationFunc();

// The version of the agent; also written into its persisted state.
H7_HOST_API extern const char* const versionString;
}

#endif
