#ifndef DEVHOST_REPORT_JSON_WRITER_H
#define DEVHOST_REPORT_JSON_WRITER_H

#include <cstddef>

#include "devhost/report/Reporter.h"
#include "devhost/system/Output.h"

namespace devhost {

// Writes what happens for programs: one JSON object on each line, numbered from 1. docs/scripts.md has the fields. Bytes
// that are not UTF-8 become U+FFFD.
class JsonWriter : public Reporter {
 public:
  // The output must outlive the writer.
  explicit JsonWriter(Output& output) : m_output(output) {}

  void Report(const Occurrence& occurrence, const Where& where) override;
  void Report(const ScriptOccurrence& occurrence, const Where& where) override;
  bool Failed() const override { return m_output.Error() != 0; }

 private:
  Output& m_output;
  std::size_t m_count = 0;
};

}  // namespace devhost

#endif
