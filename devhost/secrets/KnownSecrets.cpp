#include "devhost/secrets/KnownSecrets.h"

#include <algorithm>
#include <iterator>

#include "devhost/secrets/SecretXml.h"
#include "devhost/secrets/Secrets.h"

namespace devhost {

namespace {

constexpr std::size_t kShortest = 4;
// Communities and passphrases are far shorter. Of a longer text, only the beginning is learnt.
constexpr std::size_t kLongest = 1024;

bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// Returns whether a word begins or ends at `at`, so that "art" is not found in "party".
bool IsEdge(std::string_view text, std::size_t at) {
  return at == 0 || at == text.size() || !IsWordCharacter(text[at - 1]) || !IsWordCharacter(text[at]);
}

// Comments explain things: "createUser NAME [MD5 PASSPHRASE]".
bool IsComment(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t");
  return first != std::string_view::npos && line[first] == '#';
}

bool IsQuoted(std::string_view text) {
  return text.size() > 2 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back();
}

std::size_t CommonLength(std::string_view left, std::string_view right) {
  const auto end = left.begin() + static_cast<std::ptrdiff_t>(std::min(left.size(), right.size()));
  return static_cast<std::size_t>(std::mismatch(left.begin(), end, right.begin()).first - left.begin());
}

// Returns the text as it stands in XML, with the characters in `which` escaped.
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

void KnownSecrets::Learn(std::string_view secret) {
  // Quotes within quotes are rare, and a text of nothing but quotes would be learnt in every length.
  constexpr int kMostQuotes = 4;
  for (int quotes = 0; IsQuoted(secret); ++quotes) {
    if (quotes <= kMostQuotes) {
      AddAsWritten(secret);
    }
    secret = secret.substr(1, secret.size() - 2);
  }
  AddAsWritten(secret);
}

void KnownSecrets::AddAsWritten(std::string_view secret) {
  const bool isCut = secret.size() > kLongest;
  const std::string start(secret.substr(0, kLongest));
  Add(start, isCut);
  for (const char* const which : {"&<", "&<>", "&<>\""}) {
    Add(Coded(start, which), isCut);
  }
}

void KnownSecrets::Add(const std::string& secret, bool isCut) {
  if (secret.size() >= kShortest && secret != kMask) {
    bool& cut = m_secrets[secret.substr(0, kLongest)];
    cut = cut || isCut || secret.size() > kLongest;
    m_starts.insert(secret.substr(0, kShortest));
  }
}

void KnownSecrets::LearnFromXml(std::string_view xml) {
  for (const std::string& secret : SecretsInXml(xml)) {
    Learn(secret);
  }
}

void KnownSecrets::LearnFromConfig(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string_view line = text.substr(at, end - at);
    at = end + 1;
    if (!IsComment(line)) {
      for (const SecretPlace& place : SecretPlaces(line)) {
        Learn(line.substr(place.begin, place.end - place.begin));
      }
    }
  }
}

std::size_t KnownSecrets::EndOfSecret(std::string_view text, std::size_t begin) const {
  std::string_view rest = text.substr(begin, kLongest);
  if (m_starts.count(std::string(rest.substr(0, kShortest))) == 0) {
    return begin;
  }
  while (rest.size() >= kShortest) {
    // In the order of the map, take the last secret that is not behind the rest. Every secret with which the rest begins is
    // also a beginning of that one.
    const auto next = m_secrets.upper_bound(rest);
    if (next == m_secrets.begin()) {
      break;
    }
    const auto& [secret, isCut] = *std::prev(next);
    const std::size_t common = CommonLength(secret, rest);
    const bool isWhole = common == secret.size();
    if (isWhole && isCut) {
      return text.size();
    }
    if (isWhole && IsEdge(text, begin + common)) {
      return begin + common;
    }
    rest = rest.substr(0, isWhole ? common - 1 : common);
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
  // Known secrets that look like tags are masked first, because MaskXml would cut them up.
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
