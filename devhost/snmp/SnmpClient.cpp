#include "devhost/snmp/SnmpClient.h"

#include <fcntl.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/library/large_fd_set.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <utility>

namespace devhost {

namespace {

// One session, which the library knows nothing else of: init_snmp is never called, since that reads snmp.conf and MIB files
// and writes persistent ones.
class Session {
 public:
  Session(const SocketAddress& address, std::string& community, const Patience& patience) {
    static const bool isQuiet = netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG) != nullptr;
    static_cast<void>(isQuiet);
    netsnmp_session wanted = {};
    ::snmp_sess_init(&wanted);
    std::string peer = address.Text();
    wanted.version = SNMP_VERSION_2c;
    wanted.peername = peer.data();
    wanted.community = reinterpret_cast<u_char*>(community.data());
    wanted.community_len = community.size();
    wanted.timeout = std::chrono::duration_cast<std::chrono::microseconds>(patience.wait).count();
    wanted.retries = patience.tries - 1;
    m_handle = ::snmp_sess_open(&wanted);
    if (m_handle == nullptr) {
      throw SnmpError(peer + ": " + ::snmp_api_errstring(wanted.s_snmp_errno));
    }
    // A socket that is connected hears of refusals, and answers of others do not reach it.
    ::fcntl(Socket(), F_SETFD, FD_CLOEXEC);
    m_error = ::connect(Socket(), address.Get(), address.size) == 0 ? 0 : errno;
  }
  ~Session() { ::snmp_sess_close(m_handle); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void* Handle() const { return m_handle; }
  int Socket() const { return ::snmp_sess_transport(m_handle)->sock; }
  int Error() const { return m_error; }  // of connecting

 private:
  void* m_handle = nullptr;
  int m_error = 0;
};

using Request = std::unique_ptr<netsnmp_pdu, decltype(&::snmp_free_pdu)>;

Request MakeRequest(int command) {
  Request request(::snmp_pdu_create(command), &::snmp_free_pdu);
  if (request == nullptr) {
    throw std::bad_alloc();
  }
  return request;
}

void AddText(netsnmp_pdu* request, const Oid& object, const std::string& text) {
  if (::snmp_pdu_add_variable(request, object.data(), object.size(), ASN_OCTET_STR, text.data(), text.size()) == nullptr) {
    throw std::bad_alloc();
  }
}

std::optional<std::string> ValueOf(const netsnmp_variable_list& variable) {
  switch (variable.type) {
    case ASN_OCTET_STR:
      return std::string(reinterpret_cast<const char*>(variable.val.string), variable.val_len);
    case ASN_INTEGER:
    case ASN_GAUGE:
    case ASN_COUNTER:
    case ASN_TIMETICKS:
      return std::to_string(*variable.val.integer);
    default:
      return std::nullopt;
  }
}

Request MakeRequest(const SnmpRequest& wanted) {
  Request request = MakeRequest(wanted.text ? SNMP_MSG_SET : SNMP_MSG_GET);
  for (const Oid& object : wanted.objects) {
    if (wanted.text) {
      AddText(request.get(), object, *wanted.text);
    } else if (::snmp_add_null_var(request.get(), object.data(), object.size()) == nullptr) {
      throw std::bad_alloc();
    }
  }
  return request;
}

// A request on its way, and what has come back.
class Flight {
 public:
  Flight(const SocketAddress& address, const SnmpRequest& wanted, const Patience& patience)
      : m_community(wanted.community), m_session(address, m_community, patience) {
    reply.values.resize(wanted.objects.size());
    if (m_session.Error() != 0) {
      End(EndOf(m_session.Error()));
      return;
    }
    Request request = MakeRequest(wanted);
    if (::snmp_sess_async_send(m_session.Handle(), request.get(), &Flight::OnEnd, this) == 0) {
      End(UdpEnd::Failed);
      return;
    }
    static_cast<void>(request.release());  // the library frees what it has sent
  }
  Flight(const Flight&) = delete;
  Flight& operator=(const Flight&) = delete;

  void* Handle() const { return m_session.Handle(); }

  SnmpReply reply;
  bool isDone = false;

 private:
  void End(UdpEnd end) {
    reply.end = end;
    isDone = true;
  }

  // The library calls this at the end, and for each time that it asks again.
  static int OnEnd(int operation, netsnmp_session*, int, netsnmp_pdu* answer, void* flight) noexcept {
    Flight& self = *static_cast<Flight*>(flight);
    if (operation == NETSNMP_CALLBACK_OP_RESEND) {
      return 1;
    }
    const bool isAnswer = operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE && answer->command == SNMP_MSG_RESPONSE;
    self.End(isAnswer ? UdpEnd::Answered : operation == NETSNMP_CALLBACK_OP_TIMED_OUT ? UdpEnd::Silent : UdpEnd::Failed);
    if (isAnswer) {
      self.Take(*answer);
    }
    return 1;
  }
  void Take(const netsnmp_pdu& answer) {
    reply.error = answer.errstat;
    const netsnmp_variable_list* variable = answer.variables;
    for (std::size_t at = 0; variable != nullptr && at < reply.values.size(); ++at, variable = variable->next_variable) {
      reply.values[at] = ValueOf(*variable);
    }
  }

