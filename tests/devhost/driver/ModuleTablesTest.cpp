#include "devhost/driver/ModuleTables.h"

#include <gmock/gmock.h>

#include <string>

#include "devhost/driver/DriverModule.h"
#include "devhost/system/FileText.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Not;
using testing::StartsWith;

std::string TextOfAgent() {
  return ReadRegularFile(MODULE_FOLDER "/snmp_configuration_agent.so");
}

TEST(TheTablesOfAModule, HoldWhatItTakesAndOffers) {
  const ModuleTables tables = ReadModuleTables(TextOfAgent(), "agent.so");
  EXPECT_THAT(tables.taken, AllOf(Contains("_Z11LogXMessagejPKcz"), Not(Contains("GetCreationFunc"))));
  EXPECT_THAT(tables.offered, AllOf(Contains("GetCreationFunc"), Contains("versionString")));
  EXPECT_THAT(tables.offered, Not(Contains("_Z11LogXMessagejPKcz")));
  EXPECT_THAT(tables.libraries, Contains(StartsWith("libstdc++.so")));
}

void ExpectRefusal(const std::string& file, const std::string& problem) {
  try {
    ReadModuleTables(file, "it");
    FAIL();
  } catch (const ModuleError& error) {
    EXPECT_EQ(error.what(), "\"it\" is " + problem);
  }
}

TEST(AFileThatIsNotAModule, HasNoTables) {
  ExpectRefusal("", "not a module: it is not an ELF file");
  ExpectRefusal(std::string(4096, 'x'), "not a module: it is not an ELF file");
  std::string other = TextOfAgent();
  other[4] = static_cast<char>(3 - other[4]);
  ExpectRefusal(other, "for another processor than this host");
}

TEST(AModuleThatIsCutOff, IsRefusedOrHasLess) {
  const std::string whole = TextOfAgent();
  for (std::size_t size = 0; size < whole.size(); size += 997) {
    try {
      const ModuleTables tables = ReadModuleTables(whole.substr(0, size), "it");
      EXPECT_LE(tables.taken.size(), ReadModuleTables(whole, "it").taken.size());
    } catch (const ModuleError&) {
      continue;
    }
  }
}

}  // namespace
}  // namespace devhost
