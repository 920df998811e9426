#include "devhost/operations/DaemonAddress.h"

#include <algorithm>
#include <string_view>

#include "devhost/check/ConfigText.h"
#include "devhost/snmp/SnmpClient.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr std::string_view kLocalDaemon = "local_snmpd.so";
constexpr char kSnmpPort[] = "161";

bool IsLoopback(const std::string& host) {
  return host == "localhost" || host == "::1" || host.compare(0, 4, "127.") == 0;
}

// Where the daemon of a file listens.
struct Listening {
  std::string port = kSnmpPort;
  std::optional<UdpAddress> first;
  std::size_t loopbackLine = 0;  // of the line that has it listen on its own machine alone; 0 when there is none
  std::string loopbackPort;      // of the first one
  bool isOpen = false;           // a line lets others ask, too
};

// Takes one word of an agentaddress line: "161", "udp:161", "127.0.0.1", "udp:192.0.2.5:1161".
void Take(std::string_view word, std::size_t line, Listening& listening) {
  const std::string_view number = word.substr(StartsWith(word, "udp:") ? 4 : 0);
  const bool isNumber = !number.empty() && number.find_first_not_of("0123456789") == std::string_view::npos;
  const auto address =
      isNumber ? ReadUdpAddress("0.0.0.0:" + std::string(number), kSnmpPort) : ReadUdpAddress(word, kSnmpPort);
  if (!address) {
    return;
  }
  listening.first = listening.first ? listening.first : address;
  if (IsLoopback(address->host)) {
    listening.loopbackPort = listening.loopbackLine == 0 ? address->port : listening.loopbackPort;
    listening.loopbackLine = line;
  } else if (!listening.isOpen) {
    listening.isOpen = true;
    listening.port = address->port;
  }
}

Listening ListeningOf(const std::string& file) {
  Listening listening;
  ForEachLine(file, [&listening](const ConfigLine& line) {
    if (!line.setting || line.setting->keyword != "agentaddress") {
      return;
    }
    std::string_view rest = line.setting->rest;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(','), rest.size());
      Take(TrimmedView(rest.substr(0, end)), line.number, listening);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  });
  return listening;
}

DaemonAddress AddressOnHost(const std::string& host, const std::string& file) {
  const Listening listening = ListeningOf(file);
  const bool isLocalOnly = !listening.isOpen && listening.loopbackLine != 0;
  DaemonAddress result;
  const bool needsBrackets = host.find(':') != std::string::npos && host.front() != '[';
  result.udp =
      ReadUdpAddress(needsBrackets ? "[" + host + "]" : host, isLocalOnly ? listening.loopbackPort : listening.port);
  if (isLocalOnly && !IsLoopback(host)) {
    result.isOutOfReach = true;
    result.remark = "line " + std::to_string(listening.loopbackLine) +
                    " of its file has the daemon listen on its own machine alone (agentaddress), where it cannot be asked "
                    "from here";
  }
  return result;
}

}  // namespace

DaemonAddress FindDaemonAddress(const DriverEntry& device, const std::string& file) {
  const XmlElement config = ReadXml(device.configXml);
  const std::string* const host = config.FindAttribute("host");
  const std::string* const port = config.FindAttribute("port");
  const bool isLocal = std::string_view(device.module).substr(device.module.rfind('/') + 1) == kLocalDaemon;
  DaemonAddress result;
  if (isLocal) {
    result.hasOwnAgentX = true;
    result.udp = port == nullptr ? std::nullopt : ReadUdpAddress("127.0.0.1", *port);
    if (!result.udp) {
      result.remark =
          "the daemon of " + device.name + " gets another port each time; give one with port=\"...\" in the project";
    }
  } else if (host != nullptr && !host->empty()) {
    result = AddressOnHost(*host, file);
  }
  if (!result.udp && result.remark.empty()) {
    result.remark = "nothing to ask: the project gives " + device.name + " no daemon";
  }
  return result;
}

DaemonAddress AddressOfFile(const std::string& file) {
  DaemonAddress result;
  result.udp = ListeningOf(file).first;
  if (!result.udp) {
    result.udp = ReadUdpAddress("127.0.0.1", kSnmpPort);
  } else if (result.udp->host == "0.0.0.0") {
    result.udp->host = "127.0.0.1";
  } else if (result.udp->host == "::") {
    result.udp->host = "::1";
  }
  return result;
}

UdpAddress ReadDaemonAddress(const std::string& text) {
  const auto address = ReadUdpAddress(text, kSnmpPort);
  if (!address) {
    throw SnmpError(Quoted(text) + " is not the address of a daemon; allowed: HOST, HOST:PORT and [IPV6-ADDRESS]:PORT");
  }
  return *address;
}

}  // namespace devhost
