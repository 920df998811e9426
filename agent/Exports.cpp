#include "agent/Exports.h"

#include "agent/SNMPConfigurationAgent.h"

const char* const versionString = "1.0.0.0";

DriverCreationFunc GetCreationFunc() {
  return &SNMPConfigurationAgent::Create;
}
