// Any text as a document of the contract. What is found lies within the text. What the strict reader takes, the lenient one
// takes, too, and it reads the same when it has been written.
#include <algorithm>

#include "devhost/contract/Validate.h"
#include "devhost/xml/StrictXml.h"
#include "fuzz/support/Input.h"

namespace {

void RequireSameEverywhere(const std::string& text) {
  std::string written;
  try {
    written = devhost::XmlText(devhost::ReadStrictXml(text), devhost::XmlStyle::Compact);
  } catch (const devhost::XmlError&) {
    return;
  }
  fuzz::RequireSame("read again", devhost::XmlText(devhost::ReadStrictXml(written), devhost::XmlStyle::Compact), written);
  fuzz::Require(!devhost::ReadXml(text).name.empty(), "the lenient reader has read nothing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).Rest();
  RequireSameEverywhere(text);
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  for (const bool asReply : {false, true}) {
    for (const devhost::Mismatch& found : devhost::ValidateDocument(text, asReply)) {
      fuzz::Require(found.line >= 1 && found.line <= lines, "a line that the text does not have");
      fuzz::Require(!found.reason.empty() && !found.remedy.empty(), "a mismatch without words");
    }
  }
  return 0;
}
