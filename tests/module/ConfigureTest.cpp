#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

#include "tests/module/Shell.h"
#include "tests/support/ScratchFolder.h"

namespace {

// Configures the project in that folder.
ShellResult ConfigureIn(const testsupport::ScratchFolder& build, const std::string& arguments) {
  return RunInShell("'" CMAKE_PROGRAM "' -S '" SOURCE_FOLDER "' -B '" + build.Path() +
                    "' -G '" CMAKE_GENERATOR_NAME "' -DCMAKE_CXX_COMPILER='" COMPILER "' -DCMAKE_CXX_COMPILER_WORKS=ON " +
                    arguments);
}

ShellResult Configure(const std::string& number) {
  return ConfigureIn(
      testsupport::ScratchFolder(),
      "-DAGENT_TESTS=OFF -DAGENT_SSH_DRIVER=OFF -DAGENT_SNMP_CLIENT=OFF -DAGENT_LINE_EDITOR=OFF '-DSNMP_ENTERPRISE_NUMBER=" +
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

// What CMake has found of other packages stands in its cache, one "NAME_DIR" for each package, one entry for each library.
TEST(TheBuildForAProduct, LooksForNothingButHeadersOfBoost) {
  const testsupport::ScratchFolder build;
  const ShellResult result =
      ConfigureIn(build,
                  "-DAGENT_PRODUCT=ON -DCMAKE_DISABLE_FIND_PACKAGE_pugixml=ON -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON"
                  " -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -DCMAKE_DISABLE_FIND_PACKAGE_Threads=ON");
  EXPECT_EQ(result.status, 0) << result.output;
  std::istringstream cache(build.Read("CMakeCache.txt"));
  std::set<std::string> found;
  for (std::string line; std::getline(cache, line);) {
    const std::string name = line.substr(0, line.find(':'));
    const bool isBoost = name.compare(0, 6, "Boost_") == 0 || name.compare(0, 6, "boost_") == 0;
    const bool isOfCMake = name.compare(0, 6, "CMAKE_") == 0 || name.compare(0, 6, "snmp_c") == 0;
    if (!isBoost && !isOfCMake && (line.find(":PATH=") != line.npos || line.find(":FILEPATH=") != line.npos)) {
      found.insert(name);
    }
  }
  EXPECT_THAT(found, testing::IsEmpty());
}

}  // namespace
