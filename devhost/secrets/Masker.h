#ifndef DEVHOST_SECRETS_MASKER_H
#define DEVHOST_SECRETS_MASKER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devhost/secrets/ConfigSecrets.h"
#include "devhost/secrets/KnownSecrets.h"
#include "devhost/text/Parameters.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

// Shows texts that may hold communities, passphrases and keys. What is known to be harmless is shown. All else is *****, and
// is remembered: where a later text has it, it is ***** there, too. What is empty stays empty. To learn the secrets of a
// text that is not shown, mask it and drop the result.
class Masker {
 public:
  // With `showSecrets`, every text is shown as it is and nothing is remembered.
  explicit Masker(bool showSecrets) : m_showSecrets(showSecrets) {}

  bool ShowsSecrets() const { return m_showSecrets; }

  // A text that is a secret. Where it has one to three letters, it is hidden as a word only, and in messages of our own only
  // where they quote it.
  std::string Secret(std::string_view text);
  // The value of a device's setting of that name.
  std::string SettingValue(std::string_view name, std::string_view value);
  // The parameters of a command or event. Their names are shown.
  Parameters Fields(const Parameters& parameters);
  // XML from or for a driver: texts of elements and values of attributes whose names are known. What is not XML is hidden
  // whole, its size aside, and so is an snmpd.conf in a state.
  std::string Xml(const std::string& xml, XmlStyle style = XmlStyle::Compact);
  // An snmpd.conf, line by line (ConfigSecrets.h). Of what is not plain text, its size and why: "(12 bytes, not shown:
  // ...)".
  std::string Config(std::string_view text);
  // A program's command line, as a script writes it: the program, options of one letter, short words and addresses.
  std::string CommandLine(const std::vector<std::string>& words);

  // Free text: a message, a log line, a reason, what a program wrote. Hides what is remembered, and the rest of a line
  // behind what looks like a secret's place. Learns nothing.
  std::string Text(std::string_view text, WrittenBy author = WrittenBy::Us) const;
  // A sentence of ours in which secrets are masked where it knows them: hides what is remembered. Learns nothing.
  std::string Sentence(std::string_view text) const;
  // A pattern that a text is compared with: shown when all words in it are names of fields, settings and directives. Learns
  // nothing.
  std::string Pattern(const std::string& pattern) const;
  // A text that free text is compared with: shown like a pattern, or as far as it explains in plain words. Learns nothing.
  std::string Expected(const std::string& text) const;

 private:
  struct FieldPlace {
    std::string_view owner;    // the element's name
    std::string_view setting;  // the setting that the element or command names
    bool isText;               // of the element, not of an attribute
  };

  std::string Hide(std::string_view text);
  std::string FieldValue(std::string_view name, const std::string& value, const FieldPlace& place);
  void LearnFrom(const XmlElement& element);
  void LearnFromDamaged(std::string_view xml);
  void HideIn(XmlElement& element, bool isKnown);
  std::string ConfigLine(std::string_view line, bool continues);
  std::string ShownConfigLine(std::string_view line, bool continues);

  bool m_showSecrets;
  KnownSecrets m_known;
  std::unordered_map<std::string, std::string> m_lines;  // of files, as they are shown
  std::size_t m_learntForLines = 0;                      // how many secrets were known then
};

}  // namespace devhost

#endif
