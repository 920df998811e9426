// Puts a new section into any old text.
#include "config/ManagedSection.h"
#include "config/SectionMerge.h"
#include "fuzz/support/Input.h"
#include "tests/config/SectionModels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string old(reinterpret_cast<const char*>(data), size);
  const std::string merged = managed_section::Merge("NEW\n", old);
  fuzz::RequireSame("merged", merged, section_models::Merge("NEW\n", old));

  // A section that the agent itself has written is replaced, and nothing below it changes.
  const managed_section::Texts texts = managed_section::FixedTexts();
  const std::string section = texts.header + "then\n\n\n" + texts.trailer;
  const std::string once = managed_section::Merge(section, old);
  fuzz::RequireSame("merged again", managed_section::Merge(section, once), once);
  return 0;
}