  std::string m_community;
  const Session m_session;
};

using Flights = std::vector<std::unique_ptr<Flight>>;

// The descriptors for one wait.
struct Descriptors {
  Descriptors() { ::netsnmp_large_fd_set_init(&set, FD_SETSIZE); }
  ~Descriptors() { ::netsnmp_large_fd_set_cleanup(&set); }
  Descriptors(const Descriptors&) = delete;
  Descriptors& operator=(const Descriptors&) = delete;

  netsnmp_large_fd_set set = {};
};

// Waits until something has come for one of them, or is to be sent again, and lets the library do what is due. Returns
// whether there is anything left to wait for.
bool Turn(const Flights& flights) {
  Descriptors descriptors;
  int count = 0;
  int waitsForEver = 1;
  timeval wait = {};
  for (const auto& flight : flights) {
    if (!flight->isDone) {
      ::snmp_sess_select_info2(flight->Handle(), &count, &descriptors.set, &wait, &waitsForEver);
    }
  }
  if (count == 0 || waitsForEver != 0) {
    return false;
  }
  if (::netsnmp_large_fd_set_select(count, &descriptors.set, nullptr, nullptr, &wait) < 0) {
    return errno == EINTR;
  }
  for (const auto& flight : flights) {
    if (!flight->isDone) {
      ::snmp_sess_read2(flight->Handle(), &descriptors.set);
    }
    if (!flight->isDone) {
      ::snmp_sess_timeout(flight->Handle());
    }
  }
  return true;
}

}  // namespace

std::vector<SnmpReply> AskAtOnce(const SocketAddress& address, const std::vector<SnmpRequest>& requests,
                                 const Patience& patience) {
  Flights flights;
  flights.reserve(requests.size());
  for (const SnmpRequest& request : requests) {
    if (!request.community.empty()) {
      flights.push_back(std::make_unique<Flight>(address, request, patience));
    }
  }
  while (std::any_of(flights.begin(), flights.end(), [](const auto& flight) { return !flight->isDone; }) && Turn(flights)) {
  }
  std::vector<SnmpReply> replies;
  replies.reserve(requests.size());
  auto next = flights.begin();
  for (const SnmpRequest& request : requests) {
    replies.emplace_back();
    replies.back().values.resize(request.objects.size());
    if (!request.community.empty()) {
      replies.back() = std::move((*next++)->reply);
    }
  }
  return replies;
}

SnmpClient::SnmpClient(const SocketAddress& address, std::string community, const Patience& patience)
    : m_address(address), m_community(std::move(community)), m_patience(patience) {}

SnmpReply SnmpClient::Get(const std::vector<Oid>& objects) const {
  return AskAtOnce(m_address, {{m_community, objects}}, m_patience).front();
}

SnmpReply SnmpClient::Set(const Oid& object, const std::string& text) const {
  return AskAtOnce(m_address, {{m_community, {object}, text}}, m_patience).front();
}

UdpEnd SnmpClient::SendTrap(const Oid& trap, const std::vector<std::pair<Oid, std::string>>& texts,
                            std::chrono::milliseconds objection) const {
  std::string community = m_community;
  const Session session(m_address, community, m_patience);
  if (session.Error() != 0) {
    return EndOf(session.Error());
  }
  const Oid upTime = {1, 3, 6, 1, 2, 1, 1, 3, 0};
  const Oid trapName = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
  Request request = MakeRequest(SNMP_MSG_TRAP2);
  const u_long noTime = 0;
  if (::snmp_pdu_add_variable(request.get(), upTime.data(), upTime.size(), ASN_TIMETICKS, &noTime, sizeof noTime) ==
          nullptr ||
      ::snmp_pdu_add_variable(request.get(), trapName.data(), trapName.size(), ASN_OBJECT_ID, trap.data(),
                              trap.size() * sizeof(oid)) == nullptr) {
    throw std::bad_alloc();
  }
  for (const auto& [object, text] : texts) {
    AddText(request.get(), object, text);
  }
  errno = 0;
  if (::snmp_sess_send(session.Handle(), request.get()) == 0) {
    return errno == 0 ? UdpEnd::Failed : EndOf(errno);
  }
  static_cast<void>(request.release());  // the library frees what it has sent
  pollfd ready = {session.Socket(), 0, 0};
  ::poll(&ready, 1, static_cast<int>(objection.count()));
  int error = 0;
  socklen_t size = sizeof error;
  ::getsockopt(session.Socket(), SOL_SOCKET, SO_ERROR, &error, &size);
  return EndOf(error);
}

}  // namespace devhost
