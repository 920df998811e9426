// Plays sessions: devices come and go, the tool and the host call, calls nest, and now and then something fails.
#include "fuzz/agent/Session.h"
#include "fuzz/agent/Twins.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  fuzz::Twins twins;
  twins.Start();
  for (int steps = 0; steps != 100 && !input.AtEnd(); ++steps) {
    const fuzz::Step step = fuzz::ReadStep(input);
    twins.Play(step.operation, step.plans);
  }
  fuzz::Operation end;
  end.kind = fuzz::Operation::Kind::Destroy;
  twins.Play(end);
  return 0;
}
