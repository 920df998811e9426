#include "tests/faults/Sweep.h"

#include "host/H7XML.h"

namespace faults {
namespace {

// The XML library keeps the memory of its last released objects for a while. Once this quarantine is full, each object that
// enters it frees another one, so the number of blocks stays the same.
void FillXmlQuarantine() {
  for (int i = 0; i != 1100; ++i) {
    H7XML::CreateXmlNode("x", "");
  }
}

}  // namespace

SweepResult Sweep(const std::function<bool(unsigned int k, std::vector<std::string>& complaints)>& attempt) {
  FillXmlQuarantine();
  SweepResult result;
  for (unsigned int k = 1;; ++k) {
    std::vector<std::string> complaints;
    const std::size_t blocks = LiveBlocks();
    const bool failed = attempt(k, complaints);
    const std::size_t blocksAfter = LiveBlocks();
    if (complaints.empty() && blocksAfter != blocks) {
      complaints.push_back(std::to_string(blocks) + " blocks of memory became " + std::to_string(blocksAfter));
    }
    for (const std::string& complaint : complaints) {
      result.complaints.push_back("k = " + std::to_string(k) + ": " + complaint);
    }
    if (!failed || !complaints.empty()) {
      return result;
    }
    ++result.faults;
  }
}

SweepResult Sweep(const Operation& operation, const FaultKind& kind, const CallBack* callBack) {
  const Reference reference = ReferenceOf(operation);
  return Sweep([&](unsigned int k, std::vector<std::string>& complaints) {
    return Attempt(operation, reference, kind, k, callBack, complaints).Run();
  });
}

}  // namespace faults
