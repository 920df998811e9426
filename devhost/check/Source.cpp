#include "devhost/check/Source.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace devhost {

namespace {

using Bytes = std::array<unsigned char, sizeof(in6_addr)>;

// An address or a mask, as the daemon takes one; an IPv4 address stands in the first bytes.
std::optional<Bytes> ReadAddress(const std::string& text, bool isV6) {
  Bytes bytes = {};
  in_addr four = {};
  if (isV6) {
    const bool isSix = ::inet_pton(AF_INET6, text.substr(0, text.find('%')).c_str(), bytes.data()) == 1;
    // It takes a complete IPv4 address for that of the same host within IPv6.
    const bool isMapped = !isSix && ::inet_pton(AF_INET, text.c_str(), bytes.data() + 12) == 1;
    if (isMapped) {
      bytes[10] = bytes[11] = 0xFF;
    }
    return isSix || isMapped ? std::optional<Bytes>(bytes) : std::nullopt;
  }
  if (::inet_aton(text.c_str(), &four) == 0) {
    return std::nullopt;
  }
  const auto* const begin = reinterpret_cast<const unsigned char*>(&four.s_addr);
  std::copy(begin, begin + sizeof four.s_addr, bytes.begin());
  return bytes;
}

// Whether name servers may know it. What looks like an address is not a name.
bool IsHostName(std::string_view text) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const auto isOther = [](char c) { return (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_'; };
  return std::any_of(text.begin(), text.end(), isLetter) && text.front() != '-' &&
         std::all_of(text.begin(), text.end(), [&](char c) { return isLetter(c) || isOther(c); });
}

struct Parts {
  std::string host;
  std::string mask;  // behind a slash
};

Parts Split(const Source& source) {
  const std::string text = source.text.substr(source.text.substr(0, 1) == "!" ? 1 : 0);
  const std::size_t slash = std::min(text.find('/'), text.size());
  return {text.substr(0, slash), text.substr(std::min(slash + 1, text.size()))};
}

Bytes MaskOfLength(long length) {
  Bytes mask = {};
  for (std::size_t bit = 0; bit < static_cast<std::size_t>(length); ++bit) {
    mask[bit / 8] = static_cast<unsigned char>(mask[bit / 8] | (0x80U >> (bit % 8)));
  }
  return mask;
}

// The mask, or what is wrong with it.
std::pair<std::optional<Bytes>, std::string> ReadMask(const std::string& text, bool isV6) {
  const long longest = isV6 ? 128 : 32;
  std::string_view digits = text;
  digits.remove_prefix(digits.front() == '+' ? 1 : 0);
  long length = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  if (stop == digits.data() + digits.size()) {
    const bool fits = error == std::errc() && length >= 0 && length <= longest;
    return fits ? std::make_pair(std::optional<Bytes>(MaskOfLength(length)), std::string())
                : std::make_pair(std::optional<Bytes>(),
                                 "the length of the mask is not a number from 0 to " + std::to_string(longest));
  }
  Bytes mask = {};
  const bool isMask = ::inet_pton(isV6 ? AF_INET6 : AF_INET, text.c_str(), mask.data()) == 1;
  return isMask ? std::make_pair(std::optional<Bytes>(mask), std::string())
                : std::make_pair(std::optional<Bytes>(), std::string("the mask is neither a length nor an address"));
}

}  // namespace

std::optional<Source> ReadSource(const Directive& setting) {
  const std::string& keyword = setting.keyword;
  const bool isSec = keyword == "com2sec" || keyword == "com2sec6";
  const bool isCommunity =
      keyword == "rocommunity" || keyword == "rwcommunity" || keyword == "rocommunity6" || keyword == "rwcommunity6";
  if (!isSec && !isCommunity && keyword != "authcommunity") {
    return std::nullopt;
  }
  const bool hasContext = isSec && !setting.words.empty() && setting.words.front().text == "-Cn";
  const std::size_t at = isCommunity ? 1 : hasContext ? 3 : isSec ? 1 : 2;
  if (at >= setting.words.size()) {
    return std::nullopt;
  }
  return Source{setting.words[at].text, keyword.back() == '6'};
}

bool IsLookedUp(const Source& source) {
  if (source.text == "default") {
    return false;
  }
  const Parts parts = Split(source);
  return parts.host != "localhost" && IsHostName(parts.host) && !ReadAddress(parts.host, source.isV6);
}

std::string WhyNoSource(const Source& source) {
  if (source.text.empty()) {
    return "the address that may use it is empty";
  }
  if (source.text == "default") {
    return "";
  }
  const Parts parts = Split(source);
  const std::optional<Bytes> address =
      ReadAddress(parts.host == "localhost" && !source.isV6 ? "127.0.0.1" : parts.host, source.isV6);
  if (!address && !(parts.host == "localhost" || IsLookedUp(source))) {
    return std::string("what may use it is neither an ") + (source.isV6 ? "IPv6" : "IPv4") + " address nor a host's name";
  }
  // Of an IPv4 address within IPv6, the daemon takes any mask.
  const bool isMapped = source.isV6 && parts.host.find(':') == std::string::npos;
  if (parts.mask.empty() || isMapped) {
    return "";
  }
  const auto [mask, problem] = ReadMask(parts.mask, source.isV6);
  if (!mask) {
    return problem;
  }
  for (std::size_t at = 0; address && at != address->size(); ++at) {
    if (((*address)[at] & ~static_cast<unsigned>((*mask)[at]) & 0xFFU) != 0) {
      return "the address has bits outside its mask";
    }
  }
  return "";
}

}  // namespace devhost
