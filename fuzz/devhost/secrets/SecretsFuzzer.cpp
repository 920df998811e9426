// Texts with secrets in all encodings and kinds of damage, as the input chooses: no secret comes out. Nor does one that
// stands beside any text.
#include "devhost/secrets/Masker.h"
#include "devhost/snmpd/Directive.h"
#include "devhost/text/Words.h"
#include "fuzz/support/Input.h"
#include "tests/support/HostileSecrets.h"

namespace {

constexpr char kSecret[] = "Qx7secret";

void CheckDirective(const std::string& line) {
  const auto directive = devhost::ReadDirective(line);
  if (!directive) {
    return;
  }
  fuzz::RequireSame("rest", line.substr(directive->restBegin, directive->rest.size()), directive->rest);
  std::size_t end = directive->restBegin;
  for (const devhost::DirectiveWord& word : directive->words) {
    fuzz::Require(word.begin >= end && word.end > word.begin && word.end <= line.size(),
                  "words in each other, empty or outside");
    fuzz::Require(word.text.size() <= word.end - word.begin, "a word that grew");
    end = word.end;
  }
}

// Secrets in texts that the input makes.
void CheckChosen(fuzz::Input& input) {
  HostileSecrets secrets([&input](std::size_t count) { return input.Byte() % count; });
  devhost::Masker masker(false);
  fuzz::RequireSame("a configuration", secrets.FindIn(masker.Config(secrets.Config())), "");
  fuzz::RequireSame("XML", secrets.FindIn(masker.Xml(secrets.Xml())), "");
  const std::string value = secrets.Value();
  masker.SettingValue("communityRead", value);
  const std::string message = secrets.Message(value);
  fuzz::RequireSame("a message", secrets.FindIn(masker.Text(message)), "");
  fuzz::RequireSame("a quoted message", secrets.FindIn(masker.Text(devhost::Quoted(message))), "");
}

void RequireHidden(const std::string& shown, const char* what) {
  fuzz::Require(shown.find(kSecret) == std::string::npos, what);
}

// A secret beside any text that does not hold it.
void CheckAnyText(const std::string& text) {
  CheckDirective(text.substr(0, text.find('\n')));
  if (text.find(kSecret) != std::string::npos) {
    return;
  }
  const std::string setting = std::string("rocommunity ") + kSecret;
  devhost::Masker masker(false);
  RequireHidden(masker.Config(setting + " " + text), "a secret in front of a line's rest");
  RequireHidden(masker.Config(setting + "\n" + text), "a secret above a text");
  RequireHidden(masker.Config(text + "\n" + setting), "a secret below a text");
  RequireHidden(masker.Xml("<setting><community>" + std::string(kSecret) + "</community>" + text + "</setting>"),
                "a secret in XML");
  RequireHidden(masker.Text(text + kSecret + text), "a known secret");
  devhost::Masker other(false);
  RequireHidden(other.Text(text + "\n" + setting + text), "a line of free text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  if (input.Flag()) {
    CheckChosen(input);
  } else {
    CheckAnyText(input.Rest());
  }
  return 0;
}
