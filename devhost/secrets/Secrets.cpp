#include "devhost/secrets/Secrets.h"

#include <algorithm>

#include "devhost/secrets/SecretOptions.h"
#include "devhost/secrets/SecretPlaces.h"
#include "devhost/secrets/SecretXml.h"

namespace devhost {

namespace {

// Returns the secrets behind options, with their places among all words.
std::vector<SecretWord> OptionSecrets(const std::vector<std::string>& words) {
  const auto command = std::find_if(words.begin(), words.end(), IsSnmpCommand);
  std::vector<SecretWord> secrets = SecretOptions({command, words.end()});
  for (SecretWord& secret : secrets) {
    secret.index += static_cast<std::size_t>(command - words.begin());
  }
  return secrets;
}

bool HoldsBlank(const std::string& word) {
  return word.find_first_of(" \t\n") != std::string::npos;
}

}  // namespace

std::string MaskConfigLine(std::string_view line) {
  return Masked(line, SecretPlaces(line));
}

std::string MaskConfigText(std::string_view text) {
  return Masked(text, SecretPlacesInText(text));
}

std::string MaskXml(std::string_view xml) {
  return Masked(xml, SecretPlacesInXml(xml));
}

std::vector<std::string> MaskCommandLine(const std::vector<std::string>& words) {
  std::vector<std::string> masked = words;
  for (const SecretWord& secret : OptionSecrets(words)) {
    std::string& word = masked[secret.index];
    if (word.size() > secret.offset) {
      word.replace(secret.offset, std::string::npos, kMask);
    }
  }
  for (std::string& word : masked) {
    // "--rocommunity=public" is a line of a configuration. A word with blanks is a shell's command, or such a line.
    const std::size_t equals = word.compare(0, 2, "--") == 0 ? word.find('=') : std::string::npos;
    if (equals != std::string::npos) {
      const std::string line = word.substr(2, equals - 2) + " " + word.substr(equals + 1);
      std::string shown = MaskConfigLine(line);
      word = shown == line ? word : "--" + shown.replace(equals - 2, 1, "=");
    }
    if (HoldsBlank(word)) {
      word = MaskConfigText(word);
    }
  }
  return masked;
}

std::vector<std::string> SecretsInCommandLine(const std::vector<std::string>& words) {
  std::vector<std::string> secrets;
  for (const SecretWord& secret : OptionSecrets(words)) {
    secrets.push_back(words[secret.index].substr(secret.offset));
  }
  for (const std::string& word : words) {
    if (HoldsBlank(word)) {
      for (const SecretPlace& place : SecretPlacesInText(word)) {
        secrets.push_back(word.substr(place.begin, place.end - place.begin));
      }
    }
  }
  return secrets;
}

}  // namespace devhost
