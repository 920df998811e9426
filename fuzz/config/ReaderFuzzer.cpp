// Fills the settings of a device from any text. The first two bytes say what the device holds before.
#include <boost/make_shared.hpp>

#include "agent/SNMPConfigurationAgent.h"
#include "device/SNMPDevice.h"
#include "fuzz/support/Input.h"
#include "tests/config/SectionModels.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"

namespace {

void Start(bool held, bool wasErased, section_models::Word& word, std::string& value, bool& erased) {
  word.value = value = held ? "held" : "";
  word.erased = erased = wasErased;
}

bool Bit(unsigned int bits, unsigned int place) {
  return (bits >> place & 1U) != 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Journal journal;
  static RecordingHost host(journal);
  static HostedAgent agent(host);

  fuzz::Input input(data, size);
  const unsigned int held = input.Byte();
  const unsigned int erased = input.Byte();
  const std::string text = input.Rest();

  testsupport::RecordingDevice device(7, journal);
  section_models::Device model;
  Start(Bit(held, 0), Bit(erased, 0), model.communityRead, device.communityRead, device.communityReadErased);
  Start(Bit(held, 1), Bit(erased, 1), model.communityWrite, device.communityWrite, device.communityWriteErased);
  Start(Bit(held, 2), Bit(erased, 2), model.sysContact, device.sysContact, device.sysContactErased);
  Start(Bit(held, 3), Bit(erased, 3), model.sysLocation, device.sysLocation, device.sysLocationErased);
  Start(Bit(held, 4), Bit(erased, 4), model.sysName, device.sysName, device.sysNameErased);
  if (Bit(held, 5)) {
    model.traps.emplace_back("held", "", "");
  }
  device.trapTargets = model.traps;
  model.trapsErased = device.trapTargetsErased = Bit(erased, 5);
  model.agentXTimeout = "6";

  const auto record = boost::make_shared<SNMPDevice>(7, &device);
  record->SetConfig(text);
  agent->MergeFromConfig(record);
  journal.Take();
  section_models::Fill(text, model);

  fuzz::RequireSame("communityRead", device.communityRead, model.communityRead.value);
  fuzz::RequireSame("communityWrite", device.communityWrite, model.communityWrite.value);
  fuzz::RequireSame("sysContact", device.sysContact, model.sysContact.value);
  fuzz::RequireSame("sysLocation", device.sysLocation, model.sysLocation.value);
  fuzz::RequireSame("sysName", device.sysName, model.sysName.value);
  fuzz::RequireSame("trapTargets", testsupport::TrapText(device.trapTargets), testsupport::TrapText(model.traps));
  fuzz::RequireSame("agentXTimeout", record->GetAgentXTimeout(), model.agentXTimeout);
  fuzz::RequireSame("agentXRetries", record->GetAgentXRetries(), "2");
  fuzz::RequireSame("config", record->GetConfig(), text);
  return 0;
}
