#include "drivers/hostprobe/HostProbe.h"

#include <vector>

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/Report.h"
#include "drivers/hostprobe/ServiceChecks.h"
#include "drivers/hostprobe/StateChecks.h"
#include "drivers/hostprobe/XmlChecks.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/IVariableManager.h"
#include "host/UICmdDispatcher.h"

namespace drivers {

class HostProbe::Call {
 public:
  Call(HostProbe& probe, const char* operation) : m_probe(probe) {
    probe.NoteCall(operation);
    ++probe.m_depth;
  }
  ~Call() { --m_probe.m_depth; }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  HostProbe& m_probe;
};

HostProbe::HostProbe(IInstanceManager& instances)
    : ProbedDriver(instances, DriverMultiplicity_PerDevice),
      m_report(TheReport()),
      m_number(m_report.DriverBegins()),
      m_thread(std::this_thread::get_id()),
      m_events(*this, m_report) {
  const std::string wrong = CheckManagers();
  if (!wrong.empty()) {
    m_report.Note(Promise::LifeManagers, "during the construction, " + wrong);
  }
}

IDriver* HostProbe::Create(IInstanceManager& instances) {
  return new HostProbe(instances);
}

HostProbe::~HostProbe() {
  const Call call(*this, "the destructor");
  m_events.JudgeAll();
  m_config.Reset();
  const std::string wrong = CheckManagers();
  m_report.Note(Promise::LifeManagers, wrong.empty() ? "" : "during the destruction, " + wrong);
  GetInstanceManager().UnregisterQuery(IProbe_IID);
  m_report.Note(Promise::LifeThread, "");
  m_report.Note(Promise::LifeCommands,
                m_timesCommands == 1 ? "" : "RegisterCommands was called " + std::to_string(m_timesCommands) + " times");
  m_report.Note(Promise::LifeHandlers, m_handlersToken.use_count() == 1 ? "" : "the host still has handlers of commands");
  // A host may wait for the project before it asks a driver that has a state already.
  if (m_wasAsked || !m_hadState || m_events.Loads() != 0) {
    m_report.Note(Promise::StateAsked, m_wasAsked ? "" : "the driver was never asked for its state");
  }
  m_report.DriverEnds(m_number);
  if (!m_reportName.empty()) {
    m_report.LogSummary();
  }
}

void HostProbe::NoteCall(const char* operation) {
  if (std::this_thread::get_id() != m_thread) {
    m_report.Note(Promise::LifeThread, std::string(operation) + " was called on another thread than the constructor");
  }
  if (m_timesInitialized == 0) {
    m_report.Note(Promise::LifeFirst, std::string(operation) + " was called before Initialize");
  }
}

std::string HostProbe::CheckManagers() {
  Finding finding;
  std::vector<void*> found;
  GetDriverManager().FindDrivers(0, "host-probe.never", found);
  GetInstanceManager().Query("host-probe.never");
  finding.Unless(GetVariableManager() != nullptr, "there is no variable manager");
  return finding.Words();
}

int HostProbe::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  ++m_timesInitialized;
  const Call call(*this, "Initialize");
  const bool isFirst = m_timesInitialized == 1;
  if (isFirst) {
    m_reportName = config.GetNamedString("report");
    if (!m_reportName.empty()) {
      m_report.Open(m_reportName, "host_probe " SNMP_DRIVER_VERSION " as driver " + std::to_string(driverId));
    }
    m_report.Note(Promise::LifeFirst, "");
    m_driverId = driverId;
  }
  CheckInitialize(driverId, config, persisted);
  if (isFirst) {
    CheckAll(config, persisted);
    config.AddRef();
    m_config = h7::auto_com<H7XML::INode>(&config);
  }
  return 0;
}

void HostProbe::CheckInitialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  m_report.Check(Promise::LifeInitialize, [&] {
    Finding finding;
    finding.Compare("the result of the base's Initialize", H7BaseAgentDriver::Initialize(driverId, config, persisted), 0);
    finding.Compare("the driver's id", driverId, m_driverId);
    finding.Unless((static_cast<unsigned long long>(driverId) >> 32U) == 0, "the driver's id has more than 32 bits");
    return finding.Words();
  });
}

void HostProbe::CheckAll(const H7XML::INode& config, const H7XML::INode* persisted) {
  IInstanceManager& instances = GetInstanceManager();
  m_hadState = persisted != nullptr;
  std::vector<IProbe*> others = GetDriverManager().ListDrivers<IProbe>(0, IProbe_IID);
  if (m_reportName.empty()) {
    instances.RegisterQuery(IProbe_IID, static_cast<IProbe*>(this));
    DmInvalidateState();
    return;
  }
  CheckLog(m_report);
  CheckXml(m_report);
  CheckXmlOwnership(m_report);
  CheckTypedReaders(m_report);
  CheckConfiguration(m_report, config);
  CheckPublication(m_report, instances, GetDriverManager());
  if (GetVariableManager() != nullptr) {
    CheckVariables(m_report, *GetVariableManager());
  }
  m_report.Check(Promise::NotifyBorrowed, [this] { return Notify(); });
  CheckState();
  if (persisted != nullptr) {
    m_report.Check(Promise::StateReturned, [&] { return WhatIsWrongWithState(*persisted); });
  }
  instances.RegisterQuery(IProbe_IID, static_cast<IProbe*>(this));
  if (!others.empty()) {
    CheckPartner(*others.front());
  }
}

