#ifndef DEVHOST_DRIVER_INSTANCE_DIRECTORY_H
#define DEVHOST_DRIVER_INSTANCE_DIRECTORY_H

#include <map>
#include <string>
#include <vector>

#include "devhost/driver/ServiceCheck.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"

namespace devhost {

// What all drivers have published, by identifier.
class InstanceDirectory {
 public:
  // False, and nothing published, when the driver has published `iid` already.
  // `instance` is borrowed until it is withdrawn.
  bool Publish(unsigned long driverId, const std::string& iid, void* instance);
  // Nothing happens when the driver has not published `iid`.
  // Returns the instance that the driver had published; null when there was none.
  void* Withdraw(unsigned long driverId, const std::string& iid);
  // The earliest published under `iid`; null when there is none.
  void* Find(const std::string& iid) const;
  // Withdraws all that the driver has published and returns the identifiers.
  std::vector<std::string> WithdrawAll(unsigned long driverId);

  // All that is published under `iid`, ordered by driver id.
  std::vector<void*> List(const std::string& iid) const;
  // The drivers that have published it, in the same order.
  std::vector<unsigned long> Publishers(const std::string& iid) const;

 private:
  struct Publication {
    unsigned long driverId;
    void* instance;
  };
  std::map<std::string, std::vector<Publication>> m_publications;  // each in the order of publishing
};

// One driver's view of the directory. It also answers with the driver's own services.
class InstanceManager : public IInstanceManager, public IDriverManager {
 public:
  virtual ~InstanceManager() = default;
  // The references and `services` outlive it.
  InstanceManager(InstanceDirectory& directory, ServiceCheck& check, unsigned long driverId, void* services)
      : m_directory(directory), m_check(check), m_driverId(driverId), m_services(services) {}

  bool RegisterQuery(const char* iid, void* instance) override;
  void UnregisterQuery(const char* iid) override;
  void* Query(const char* iid) override;
  void FindDrivers(unsigned long scope, const char* iid, std::vector<void*>& instances) override;

 private:
  InstanceDirectory& m_directory;
  ServiceCheck& m_check;
  const unsigned long m_driverId;
  void* const m_services;
};

}  // namespace devhost

#endif
