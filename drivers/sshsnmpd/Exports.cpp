#include "drivers/sshsnmpd/SshSnmpdDevice.h"
#include "host/HostApi.h"
#include "host/IDriver.h"

extern "C" {

H7_HOST_API DriverCreationFunc GetCreationFunc();
H7_HOST_API extern const char* const versionString;

DriverCreationFunc GetCreationFunc() {
  return &drivers::SshSnmpdDevice::Create;
}

const char* const versionString = SNMP_DRIVER_VERSION;

}  // extern "C"
