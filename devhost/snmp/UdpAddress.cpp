#include "devhost/snmp/UdpAddress.h"

#include <netdb.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <system_error>

namespace devhost {

namespace {

bool IsPort(std::string_view text) {
  unsigned port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

// The daemon takes these words for transports, not for hosts.
bool IsTransport(std::string_view word) {
  constexpr std::string_view kOthers[] = {"tcp", "tcp6", "unix", "ssh", "dtlsudp", "dtlsudp6", "tlstcp", "tlstcp6"};
  return std::find(std::begin(kOthers), std::end(kOthers), word) != std::end(kOthers);
}

// Takes the word off the front of the text, if it stands there.
bool Skip(std::string_view& text, std::string_view word) {
  const bool isThere = text.substr(0, word.size()) == word;
  text.remove_prefix(isThere ? word.size() : 0);
  return isThere;
}

}  // namespace

std::optional<UdpAddress> ReadUdpAddress(std::string_view text, std::string_view usualPort) {
  UdpAddress address;
  address.isV6 = Skip(text, "udp6:");
  if (!address.isV6) {
    Skip(text, "udp:");
  }
  std::string_view port = usualPort;
  if (!text.empty() && text.front() == '[') {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) {
      return std::nullopt;
    }
    address.isV6 = true;
    port = end + 1 == text.size() ? usualPort : text.substr(end + 1);
    if (end + 1 != text.size() && !Skip(port, ":")) {
      return std::nullopt;
    }
    text = text.substr(1, end - 1);
  } else if (std::count(text.begin(), text.end(), ':') == 1) {
    port = text.substr(text.find(':') + 1);
    text = text.substr(0, text.find(':'));
  } else if (text.find(':') != std::string_view::npos && !address.isV6) {
    return std::nullopt;
  }
  if (text.empty() || IsTransport(text) || text.find_first_of(" \t\r\n/") != std::string_view::npos || !IsPort(port)) {
    return std::nullopt;
  }
  address.host = text;
  address.port = port;
  return address;
}

std::string TextOf(const UdpAddress& address) {
  const bool needsBrackets = address.host.find(':') != std::string::npos;
  return (needsBrackets ? "[" + address.host + "]" : address.host) + ":" + address.port;
}

std::string SocketAddress::Text() const {
  char host[NI_MAXHOST] = "";
  char port[NI_MAXSERV] = "";
  ::getnameinfo(Get(), size, host, sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
  const bool isV6 = storage.ss_family == AF_INET6;
  return std::string(isV6 ? "udp6:[" : "udp:") + host + (isV6 ? "]:" : ":") + port;
}

std::optional<SocketAddress> Resolve(const UdpAddress& address) {
  addrinfo hints = {};
  hints.ai_family = address.isV6 ? AF_INET6 : AF_INET;
  hints.ai_socktype = SOCK_DGRAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (::getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found) != 0) {
    return std::nullopt;
  }
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
  SocketAddress result;
  result.size = found->ai_addrlen;
  std::copy_n(reinterpret_cast<const char*>(found->ai_addr), found->ai_addrlen, reinterpret_cast<char*>(&result.storage));
  return result;
}

}  // namespace devhost
