#include "devhost/report/Reporter.h"

#include "devhost/secrets/Masker.h"

namespace devhost {

Occurrence Masked(const Occurrence& occurrence, Masker& secrets) {
  using Kind = Occurrence::Kind;
  if (occurrence.kind == Kind::Reply) {
    secrets.LearnFromXml(occurrence.text);
  }
  const bool isXml = occurrence.kind == Kind::Reply || occurrence.kind == Kind::Notification;
  Occurrence masked = occurrence;
  masked.parameters = secrets.CommandParameters(occurrence.parameters);
  masked.call = secrets.Text(occurrence.call);
  masked.text = isXml ? secrets.Xml(occurrence.text) : secrets.Text(occurrence.text);
  return masked;
}

}  // namespace devhost
