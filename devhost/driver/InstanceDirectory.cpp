#include "devhost/driver/InstanceDirectory.h"

#include <algorithm>

#include "devhost/driver/DriverServices.h"

namespace devhost {

bool InstanceDirectory::Publish(unsigned long driverId, const std::string& iid, void* instance) {
  std::vector<Publication>& publications = m_publications[iid];
  for (const Publication& publication : publications) {
    if (publication.driverId == driverId) {
      return false;
    }
  }
  publications.push_back({driverId, instance});
  return true;
}

void* InstanceDirectory::Withdraw(unsigned long driverId, const std::string& iid) {
  const auto found = m_publications.find(iid);
  if (found == m_publications.end()) {
    return nullptr;
  }
  std::vector<Publication>& publications = found->second;
  const auto own = std::find_if(publications.begin(), publications.end(),
                                [&](const Publication& publication) { return publication.driverId == driverId; });
  if (own == publications.end()) {
    return nullptr;
  }
  void* const instance = own->instance;
  publications.erase(own);
  return instance;
}

void* InstanceDirectory::Find(const std::string& iid) const {
  const auto found = m_publications.find(iid);
  return found == m_publications.end() || found->second.empty() ? nullptr : found->second.front().instance;
}

std::vector<std::string> InstanceDirectory::WithdrawAll(unsigned long driverId) {
  std::vector<std::string> withdrawn;
  for (const auto& [iid, publications] : m_publications) {
    for (const Publication& publication : publications) {
      if (publication.driverId == driverId) {
        withdrawn.push_back(iid);
      }
    }
  }
  for (const std::string& iid : withdrawn) {
    Withdraw(driverId, iid);
  }
  return withdrawn;
}

std::vector<void*> InstanceDirectory::List(const std::string& iid) const {
  const auto found = m_publications.find(iid);
  if (found == m_publications.end()) {
    return {};
  }
  std::vector<Publication> publications = found->second;
  std::sort(publications.begin(), publications.end(),
            [](const Publication& left, const Publication& right) { return left.driverId < right.driverId; });
  std::vector<void*> instances;
  instances.reserve(publications.size());
  for (const Publication& publication : publications) {
    instances.push_back(publication.instance);
  }
  return instances;
}

std::vector<unsigned long> InstanceDirectory::Publishers(const std::string& iid) const {
  std::vector<unsigned long> ids;
  const auto found = m_publications.find(iid);
  if (found != m_publications.end()) {
    for (const Publication& publication : found->second) {
      ids.push_back(publication.driverId);
    }
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

bool InstanceManager::RegisterQuery(const char* iid, void* instance) {
  const ServiceCall call(m_check, "RegisterQuery", ServiceCheck::From::Initialize);
  if (!call.IsAllowed() || iid == nullptr || instance == nullptr || std::string(iid) == DriverServices_IID ||
      !m_directory.Publish(m_driverId, iid, instance)) {
    return false;
  }
  m_check.NotePublished(iid, instance);
  return true;
}

void InstanceManager::UnregisterQuery(const char* iid) {
  const ServiceCall call(m_check, "UnregisterQuery");
  void* const instance = call.IsAllowed() && iid != nullptr ? m_directory.Withdraw(m_driverId, iid) : nullptr;
  if (instance != nullptr) {
    m_check.NoteWithdrawn(iid, instance);
  }
}

void* InstanceManager::Query(const char* iid) {
  const ServiceCall call(m_check, "Query");
  if (!call.IsAllowed() || iid == nullptr) {
    return nullptr;
  }
  return std::string(iid) == DriverServices_IID ? m_services : m_check.Shown(iid, m_directory.Find(iid));
}

void InstanceManager::FindDrivers(unsigned long, const char* iid, std::vector<void*>& instances) {
  instances.clear();
  const ServiceCall call(m_check, "FindDrivers");
  if (call.IsAllowed() && iid != nullptr) {
    instances = m_directory.List(iid);
    for (void*& instance : instances) {
      instance = m_check.Shown(iid, instance);
    }
  }
}

}  // namespace devhost
