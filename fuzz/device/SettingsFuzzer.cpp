// Takes any text as the settings that the tool sends for a device that holds nothing. The first byte says what is wrong with
// the device.
#include "fuzz/agent/Twins.h"
#include "fuzz/support/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using fuzz::Operation;
  fuzz::Input input(data, size);
  const unsigned int trouble = input.Byte();

  fuzz::Twins twins;
  twins.Start();
  Operation operation;
  operation.kind = Operation::Kind::SetFile;
  operation.text = "old\n";
  twins.Play(operation);
  operation.kind = Operation::Kind::SetStatus;
  operation.number = trouble % 2;  // copying from it, or to it
  constexpr int kStatuses[4] = {0, 0, -9, 1};
  operation.status = kStatuses[trouble / 2 % 4];
  twins.Play(operation);
  operation.kind = Operation::Kind::Announce;
  operation.id = 7;
  twins.Play(operation);

  operation.kind = Operation::Kind::Command;
  operation.text = "SetDeviceState";
  operation.parameters = {{"xml", input.Rest()}};
  twins.Play(operation);
  operation.text = "GetDeviceList";
  operation.parameters.clear();
  twins.Play(operation);
  return 0;
}
