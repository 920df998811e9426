#include "devhost/check/UserNames.h"

#include <algorithm>

#include "devhost/check/UserLine.h"

namespace devhost {

namespace {

// Beyond this many lines, further ones are not compared.
constexpr std::size_t kMostLines = 100000;

}  // namespace

void UserNames::Add(const Directive& setting, std::size_t line) {
  if (m_users.size() + m_uses.size() + m_again.size() >= kMostLines) {
    return;
  }
  if (setting.keyword == "createuser") {
    const UserLine user = ReadUserLine(setting);
    if (user.hasEngine || user.words.empty() || !WhyNoUser(user).empty()) {
      return;
    }
    const std::size_t privacy = user.words.size() > 2 && IsKeyOption(user.words[2]) ? 4 : 3;
    const auto [known, isNew] = m_users.emplace(user.words.front(), User{false, setting.rest});
    if (!isNew && known->second.line != setting.rest) {
      m_again.push_back({line, Mismatch::Again});
    }
    known->second = {user.words.size() > privacy, setting.rest};
  } else if ((setting.keyword == "rouser" || setting.keyword == "rwuser") && !setting.words.empty() &&
             setting.words.front().text != "-s") {
    const std::string level = setting.words.size() > 1 ? InLowerCase(setting.words[1].text) : "";
    m_uses.push_back({line, setting.words.front().text, level == "priv" || level == "authpriv"});
  }
}

std::vector<UserNames::Found> UserNames::Mismatches() const {
  std::map<std::string, std::string> inLowerCase;
  for (const auto& user : m_users) {
    inLowerCase.emplace(InLowerCase(user.first), user.first);
  }
  std::vector<Found> found = m_again;
  for (const Use& use : m_uses) {
    const auto user = m_users.find(use.name);
    if (user == m_users.end() && inLowerCase.count(InLowerCase(use.name)) != 0) {
      found.push_back({use.line, Mismatch::Case});
    } else if (user != m_users.end() && use.needsPrivacy && !user->second.hasPrivacy) {
      found.push_back({use.line, Mismatch::NoPrivacy});
    }
  }
  return found;
}

}  // namespace devhost
