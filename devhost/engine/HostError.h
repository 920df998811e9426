#ifndef DEVHOST_ENGINE_HOST_ERROR_H
#define DEVHOST_ENGINE_HOST_ERROR_H

#include <stdexcept>
#include <string>

#include "devhost/driver/DriverEntry.h"

namespace devhost {

// What could not be done. `what()` says in one line what, where and what is allowed; the fields give a program the same in
// parts. The host goes on working.
class HostError : public std::runtime_error {
 public:
  // No driver is concerned: the text is the whole line.
  explicit HostError(const std::string& line, const std::string& underWay = "") : HostError(line, nullptr, underWay, line) {}
  // `driver` may be null: none is known.
  HostError(const std::string& line, const DriverEntry* driver, const std::string& underWay, const std::string& problem)
      : std::runtime_error(line),
        driverId(driver != nullptr ? driver->id : 0),
        driverName(driver != nullptr ? driver->name : ""),
        call(underWay),
        text(problem) {}
  // The same error with its consequence at the end of the line.
  HostError(const HostError& error, const std::string& consequence)
      : std::runtime_error(error.what() + consequence),
        driverId(error.driverId),
        driverName(error.driverName),
        call(error.call),
        text(error.text + consequence) {}

  unsigned long driverId;  // of the driver concerned; 0 when driverName is empty
  std::string driverName;  // its name; empty when none is known
  std::string call;        // what was under way: command "X", creation, Initialize, ...; empty when that is not known
  std::string text;        // what went wrong, without the driver and the call that the line may begin with
};

}  // namespace devhost

#endif
