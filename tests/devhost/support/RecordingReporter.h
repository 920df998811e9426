#ifndef TESTS_DEVHOST_SUPPORT_RECORDING_REPORTER_H
#define TESTS_DEVHOST_SUPPORT_RECORDING_REPORTER_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/report/Reporter.h"

// Keeps what is reported, in order: what a script does, and what happens in its host.
class RecordingReporter : public devhost::Reporter {
 public:
  void Report(const devhost::Occurrence& occurrence, const devhost::Where& where) override {
    host.push_back(occurrence);
    hostPlaces.push_back(where.text);
  }
  void Report(const devhost::ScriptOccurrence& occurrence, const devhost::Where& where) override {
    script.push_back(occurrence);
    lines.push_back(where.line);
  }
  bool Failed() const override { return host.size() + script.size() >= failsAfter; }

  // What a script did of one kind.
  std::vector<devhost::ScriptOccurrence> Of(devhost::ScriptOccurrence::Kind kind) const {
    std::vector<devhost::ScriptOccurrence> some;
    for (const devhost::ScriptOccurrence& occurrence : script) {
      if (occurrence.kind == kind) {
        some.push_back(occurrence);
      }
    }
    return some;
  }

  std::vector<devhost::Occurrence> host;
  std::vector<std::string> hostPlaces;  // one for each of `host`
  std::vector<devhost::ScriptOccurrence> script;
  std::vector<std::size_t> lines;  // one for each of `script`
  std::size_t failsAfter = static_cast<std::size_t>(-1);
};

#endif
