// Does each operation of the agent once, and counts instructions only during the operation. Meant to run under
// `valgrind --tool=callgrind --instr-atstart=no`, which writes one file of figures for each operation and names the
// operation in the file's "desc: Trigger" line; `scripts/bench instructions` makes a table of them. Without valgrind it only
// does the work.

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/BenchDevice.h"
#include "bench/BenchHost.h"
#include "bench/BenchTexts.h"
#include "bench/LoadedAgent.h"
#include "devhost/check/CheckFile.h"
#include "devhost/driver/CommandMessage.h"
#include "devhost/xml/XmlReader.h"
#include "device/DeviceSettingsElement.h"
#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "tests/support/AgentAccess.h"

namespace {

void Must(bool good, const char* what) {
  if (!good) {
    std::fprintf(stderr, "instructions_bench: %s failed\n", what);
    std::exit(1);
  }
}

// Counts one run of `work`.
template <class Work>
void Count(const char* name, Work work) {
  CALLGRIND_START_INSTRUMENTATION;
  CALLGRIND_ZERO_STATS;
  work();
  CALLGRIND_DUMP_STATS_AT(name);
  CALLGRIND_STOP_INSTRUMENTATION;
}

// Counts a second run of `work`. The first run binds symbols and fills the allocator, which is not to be counted.
template <class Work>
void CountWarm(const char* name, Work work) {
  work();
  Count(name, work);
}

// A command of the tool with one parameter.
struct Message {
  Message(const std::string& name, const std::string& value) : parameters{{name, value}}, message(parameters) {}
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;

  const devhost::Parameters parameters;
  const devhost::CommandMessage message;
};

// An agent with `deviceCount` devices. Each has a file of some 5 KB that already has a section.
class System {
 public:
  explicit System(unsigned long deviceCount) : agent(host), access(agent) {
    const std::string foreign = ForeignText(5000);
    for (unsigned long id = 1; id <= deviceCount; ++id) {
      devices.push_back(std::make_unique<BenchDevice>(foreign));
      agent.AddSNMPDevice(id, devices.back().get());
      Must(SetDeviceState(Message("xml", SettingsXml(id))), "SetDeviceState");
    }
  }

  bool SetDeviceState(const Message& settings) {
    return agent.OnReqSetDeviceState(settings.message)->GetName() == std::string("Success");
  }

