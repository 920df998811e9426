#ifndef DEVHOST_DRIVER_SERVICE_CHECK_H
#define DEVHOST_DRIVER_SERVICE_CHECK_H

#include <string>

namespace devhost {

// Stands between one driver and the host's tables: keeps out calls that come from a second thread, or too early in the
// driver's life, and hears of bad manners.
class ServiceCheck {
 public:
  enum class From { Construction, Initialize };  // from when on a driver may call an operation

  virtual ~ServiceCheck() = default;
  // False when the call must do nothing: it has been reported then. Otherwise other threads are kept out until Leave.
  virtual bool Enter(const char* operation, From from) = 0;
  virtual void Leave() noexcept = 0;
  // The driver has published this instance.
  virtual void NotePublished(const std::string& iid, void* instance) = 0;
  // The driver has withdrawn this instance, which it had published.
  virtual void NoteWithdrawn(const std::string& iid, void* instance) = 0;
  // The driver has asked for this published instance. Returns what it gets, which may stand in front of the instance.
  virtual void* Shown(const std::string& iid, void* instance) = 0;
  // `what` says in one line what the driver did.
  virtual void Report(const std::string& what) = 0;
};

// A call of a driver to a service of the host, for as long as it works on the host's tables.
class ServiceCall {
 public:
  ServiceCall(ServiceCheck& check, const char* operation, ServiceCheck::From from = ServiceCheck::From::Construction)
      : m_check(check), m_allowed(check.Enter(operation, from)) {}
  ~ServiceCall() {
    if (m_allowed) {
      m_check.Leave();
    }
  }
  ServiceCall(const ServiceCall&) = delete;
  ServiceCall& operator=(const ServiceCall&) = delete;

  bool IsAllowed() const { return m_allowed; }

 private:
  ServiceCheck& m_check;
  const bool m_allowed;
};

}  // namespace devhost

#endif
