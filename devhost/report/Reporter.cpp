#include "devhost/report/Reporter.h"

#include "devhost/secrets/Masker.h"

namespace devhost {

Occurrence Masked(const Occurrence& occurrence, Masker& secrets) {
  using Kind = Occurrence::Kind;
  const bool isXml = occurrence.kind == Kind::Reply || occurrence.kind == Kind::Notification;
  Occurrence masked = occurrence;
  masked.parameters = secrets.Fields(occurrence.parameters);
  masked.call = secrets.Text(occurrence.call);
  // What a driver logs, and what it throws. The path of a module is the project's own.
  const bool isPath = occurrence.kind == Kind::Load || occurrence.kind == Kind::Unload;
  masked.text = isPath  ? occurrence.text
                : isXml ? secrets.Xml(occurrence.text)
                        : secrets.Text(occurrence.text, WrittenBy::Others);
  return masked;
}

}  // namespace devhost
