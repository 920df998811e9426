#ifndef DEVHOST_PREVIEW_DEVICE_QUESTIONS_H
#define DEVHOST_PREVIEW_DEVICE_QUESTIONS_H

#include <string>

#include "devhost/preview/DeviceAnswers.h"

class ISupportSNMP;

namespace devhost {

// What a device is asked of all that the agent would ask before it writes the device's file.
enum class Questions { Everything, Settings, File };

// Asks a device. Calls no setter, no CopyTo and no action. What the device throws becomes the problem of the answers.
void AskDevice(ISupportSNMP& device, Questions questions, DeviceAnswers& answers);

// What the exception that is being handled says of an operation of a device, for the problem of its answers.
std::string WhatCameOutOf(const std::string& operation);

}  // namespace devhost

#endif