  std::vector<std::unique_ptr<BenchDevice>> devices;  // they outlive the agent
  BenchHost host;
  SNMPConfigurationAgent agent;
  SNMPConfigurationAgentTestAccess access;
};

void CountLoad(const char* module) {
  BenchHost host;
  const auto config = H7XML::CreateXmlNode("config", "");
  std::make_unique<LoadedAgent>(module, host, *config);
  std::unique_ptr<LoadedAgent> loaded;
  Count("load-to-initialised", [&] { loaded = std::make_unique<LoadedAgent>(module, host, *config); });
}

void CountLists() {
  for (const unsigned long count : {10UL, 1000UL, 10000UL}) {
    System system(count);
    const Message nothing("", "");
    const std::string name = "GetDeviceList/" + std::to_string(count);
    const auto work = [&] { system.agent.OnReqGetDeviceList(nothing.message); };
    CountWarm(name.c_str(), work);
    for (const auto& device : system.devices) {
      Must(device->filesRead == 3U && device->filesWritten == 1, "one read for each listed device");
    }
  }
}

void CountSetDeviceState() {
  System system(10);
  const std::string xml = SettingsXml(5);
  const Message settings("xml", xml);
  CountWarm("SetDeviceState", [&] { Must(system.SetDeviceState(settings), "SetDeviceState"); });
  CountWarm("SetDeviceState: parse", [&] { Must(bool(H7XML::CreateXmlDocument(xml)), "parse"); });
  const auto document = H7XML::CreateXmlDocument(xml);
  const auto root = document->GetRootElement();
  const boost::shared_ptr<SNMPDevice> device = system.access.devices[5];
  CountWarm("SetDeviceState: apply", [&] { device_settings::Apply(*root, *device); });
  CountWarm("SetDeviceState: read", [&] { Must(system.agent.ReadConfig(device) == 0, "read"); });
  CountWarm("SetDeviceState: write", [&] { Must(system.agent.WriteConfig(device) == 0, "write"); });
  CountWarm("SetDeviceState: notify", [&] { system.agent.MySendDataToUI("DeviceChanged", 5, -1); });
}

// A device that already holds its targets. The instructions for each line are the same, however many lines there are.
void CountTrapLines() {
  System system(1);
  BenchDevice& device = *system.devices.front();
  const boost::shared_ptr<SNMPDevice> record = system.access.devices[1];
  for (const unsigned long count : {1000UL, 10000UL}) {
    std::string lines;
    for (unsigned long i = 0; i != count; ++i) {
      lines += "trap2sink  10.0.0.5  public  162\n";
    }
    device.SetTrapTargetsSetting(std::vector<TrapTarget>(count, TrapTarget("10.0.0.5", "public", "162")));
    record->SetConfig("# Halvoren Section Start\n" + lines + "# Halvoren Section End\n");
    const std::string name = "MergeFromConfig: trap lines/" + std::to_string(count);
    CountWarm(name.c_str(), [&] { system.agent.MergeFromConfig(record); });
  }
}

// Each line costs the same, however many there are: of all kinds that are compared with other lines.
void CountCheck() {
  for (const unsigned long count : {1000UL, 100000UL}) {
    std::string text = "# Halvoren Section Start\nsysName  box\n# Halvoren Section End\n\n";
    for (unsigned long i = 0; i < count; i += 4) {
      const std::string number = std::to_string(100000 + i);
      text += "rocommunity  reader" + number + "  10.0.0.0/8\ntrap2sink  host" + number +
              "  trapper\n# comment\nview  all  included  .1\n";
    }
    const std::string name = "check: lines/" + std::to_string(count);
    CountWarm(name.c_str(), [&] { Must(devhost::CheckText(text, "text", {}).findings.empty(), "check"); });
  }
}

void CountRegistry() {
  System system(1000);
  BenchDevice late("");
  const Message id("deviceId", "500");
  CountWarm("AddManagedDevice", [&] { system.agent.OnReqAddManagedDevice(id.message); });
  CountWarm("RebootController", [&] { system.agent.OnReqRebootController(id.message); });
  CountWarm("AddSNMPDevice + DeleteSNMPDevice", [&] {
    system.agent.AddSNMPDevice(5000, &late);
    system.agent.DeleteSNMPDevice(5000);
  });
  CountWarm("ISNMPConfigurationAgent::SetDeviceState", [&] { Must(system.agent.SetDeviceState(500), "it"); });
}

h7::auto_com<H7XML::INode> Event(const std::string& name, unsigned long device, unsigned long variable) {
  return devhost::ReadXmlNode("<event name=\"" + name + "\"><parameter name=\"iddevice\">" + std::to_string(device) +
                              "</parameter><parameter name=\"idvariable\">" + std::to_string(variable) +
                              "</parameter></event>");
}

void CountVariables() {
  System system(0);
  for (unsigned long i = 0; i != 1000; ++i) {
    devhost::VariableEntry entry;
    entry.deviceId = 1 + i / 10;
    entry.variableId = 1 + i % 10;
    entry.name = "variable";
    system.host.variables.Add(entry);
  }
  system.agent.Initialize(1, *H7XML::CreateXmlNode("config", ""), nullptr);
  const auto loaded = devhost::ReadXmlNode("<event name=\"OnProjectLoaded\"/>");
  CountWarm("OnProjectLoaded/1000", [&] { system.agent.OnSystemEvent(*loaded); });
  Must(system.access.deviceVariables.size() == 1000, "OnProjectLoaded");
  CountWarm("GetPersistState/1000", [&] { system.agent.GetPersistState(0); });
  const auto state = system.agent.GetPersistState(0);
  CountWarm("FromXml/1000", [&] { system.agent.FromXml(state.Get()); });
  const auto removed = Event("OnVariableRemoved", 50, 5);
  const auto added = Event("OnVariableAdded", 50, 5);
  CountWarm("OnVariableRemoved + OnVariableAdded", [&] {
    system.agent.OnSystemEvent(*removed);
    system.agent.OnSystemEvent(*added);
  });
  Must(system.access.deviceVariables.size() == 1000, "OnVariableAdded");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: instructions_bench AGENT_MODULE\n");
    return 2;
  }
  CountLoad(argv[1]);
  CountRegistry();
  CountTrapLines();
  CountCheck();
  CountSetDeviceState();
  CountVariables();
  CountLists();
  return 0;
}
