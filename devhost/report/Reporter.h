#ifndef DEVHOST_REPORT_REPORTER_H
#define DEVHOST_REPORT_REPORTER_H

#include <cstddef>
#include <string>

#include "devhost/engine/Occurrence.h"
#include "devhost/report/ScriptOccurrence.h"

namespace devhost {

class Masker;

// What the script is doing when something happens.
struct Where {
  std::string text;      // for people: "FILE:LINE", "at the start", "at the end"
  std::size_t line = 0;  // of the script; 0 at its start and end
};

// Makes visible what happens in a host and in the script that is played on it, in order. What it is given holds no secrets.
class Reporter {
 public:
  virtual ~Reporter() = default;
  // Both are called from inside the drivers' calls, too, and must not throw.
  virtual void Report(const Occurrence& occurrence, const Where& where) = 0;
  virtual void Report(const ScriptOccurrence& occurrence, const Where& where) = 0;
  // Whether nobody sees any more what is reported.
  virtual bool Failed() const = 0;
};

// What happened in a host, without its secrets. Those of a reply are learnt first.
Occurrence Masked(const Occurrence& occurrence, Masker& secrets);

}  // namespace devhost

#endif
