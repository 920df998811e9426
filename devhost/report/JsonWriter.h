#ifndef DEVHOST_REPORT_JSON_WRITER_H
#define DEVHOST_REPORT_JSON_WRITER_H

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "devhost/report/Reporter.h"
#include "devhost/system/Output.h"

namespace devhost {

// What happened in a host, as the object of such a line without its numbers.
nlohmann::ordered_json OccurrenceObject(const Occurrence& occurrence);

// What happens as one JSON object on one line, without a line feed; docs/scripts.md has the members. Bytes that are not
// UTF-8 become U+FFFD. `number` becomes the member "n".
std::string JsonLine(std::size_t number, const Occurrence& occurrence, const Where& where);
std::string JsonLine(std::size_t number, const ScriptOccurrence& occurrence, const Where& where);

// Writes what happens for programs, as such lines, numbered from 1.
class JsonWriter : public Reporter {
 public:
  // The output must outlive the writer.
  explicit JsonWriter(Output& output) : m_output(output) {}

  void Report(const Occurrence& occurrence, const Where& where) override {
    m_output.Write(JsonLine(++m_count, occurrence, where) + "\n");
  }
  void Report(const ScriptOccurrence& occurrence, const Where& where) override {
    m_output.Write(JsonLine(++m_count, occurrence, where) + "\n");
  }
  bool Failed() const override { return m_output.Error() != 0; }

 private:
  Output& m_output;
  std::size_t m_count = 0;
};

}  // namespace devhost

#endif
