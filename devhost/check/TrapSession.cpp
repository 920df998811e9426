#include "devhost/check/TrapSession.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "devhost/check/UserLine.h"

namespace devhost {

namespace {

constexpr std::string_view kWithValue = "YmMOIPDvrtcZeEnulxXaApT3sSLC";
constexpr std::string_view kAlone = "VhHd";

bool IsNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// What is wrong with the value of an option, or nothing.
std::string WhyNoValue(char option, const std::string& value) {
  static const std::set<std::string> kVersions = {"1", "2c", "3"};
  static const std::set<std::string> kLevels = {"noauth", "noauthnopriv", "nanp",     "auth", "authnopriv",
                                                "anp",    "priv",         "authpriv", "ap"};
  constexpr std::size_t kShortestPassphrase = 8;
  constexpr std::size_t kShortestEngine = 5;
  const std::string lower = InLowerCase(value);
  if (option == 'v' && kVersions.count(lower) == 0) {
    return "there is no such version; 1, 2c and 3 are those that it knows";
  }
  if (option == 'l' && kLevels.count(lower) == 0) {
    return "there is no such security level; noAuthNoPriv, authNoPriv and authPriv are those that it knows";
  }
  if (option == 'r' && !IsNumber(value)) {
    return "the number of retries is not a number";
  }
  if (option == 'a' ? AuthKeyLength(value) == 0 : option == 'x' && PrivacyKeyLength(value) == 0) {
    return "there is no such authentication or encryption; SHA and AES are some";
  }
  if ((option == 'e' || option == 'E') && HexLength(value) < kShortestEngine) {
    return "the id of the engine is not a row of five hexadecimal bytes or more";
  }
  return (option == 'A' || option == 'X') && value.size() < kShortestPassphrase ? "a passphrase is shorter than 8 characters"
                                                                                : std::string();
}

class SessionReader {
 public:
  TrapSession Read(const std::vector<DirectiveWord>& words) {
    for (m_at = words.begin(), m_end = words.end(); m_at != m_end && m_session.problem.empty(); ++m_at) {
      const std::string& word = m_at->text;
      if (word == "-profile" || word == "-name" || word == "-tag") {
        m_at += m_at + 1 != m_end ? 1 : 0;
      } else if (word.compare(0, 2, "--") == 0) {
        TakeSetting(word);
      } else if (word.size() > 1 && word.front() == '-') {
        ReadOptions(word);
      } else if (m_session.target.empty()) {
        m_session.target = word;
      }
    }
    m_session.isV3 = m_version.empty() || m_version == "3";
    m_session.hasName = m_session.isV3 ? m_hasUser : m_hasCommunity;
    return std::move(m_session);
  }

 private:
  void ReadOptions(const std::string& word) {
    for (std::size_t at = 1; at != word.size(); ++at) {
      const char option = word[at];
      if (kAlone.find(option) != std::string_view::npos) {
        continue;
      }
      if (kWithValue.find(option) == std::string_view::npos) {
        m_session.problem = "it does not know an option";
      } else if (at + 1 != word.size()) {
        Take(option, word.substr(at + 1));
      } else if (m_at + 1 == m_end) {
        m_session.problem = "the last option has no value";
      } else {
        Take(option, (++m_at)->text);
      }
      return;
    }
  }

  // A directive of snmp.conf. The daemon complains of one that it does not know, and adds the target all the same.
  void TakeSetting(const std::string& word) {
    const std::string name = InLowerCase(word.substr(0, word.find('=')));
    m_hasUser = m_hasUser || name == "--defsecurityname";
    m_hasCommunity = m_hasCommunity || name == "--defcommunity";
  }

  void Take(char option, const std::string& value) {
    m_session.problem = WhyNoValue(option, value);
    m_version = option == 'v' ? InLowerCase(value) : m_version;
    m_hasUser = m_hasUser || option == 'u';
    m_hasCommunity = m_hasCommunity || option == 'c';
  }

  TrapSession m_session;
  std::vector<DirectiveWord>::const_iterator m_at;
  std::vector<DirectiveWord>::const_iterator m_end;
  std::string m_version;
  bool m_hasUser = false;
  bool m_hasCommunity = false;
};

}  // namespace

std::optional<TrapSession> ReadTrapSession(const Directive& setting) {
  return setting.keyword == "trapsess" && !setting.words.empty() ? std::optional(SessionReader().Read(setting.words))
                                                                 : std::nullopt;
}

}  // namespace devhost
