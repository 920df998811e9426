// Cuts any text into directives and masks it. A certain secret never comes out.
#include "devhost/secrets/KnownSecrets.h"
#include "devhost/secrets/SecretPlaces.h"
#include "devhost/secrets/SecretXml.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/snmpd/Directive.h"
#include "fuzz/support/Input.h"

namespace {

constexpr char kSecret[] = "Qx7secret";

bool ShowsSecret(const std::string& text) {
  return text.find(kSecret) != std::string::npos;
}

void CheckPlaces(const std::vector<devhost::SecretPlace>& places, std::size_t size) {
  std::size_t end = 0;
  for (const devhost::SecretPlace& place : places) {
    fuzz::Require(place.begin >= end && place.end > place.begin && place.end <= size,
                  "secrets that overlap, are empty or lie outside");
    end = place.end;
  }
}

void CheckDirective(const std::string& line) {
  const auto directive = devhost::ReadDirective(line);
  if (!directive) {
    return;
  }
  fuzz::RequireSame("rest", line.substr(directive->restBegin, directive->rest.size()), directive->rest);
  std::size_t end = directive->restBegin;
  for (const devhost::DirectiveWord& word : directive->words) {
    fuzz::Require(word.begin >= end && word.end > word.begin && word.end <= line.size(),
                  "words that overlap, are empty or lie outside");
    fuzz::Require(word.text.size() <= word.end - word.begin, "a word that is longer than its place");
    end = word.end;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).Rest();
  const std::string line = text.substr(0, text.find('\n'));
  CheckDirective(line);
  CheckPlaces(devhost::SecretPlaces(line), line.size());
  CheckPlaces(devhost::SecretPlacesInText(text), text.size());
  CheckPlaces(devhost::SecretPlacesInXml(text), text.size());
  devhost::SecretsInXml(text);

  if (!ShowsSecret(text)) {
    const std::string setting = std::string("rocommunity ") + kSecret;
    const std::string element = std::string("<community>") + kSecret + "</community>";
    fuzz::Require(!ShowsSecret(devhost::MaskConfigLine(setting + " " + line)), "the line shows a secret");
    fuzz::Require(!ShowsSecret(devhost::MaskConfigText(setting + "\n" + text)), "the text shows a secret above it");
    fuzz::Require(!ShowsSecret(devhost::MaskConfigText(text + "\n" + setting)), "the text shows a secret below it");
    fuzz::Require(!ShowsSecret(devhost::MaskXml(element + text)), "the XML shows a secret");
    devhost::KnownSecrets known;
    known.Learn(kSecret);
    fuzz::Require(!ShowsSecret(known.Mask(text + " " + kSecret)), "the text shows a known secret");
  }
  return 0;
}
