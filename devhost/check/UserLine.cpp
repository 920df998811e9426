#include "devhost/check/UserLine.h"

#include <map>

namespace devhost {

namespace {

constexpr std::size_t kShortestPassphrase = 8;

constexpr char kMissing[] = "the passphrase is missing";
constexpr char kShort[] = "a passphrase is shorter than 8 characters";
constexpr char kNoKey[] = "a key is not a row of hexadecimal bytes behind 0x, or has another length than its kind needs";

using Lengths = std::map<std::string, std::size_t>;

std::size_t LengthOf(const Lengths& lengths, std::string_view kind) {
  const auto found = lengths.find(InLowerCase(kind));
  return found == lengths.end() ? 0 : found->second;
}

// A passphrase, or an option and a key.
struct Secret {
  std::string option;
  std::string text;
  bool isThere = false;
};

Secret ReadSecret(const std::vector<std::string>& words, std::size_t at) {
  Secret secret;
  if (at < words.size()) {
    const bool isKey = IsKeyOption(words[at]);
    secret.option = isKey ? words[at] : "";
    secret.text = !isKey ? words[at] : at + 1 < words.size() ? words[at + 1] : "";
    secret.isThere = true;
  }
  return secret;
}

std::string WhyNoAuth(const std::string& kind, const Secret& secret) {
  const std::size_t length = AuthKeyLength(kind);
  const std::size_t key = HexLength(secret.text);
  if (!secret.isThere) {
    return std::string(kMissing) + ", and the daemon crashes when it reads the line";
  }
  if (length == 0) {
    return "it knows no such authentication; MD5, SHA and SHA-256 are some";
  }
  if (secret.option.empty()) {
    return secret.text.size() < kShortestPassphrase ? kShort : "";
  }
  return (secret.option == "-l" ? key == length : key >= length) ? "" : kNoKey;
}

std::string WhyNoPrivacy(const std::string& authKind, const std::string& kind, const Secret& secret) {
  const std::size_t needed = PrivacyKeyLength(kind);
  if (kind.empty()) {
    return "";
  }
  if (needed == 0) {
    return "it knows no such encryption; DES and AES are some";
  }
  if (!secret.option.empty()) {
    return HexLength(secret.text) >= (secret.option == "-l" ? needed : AuthKeyLength(authKind)) ? "" : kNoKey;
  }
  if (!secret.text.empty()) {
    return secret.text.size() < kShortestPassphrase ? kShort : "";
  }
  return AuthKeyLength(authKind) < needed ? "the authentication makes keys that are too short for this encryption" : "";
}

}  // namespace

std::size_t AuthKeyLength(std::string_view kind) {
  static const Lengths kLengths = {{"md5", 16},    {"sha", 20},     {"sha1", 20},   {"sha-1", 20},
                                   {"sha224", 28}, {"sha-224", 28}, {"sha256", 32}, {"sha-256", 32},
                                   {"sha384", 48}, {"sha-384", 48}, {"sha512", 64}, {"sha-512", 64}};
  return LengthOf(kLengths, kind);
}

std::size_t PrivacyKeyLength(std::string_view kind) {
  static const Lengths kLengths = {{"des", 16},     {"aes", 16},       {"aes128", 16},  {"aes-128", 16},
                                   {"aes192", 24},  {"aes-192", 24},   {"aes256", 32},  {"aes-256", 32},
                                   {"aes192c", 24}, {"aes-192-c", 24}, {"aes256c", 32}, {"aes-256-c", 32}};
  return LengthOf(kLengths, kind);
}

std::size_t HexLength(std::string_view text) {
  text.remove_prefix(text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X" ? 2 : 0);
  const bool isHex = text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos && text.size() % 2 == 0;
  return isHex ? text.size() / 2 : 0;
}

bool IsKeyOption(std::string_view word) {
  return word == "-m" || word == "-l";
}

UserLine ReadUserLine(const Directive& setting) {
  UserLine user;
  user.words.reserve(setting.words.size());
  for (const DirectiveWord& word : setting.words) {
    user.words.push_back(word.text);
  }
  user.hasEngine = !user.words.empty() && user.words.front() == "-e";
  if (user.hasEngine) {
    user.engine = user.words.size() > 1 ? user.words[1] : "";
    user.words.erase(user.words.begin(), user.words.begin() + (user.words.size() > 1 ? 2 : 1));
  }
  return user;
}

std::string WhyNoUser(const UserLine& user) {
  const std::vector<std::string>& words = user.words;
  if (user.hasEngine && HexLength(user.engine) == 0) {
    return "the engine behind -e is not a row of hexadecimal bytes";
  }
  if (words.size() < 2) {
    return "";  // a user without authentication
  }
  const Secret auth = ReadSecret(words, 2);
  std::string problem = WhyNoAuth(words[1], auth);
  const std::size_t privacy = auth.option.empty() ? 3 : 4;
  if (problem.empty() && words.size() > privacy) {
    problem = WhyNoPrivacy(words[1], words[privacy], ReadSecret(words, privacy + 1));
  }
  return problem;
}

}  // namespace devhost
