#include "drivers/hostprobe/ServiceChecks.h"

#include <algorithm>
#include <string>
#include <vector>

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/Report.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/LogXMessage.h"

namespace drivers {
namespace {

// What the checks publish: its address is all that counts.
class Publication {
 public:
  Publication(IInstanceManager& instances, const char* iid) : m_instances(instances), m_iid(iid) {
    m_result = m_instances.RegisterQuery(m_iid, &m_thing);
  }
  ~Publication() { m_instances.UnregisterQuery(m_iid); }
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

  bool Result() const { return m_result; }
  void* Thing() { return &m_thing; }

 private:
  IInstanceManager& m_instances;
  const char* const m_iid;
  int m_thing = 0;
  bool m_result = false;
};

std::string CheckBefore(IInstanceManager& instances, IDriverManager& drivers) {
  Finding finding;
  std::vector<void*> found;
  drivers.FindDrivers(0, "host-probe.never", found);
  finding.Unless(instances.Query("host-probe.never") == nullptr, "Query returns what nobody has published");
  finding.Unless(found.empty(), "FindDrivers returns what nobody has published");
  return finding.Words();
}

std::string CheckFound(IInstanceManager& instances) {
  Finding finding;
  Publication publication(instances, "host-probe.found");
  finding.Unless(publication.Result(), "RegisterQuery returns false");
  finding.Unless(instances.Query("host-probe.found") == publication.Thing(), "Query does not return what was published");
  return finding.Words();
}

std::string CheckOnce(IInstanceManager& instances) {
  Finding finding;
  Publication publication(instances, "host-probe.once");
  int other = 0;
  finding.Unless(!instances.RegisterQuery("host-probe.once", &other), "RegisterQuery takes an identifier a second time");
  finding.Unless(instances.Query("host-probe.once") == publication.Thing(), "the second publication replaces the first");
  return finding.Words();
}

std::string CheckNull(IInstanceManager& instances) {
  Finding finding;
  int thing = 0;
  finding.Unless(!instances.RegisterQuery("host-probe.null", nullptr), "RegisterQuery takes a null instance");
  finding.Unless(!instances.RegisterQuery(nullptr, &thing), "RegisterQuery takes a null identifier");
  instances.UnregisterQuery("host-probe.null");
  return finding.Words();
}

std::string CheckCopied(IInstanceManager& instances) {
  Finding finding;
  std::string iid = "host-probe.copied";
  int thing = 0;
  instances.RegisterQuery(iid.c_str(), &thing);
  std::replace(iid.begin(), iid.end(), 'c', 'x');
  finding.Unless(instances.Query("host-probe.copied") == &thing,
                 "what was published is not found after its text has changed");
  instances.UnregisterQuery("host-probe.copied");
  instances.UnregisterQuery(iid.c_str());
  Publication lower(instances, "host-probe.case");
  Publication upper(instances, "HOST-PROBE.CASE");
  finding.Unless(instances.Query("host-probe.case") == lower.Thing() && instances.Query("HOST-PROBE.CASE") == upper.Thing(),
                 "identifiers that differ in case are taken for the same");
  return finding.Words();
}

std::string CheckListed(IInstanceManager& instances, IDriverManager& drivers) {
  Finding finding;
  Publication publication(instances, "host-probe.listed");
  int old = 0;
  std::vector<void*> found{&old};
  drivers.FindDrivers(0, "host-probe.listed", found);
  finding.Unless(found == std::vector<void*>{publication.Thing()}, "FindDrivers returns " + std::to_string(found.size()) +
                                                                       " instances, not exactly the one that was published");
  return finding.Words();
}

std::string CheckWithdrawn(IInstanceManager& instances, IDriverManager& drivers) {
  Finding finding;
  { const Publication publication(instances, "host-probe.withdrawn"); }
  std::vector<void*> found;
  drivers.FindDrivers(0, "host-probe.withdrawn", found);
  finding.Unless(instances.Query("host-probe.withdrawn") == nullptr, "Query returns what was withdrawn");
  finding.Unless(found.empty(), "FindDrivers returns what was withdrawn");
  instances.UnregisterQuery("host-probe.withdrawn");
  const Publication again(instances, "host-probe.withdrawn");
  finding.Unless(instances.Query("host-probe.withdrawn") != nullptr, "what was withdrawn cannot be published again");
  return finding.Words();
}

}  // namespace

void CheckPublication(Report& report, IInstanceManager& instances, IDriverManager& drivers) {
  report.Check(Promise::PublishBefore, [&] { return CheckBefore(instances, drivers); });
  report.Check(Promise::PublishFound, [&] { return CheckFound(instances); });
  report.Check(Promise::PublishOnce, [&] { return CheckOnce(instances); });
  report.Check(Promise::PublishNull, [&] { return CheckNull(instances); });
  report.Check(Promise::PublishCopied, [&] { return CheckCopied(instances); });
  report.Check(Promise::PublishListed, [&] { return CheckListed(instances, drivers); });
  report.Check(Promise::PublishWithdrawn, [&] { return CheckWithdrawn(instances, drivers); });
}

void CheckLog(Report& report) {
  report.Check(Promise::LogReturns, [] {
    LogXMessage(3, "host_probe: log: %s, %d, %lu, 100%%", "text", -1, 4294967295UL);
    LogXMessage(3, "host_probe: a long line: %s", std::string(10000, '.').c_str());
    return std::string();
  });
}

}  // namespace drivers
