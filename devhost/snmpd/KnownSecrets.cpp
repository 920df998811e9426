#include "devhost/snmpd/KnownSecrets.h"

#include <algorithm>

#include "devhost/snmpd/Secrets.h"

namespace devhost {

namespace {

constexpr std::size_t kShortest = 4;

bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// Whether the text is cut between two words there, so that "art" is not found in "party".
bool IsEdge(std::string_view text, std::size_t at) {
  return at == 0 || at == text.size() || !IsWordCharacter(text[at - 1]) || !IsWordCharacter(text[at]);
}

// Comments explain: "createUser NAME [MD5 PASSPHRASE]".
bool IsInComment(std::string_view text, std::size_t at) {
  const std::size_t feed = text.substr(0, at).rfind('\n');
  const std::size_t first = text.find_first_not_of(" \t", feed == std::string_view::npos ? 0 : feed + 1);
  return text[first] == '#';
}

// As it stands in XML.
std::string Coded(const std::string& text, std::string_view which) {
  std::string coded;
  for (const char c : text) {
    if (which.find(c) == std::string_view::npos) {
      coded += c;
    } else {
      coded += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : "&quot;";
    }
  }
  return coded;
}

}  // namespace

void KnownSecrets::Learn(const std::string& secret) {
  const bool quoted =
      secret.size() > 2 && (secret.front() == '"' || secret.front() == '\'') && secret.front() == secret.back();
  if (quoted) {
    Learn(secret.substr(1, secret.size() - 2));
  }
  Add(secret);
  for (const char* const which : {"&<", "&<>", "&<>\""}) {
    Add(Coded(secret, which));
  }
}

void KnownSecrets::Add(const std::string& secret) {
  if (secret.size() >= kShortest && secret != kMask && m_secrets.insert(secret).second) {
    m_sizes[secret.substr(0, kShortest)].insert(secret.size());
  }
}

void KnownSecrets::LearnFromXml(std::string_view xml) {
  for (const std::string& secret : SecretsInXml(xml)) {
    Learn(secret);
  }
}

void KnownSecrets::LearnFromConfig(std::string_view text) {
  for (const SecretPlace& place : SecretPlacesInText(text)) {
    if (!IsInComment(text, place.begin)) {
      Learn(std::string(text.substr(place.begin, place.end - place.begin)));
    }
  }
}

std::size_t KnownSecrets::EndOfSecret(const std::string& text, std::size_t begin) const {
  const auto sizes = m_sizes.find(text.substr(begin, kShortest));
  if (sizes != m_sizes.end()) {
    for (const std::size_t size : sizes->second) {
      if (size <= text.size() - begin && IsEdge(text, begin + size) && m_secrets.count(text.substr(begin, size)) != 0) {
        return begin + size;
      }
    }
  }
  return begin;
}

std::vector<SecretPlace> KnownSecrets::Places(const std::string& text) const {
  std::vector<SecretPlace> places;
  for (std::size_t at = 0; at < text.size() && !m_secrets.empty(); ++at) {
    const std::size_t end = IsEdge(text, at) ? EndOfSecret(text, at) : at;
    if (end != at && !places.empty() && at < places.back().end) {
      places.back().end = std::max(places.back().end, end);
    } else if (end != at) {
      places.push_back({at, end});
    }
  }
  return places;
}

std::string KnownSecrets::Mask(std::string_view text) const {
  // Those that would be cut up as the tags of XML come first.
  const std::string plain(text);
  std::vector<SecretPlace> cut = Places(plain);
  cut.erase(std::remove_if(cut.begin(), cut.end(),
                           [&](const SecretPlace& place) {
                             return text.substr(place.begin, place.end - place.begin).find('<') == std::string_view::npos;
                           }),
            cut.end());
  return MaskKnown(MaskConfigText(MaskXml(Masked(plain, cut))));
}

std::string KnownSecrets::MaskKnown(const std::string& text) const {
  return Masked(text, Places(text));
}

}  // namespace devhost
