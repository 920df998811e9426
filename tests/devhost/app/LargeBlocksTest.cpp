#include "devhost/app/LargeBlocks.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/module/Shell.h"

namespace devhost {
namespace {

using testing::Contains;
using testing::HasSubstr;

// What the kernel says of the mapping that holds `address`: its flags, by their two letters.
std::vector<std::string> FlagsOfTheMappingAt(std::uintptr_t address) {
  std::ifstream mappings("/proc/self/smaps");
  bool isInside = false;
  for (std::string line; std::getline(mappings, line);) {
    std::istringstream words(line);
    std::uintptr_t from = 0;
    std::uintptr_t to = 0;
    char dash = 0;
    if (words >> std::hex >> from >> dash >> to && dash == '-') {
      isInside = from <= address && address < to;
    } else if (isInside && line.compare(0, 8, "VmFlags:") == 0) {
      std::istringstream flags(line.substr(8));
      return {std::istream_iterator<std::string>(flags), std::istream_iterator<std::string>()};
    }
  }
  return {};
}

bool KernelKnowsHugePages() {
  return std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled").good();
}

TEST(ALargeBlock, IsAskedToBeBackedWithHugePagesFromItsFirstByte) {
  char* const block = static_cast<char*>(AllocateLargeBlock(kLargeBlock));
  ASSERT_NE(block, nullptr);
  block[0] = 'a';
  block[kLargeBlock - 1] = 'z';
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  EXPECT_EQ(address % (2 * 1024 * 1024), 0U);
  if (KernelKnowsHugePages()) {
    EXPECT_THAT(FlagsOfTheMappingAt(address), Contains("hg"));
  }
  std::free(block);
}

// Sanitizers end a process that asks for so much.
#ifdef DEVHOST_BRINGS_OPERATOR_NEW
TEST(ALargeBlock, IsNullWhenThereIsNoMemory) {
  EXPECT_EQ(AllocateLargeBlock(std::numeric_limits<std::size_t>::max() / 2), nullptr);
}

TEST(TheProgram, BringsTheOperatorNewThatItsModulesUse) {
  const ShellResult symbols = RunInShell("nm --dynamic --defined-only '" DEVHOST_PROGRAM "'");
  EXPECT_EQ(symbols.status, 0) << symbols.output;
  EXPECT_THAT(symbols.output, HasSubstr(sizeof(std::size_t) == 8 ? "T _Znwm" : "T _Znwj"));
}
#endif

}  // namespace
}  // namespace devhost
