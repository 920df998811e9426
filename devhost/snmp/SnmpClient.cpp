#include "devhost/snmp/SnmpClient.h"

#include <fcntl.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <poll.h>

#include <cerrno>
#include <memory>
#include <new>

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

// The session takes the request, whatever comes of it.
SnmpReply Exchange(const Session& session, Request request) {
  SnmpReply reply;
  if (session.Error() != 0) {
    reply.end = EndOf(session.Error());
    return reply;
  }
  netsnmp_pdu* answer = nullptr;
  const int status = ::snmp_sess_synch_response(session.Handle(), request.release(), &answer);
  const Request owner(answer, &::snmp_free_pdu);
  if (status != STAT_SUCCESS || answer == nullptr) {
    reply.end = status == STAT_TIMEOUT ? UdpEnd::Silent : UdpEnd::Failed;
    return reply;
  }
  reply.end = UdpEnd::Answered;
  reply.error = answer->errstat;
  for (const netsnmp_variable_list* variable = answer->variables; variable != nullptr; variable = variable->next_variable) {
    reply.values.push_back(ValueOf(*variable));
  }
  return reply;
}

}  // namespace

SnmpClient::SnmpClient(const SocketAddress& address, std::string community, const Patience& patience)
    : m_address(address), m_community(std::move(community)), m_patience(patience) {}

SnmpReply SnmpClient::Get(const std::vector<Oid>& objects) const {
  std::string community = m_community;
  const Session session(m_address, community, m_patience);
  Request request = MakeRequest(SNMP_MSG_GET);
  for (const Oid& object : objects) {
    if (::snmp_add_null_var(request.get(), object.data(), object.size()) == nullptr) {
      throw std::bad_alloc();
    }
  }
  SnmpReply reply = Exchange(session, std::move(request));
  reply.values.resize(objects.size());
  return reply;
}

SnmpReply SnmpClient::Set(const Oid& object, const std::string& text) const {
  std::string community = m_community;
  const Session session(m_address, community, m_patience);
  Request request = MakeRequest(SNMP_MSG_SET);
  AddText(request.get(), object, text);
  return Exchange(session, std::move(request));
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