void HostProbe::CheckPartner(IProbe& partner) {
  IInstanceManager& instances = GetInstanceManager();
  m_report.Check(Promise::PublishEarliest, [&]() -> std::string {
    return instances.Query(IProbe_IID) == &partner ? "" : "Query does not return the publication that is the earlier one";
  });
  if (partner.GetDriverId() > m_driverId) {
    m_report.Check(Promise::PublishById, [&]() -> std::string {
      const std::vector<IProbe*> all = GetDriverManager().ListDrivers<IProbe>(0, IProbe_IID);
      return all.size() == 2 && all.front() == this && all.back() == &partner ? "" : "FindDrivers has another order";
    });
  }
  m_report.Check(Promise::PublishOwn, [&]() -> std::string {
    int thing = 0;
    instances.RegisterQuery("host-probe.own", &thing);
    const void* const found = partner.TryToWithdraw("host-probe.own");
    const bool isStillThere = instances.Query("host-probe.own") == &thing;
    instances.UnregisterQuery("host-probe.own");
    return found == &thing && isStillThere ? "" : "another driver does not find it, or withdraws it";
  });
  m_report.Check(Promise::NestedCalls, [&] { return partner.UseServices(*this); });
}

void HostProbe::CheckState() {
  m_report.Check(Promise::StateLater, [this]() -> std::string {
    DmInvalidateState();
    return m_wasAskedInside ? "GetPersistState was called from inside DmInvalidateState" : "";
  });
}

std::string HostProbe::Notify() {
  Finding finding;
  const h7::auto_com<H7XML::INode> node = H7XML::CreateXmlNode("HostProbe", "notification");
  ConSendDataToUI(*node);
  finding.Compare("GetName of a node that was sent", node->GetName(), "HostProbe");
  finding.Compare("GetValue of a node that was sent", node->GetValue(), "notification");
  return finding.Words();
}

h7::auto_com<H7XML::INode> HostProbe::GetPersistState(unsigned long) {
  const bool isInside = m_depth != 0;
  const Call call(*this, "GetPersistState");
  m_wasAsked = true;
  if (isInside) {
    m_wasAskedInside = true;
    m_report.Note(Promise::StateLater, "GetPersistState was called while the driver was being called");
  }
  return MakeState();
}

void HostProbe::RegisterCommands() {
  const Call call(*this, "RegisterCommands");
  if (++m_timesCommands > 1) {
    return;
  }
  if (m_config) {
    m_report.Check(Promise::OwnerConfig, [this] {
      Finding finding;
      finding.Compare("the report in the configuration, after Initialize", m_config->GetNamedString("report"), m_reportName);
      return finding.Words();
    });
    m_config.Reset();
  }
  const std::shared_ptr<int> token = m_handlersToken;
  UICmdDispatcher& commands = GetUICmdDispatcher();
  if (!m_reportName.empty()) {
    commands.RegisterUICmd("HostProbe", [this, token](const ICmdMessage& message) {
      const Call inside(*this, "the handler of HostProbe");
      CheckCommand(message);
      return H7XML::CreateXmlNode("HostProbe", m_report.Summary());
    });
    commands.RegisterUICmd("hostprobe", [this, token](const ICmdMessage&) {
      m_report.Note(Promise::CommandName, "the command reached the handler of \"hostprobe\"");
      return H7XML::CreateXmlNode("Fail", "");
    });
    m_report.LogSummary();
  }
}

void HostProbe::CheckCommand(const ICmdMessage& message) {
  m_report.Note(Promise::CommandName, "");
  m_report.Check(Promise::CommandParameters, [&] {
    Finding finding;
    finding.Compare("GetString of \"text\"", message.GetString("text"), "two \"words\" & <more>");
    finding.Compare("Has of \"text\"", message.Has("text"), true);
    finding.Compare("GetString of \"empty\"", message.GetString("empty"), "");
    finding.Compare("Has of \"empty\"", message.Has("empty"), true);
    finding.Compare("GetString of a missing parameter", message.GetString("absent"), "");
    finding.Compare("Has of a missing parameter", message.Has("absent"), false);
    return finding.Words();
  });
  m_report.Check(Promise::CommandNumbers, [&] {
    Finding finding;
    finding.Compare("GetULong of \"number\"", message.GetULong("number"), 4294967295UL);
    finding.Compare("GetULong of \"large\"", message.GetULong("large"), 0UL);
    finding.Compare("GetULong of \"word\"", message.GetULong("word"), 0UL);
    finding.Compare("GetULong of a missing parameter", message.GetULong("absent"), 0UL);
    return finding.Words();
  });
}

std::string HostProbe::UseServices(IProbe& caller) {
  const Call call(*this, "a call of another driver");
  DmInvalidateState();
  const std::string wrong = UseServicesAgain();
  return wrong.empty() ? caller.UseServicesAgain() : wrong;
}

std::string HostProbe::UseServicesAgain() {
  const Call call(*this, "a call of another driver");
  Finding finding;
  // One for all calls: a host that does not withdraw answers with an earlier one, which is a fault told elsewhere.
  static int thing = 0;
  IInstanceManager& instances = GetInstanceManager();
  instances.RegisterQuery("host-probe.nested", &thing);
  finding.Unless(instances.Query("host-probe.nested") == &thing, "Query does not find what a nested call has published");
  instances.UnregisterQuery("host-probe.nested");
  finding.Unless(GetDriverManager().ListDrivers<IProbe>(0, IProbe_IID).size() >= 2,
                 "FindDrivers does not find all drivers in a nested call");
  finding.Unless(GetVariableManager() != nullptr, "there is no variable manager in a nested call");
  Notify();
  EventChecks listeners(*this, m_report);
  return finding.Words();
}

void* HostProbe::TryToWithdraw(const char* iid) {
  GetInstanceManager().UnregisterQuery(iid);
  return GetInstanceManager().Query(iid);
}

}  // namespace drivers
