#include "devhost/snmpd/KnownSecrets.h"

#include <algorithm>

#include "devhost/snmpd/Secrets.h"

namespace devhost {

namespace {

bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// Whether the text is cut between two words there, so that "art" is not found in "party".
bool IsEdge(std::string_view text, std::size_t at) {
  return at == 0 || at == text.size() || !IsWordCharacter(text[at - 1]) || !IsWordCharacter(text[at]);
}

void Replace(std::string& text, const std::string& secret) {
  for (std::size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at)) {
    if (IsEdge(text, at) && IsEdge(text, at + secret.size())) {
      text.replace(at, secret.size(), kMask);
      at += sizeof(kMask) - 1;
    } else {
      ++at;
    }
  }
}

}  // namespace

void KnownSecrets::Learn(const std::string& secret) {
  constexpr std::size_t kShortest = 4;
  constexpr std::size_t kMost = 256;
  const auto longer = [](const std::string& left, const std::string& right) {
    return left.size() != right.size() ? left.size() > right.size() : left < right;
  };
  const auto place = std::lower_bound(m_secrets.begin(), m_secrets.end(), secret, longer);
  if (secret.size() >= kShortest && secret != kMask && m_secrets.size() < kMost &&
      (place == m_secrets.end() || *place != secret)) {
    m_secrets.insert(place, secret);
  }
}

void KnownSecrets::LearnFromXml(std::string_view xml) {
  for (const std::string& secret : SecretsInXml(xml)) {
    Learn(secret);
  }
}

std::string KnownSecrets::Mask(std::string_view text) const {
  std::string masked = MaskConfigText(MaskXml(text));
  for (const std::string& secret : m_secrets) {
    Replace(masked, secret);
  }
  return masked;
}

}  // namespace devhost
