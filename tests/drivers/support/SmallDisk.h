#ifndef TESTS_DRIVERS_SUPPORT_SMALL_DISK_H
#define TESTS_DRIVERS_SUPPORT_SMALL_DISK_H

#include <string>

// Mounts a file system of 64 kB on the folder that only the calling process sees: to be called in a child. False where the
// system does not let it.
bool MountSmallDisk(const std::string& path);

#endif
