#ifndef TESTS_CONFIG_HOSTILE_TEXT_H
#define TESTS_CONFIG_HOSTILE_TEXT_H

#include <iterator>
#include <random>
#include <string>

// Makes random texts that are hard for a parser of snmpd.conf. The texts are the same in every run and on every platform.
class HostileText {
 public:
  explicit HostileText(unsigned int seed) : m_engine(seed) {}

  // Returns a whole file.
  std::string File() { return Of(kFileParts, Below(40)); }
  // Returns a value for a setting: without a line feed or a marker, and sometimes empty.
  std::string Value() { return Of(kValueParts, Below(5)); }
  // Returns a number below `limit`.
  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_engine() % limit); }

 private:
  template <std::size_t Count>
  std::string Of(const char* const (&parts)[Count], unsigned int length) {
    std::string text;
    for (; length != 0; --length) {
      text += parts[Below(static_cast<unsigned int>(Count))];
    }
    return text;
  }

  static constexpr const char* kFileParts[] = {"Halvoren Section Start",
                                               "# Halvoren Section Start\n",
                                               "Halvoren Section End",
                                               "# Halvoren Section End\n",
                                               "Halvoren Section ",
                                               "Start",
                                               "End",
                                               "#",
                                               "#\n",
                                               "\n",
                                               "\n",
                                               "\n\n",
                                               " ",
                                               "  ",
                                               "\t",
                                               "\r\n",
                                               "\"",
                                               "a",
                                               "10.0.0.5",
                                               "rocommunity",
                                               "rwcommunity",
                                               "agentXTimeout",
                                               "agentXRetries",
                                               "sysContact",
                                               "sysLocation",
                                               "sysName",
                                               "trap2sink",
                                               "\nrocommunity  ",
                                               "\ntrap2sink  10.0.0.5  \"",
                                               "\"  162\n",
                                               "\nagentXTimeout  "};
  static constexpr const char* kValueParts[] = {" ", "  ", "\t", "\"", "#", "a", "bc", "162", "sysName", "trap2sink", "\r"};

  std::mt19937 m_engine;
};

#endif
