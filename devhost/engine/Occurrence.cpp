#include "devhost/engine/Occurrence.h"

namespace devhost {

std::string DriverOf(const Occurrence& occurrence) {
  std::string names = occurrence.driverName;
  for (const std::string& candidate : occurrence.candidates) {
    names += (names.empty() ? "" : "|") + candidate;
  }
  return names;
}

std::string TextOf(const Occurrence& occurrence) {
  switch (occurrence.kind) {
    case Occurrence::Kind::Command:
    case Occurrence::Kind::Event:
      return TextOf(occurrence.name, occurrence.parameters);
    case Occurrence::Kind::Manners:
    case Occurrence::Kind::Status:
      return occurrence.text + (occurrence.call.empty() ? "" : ", during " + occurrence.call);
    default:
      return occurrence.text;
  }
}

}  // namespace devhost
