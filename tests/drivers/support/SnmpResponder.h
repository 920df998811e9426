#ifndef TESTS_DRIVERS_SUPPORT_SNMP_RESPONDER_H
#define TESTS_DRIVERS_SUPPORT_SNMP_RESPONDER_H

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

// Answers every datagram that comes to an UDP port of 127.0.0.1 with one text, from a thread of its own.
class SnmpResponder {
 public:
  // Takes the port when the file `after` is there; "" for at once.
  SnmpResponder(std::uint16_t port, const std::string& answer, const std::string& after = std::string());
  ~SnmpResponder();
  SnmpResponder(const SnmpResponder&) = delete;
  SnmpResponder& operator=(const SnmpResponder&) = delete;

  // What an SNMP engine reports to a discovery.
  static std::string Report();

 private:
  void Serve(std::uint16_t port, const std::string& after);

  const std::string m_answer;
  std::atomic<bool> m_serving{false};
  std::atomic<bool> m_done{false};
  std::thread m_thread;
};

#endif
