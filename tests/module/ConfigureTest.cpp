#include <gmock/gmock.h>

#include <algorithm>

#include "tests/module/Shell.h"
#include "tests/support/ScratchFolder.h"

namespace {

// Configures the project in a scratch folder.
ShellResult Configure(const std::string& number) {
  const testsupport::ScratchFolder build;
  return RunInShell("'" CMAKE_PROGRAM "' -S '" SOURCE_FOLDER "' -B '" + build.Path() +
                    "' -G '" CMAKE_GENERATOR_NAME "' -DCMAKE_CXX_COMPILER='" COMPILER
                    "' -DCMAKE_CXX_COMPILER_WORKS=ON"
                    " -DAGENT_TESTS=OFF '-DSNMP_ENTERPRISE_NUMBER=" +
                    number + "'");
}

TEST(AnEnterpriseNumberThatIsNotDecimal, IsRefusedWhenTheBuildIsConfigured) {
  for (const char* number : {"12x", "", "-1", "1.2", " 7"}) {
    const ShellResult result = Configure(number);
    EXPECT_NE(result.status, 0) << number;
    std::string message = result.output;
    std::replace(message.begin(), message.end(), '\n', ' ');
    EXPECT_THAT(message, testing::HasSubstr("SNMP_ENTERPRISE_NUMBER is \"" + std::string(number) + "\"")) << number;
    EXPECT_THAT(message, testing::HasSubstr("give decimal digits only")) << number;
  }
}

TEST(AnEnterpriseNumberOfDigits, IsAccepted) {
  const ShellResult result = Configure("8072");
  EXPECT_EQ(result.status, 0) << result.output;
}

}  // namespace
