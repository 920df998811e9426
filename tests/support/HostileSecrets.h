#ifndef TESTS_SUPPORT_HOSTILE_SECRETS_H
#define TESTS_SUPPORT_HOSTILE_SECRETS_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Texts with secrets in them, written as people, editors, programs and accidents write them. Everything about them is
// decided by choices, which come from a random generator or from a fuzzer.
class HostileSecrets {
 public:
  // Returns a number below `count`.
  using Choose = std::function<std::size_t(std::size_t count)>;

  explicit HostileSecrets(Choose choose) : m_choose(std::move(choose)) {}

  // An snmpd.conf: directives with secrets among harmless ones, misspelt, in comments, cut at odd blanks, quoted, continued;
  // then, perhaps, saved in another encoding, with other line ends, or with odd bytes between its words.
  std::string Config();
  // The same without NUL bytes, for programs that take a text.
  std::string PlainConfig();
  // Settings, replies, configurations and states of devices, perhaps damaged.
  std::string Xml();
  // A value for a community, as XML cannot always write it.
  std::string Value();
  // A message of a driver or a program that tells the secret, perhaps encoded, quoted or cut off.
  std::string Message(const std::string& secret);

  // The parts of the secrets that all texts so far hold: each of four bytes or more, letters and digits alone.
  const std::vector<std::string>& Parts() const { return m_parts; }
  // One of these parts that stands in `shown`, also between NUL bytes; "" when there is none.
  std::string FindIn(std::string_view shown) const;

 private:
  std::string Pick(const std::vector<std::string>& texts) { return texts[m_choose(texts.size())]; }
  bool OneOf(std::size_t count) { return m_choose(count) == count - 1; }
  std::string Part();
  std::string Line();
  std::string Element(int depth);

  Choose m_choose;
  std::vector<std::string> m_parts;
};

#endif
