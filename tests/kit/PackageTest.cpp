// What an author reads when the installed kit is not the one that the driver needs.

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <string>

#include "tests/kit/InstalledKit.h"

namespace {

using testing::HasSubstr;
using testsupport::ScratchFolder;

// Returns what CMake says about a project that looks for the kit in `prefix` with these arguments, on one line.
ShellResult Find(const std::string& arguments, const std::string& prefix = InstalledKit::Get().Path()) {
  const ScratchFolder folder;
  folder.Write("CMakeLists.txt",
               "cmake_minimum_required(VERSION 3.25)\nproject(mine VERSION 1.0 LANGUAGES NONE)\n"
               "find_package(snmp-driver-kit " +
                   arguments + ")\nmessage(\"found: ${snmp-driver-kit_FOUND}\")\n");
  ShellResult result =
      RunInShell("'" CMAKE_PROGRAM "' -S '" + folder.Path() + "' -B '" + folder.Path("build") +
                 "' -DCMAKE_CXX_COMPILER='" COMPILER "' -DCMAKE_CXX_COMPILER_WORKS=ON -DCMAKE_PREFIX_PATH='" + prefix + "'");
  std::string line;
  for (const char c : result.output) {
    const char next = c == '\n' ? ' ' : c;
    line += next == ' ' && !line.empty() && line.back() == ' ' ? "" : std::string(1, next);
  }
  result.output = line;
  return result;
}

TEST(TheKit, IsFoundWithAllItsComponentsAndWithTheVersionsThatItServes) {
  for (const char* const version : {"", "1", "1.0", PROJECT_VERSION}) {
    const ShellResult result = Find(std::string(version) + " REQUIRED COMPONENTS kit devhost module drivers contract-1");
    EXPECT_EQ(result.status, 0) << version << result.output;
    EXPECT_THAT(result.output, HasSubstr("found: 1")) << version;
  }
}

TEST(AWrongVersionOfTheKit, IsRefusedWithWhatToInstall) {
  for (const char* const version : {"2.0", "1.7", "0.9"}) {
    const ShellResult result = Find(std::string(version) + " REQUIRED");
    EXPECT_NE(result.status, 0) << version;
    EXPECT_THAT(result.output,
                HasSubstr(std::string("version: " PROJECT_VERSION ", but the driver asks for ") + version +
                          ": install snmp-driver-kit " + version + " or a later one of version " + version[0]))
        << version;
  }
}

TEST(AnotherContract, IsRefusedWithWhatToInstall) {
  const ShellResult result = Find("1.0 REQUIRED COMPONENTS contract-2");
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("this driver is written for contract 2, and the kit in " +
                                       InstalledKit::Get().Path().substr(0, InstalledKit::Get().Path().size() - 1) +
                                       " has contract 1: install a kit with contract 2, or port the driver and ask for "
                                       "contract-1."));
}

TEST(AnUnknownComponent, IsRefusedWithThoseThatThereAre) {
  const ShellResult result = Find("1.0 REQUIRED COMPONENTS program");
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.output,
              HasSubstr("there is no component \"program\"; allowed: kit, devhost, module, drivers, contract-N."));
}

TEST(AComponentThatIsNotInstalled, IsNamedWithTheCommandThatInstallsIt) {
  const ScratchFolder folder;
  const ShellResult installed =
      RunInShell("'" CMAKE_PROGRAM "' --install '" BUILD_FOLDER "' --component kit --prefix '" + folder.Path("kit") + "'");
  ASSERT_EQ(installed.status, 0) << installed.output;
  EXPECT_EQ(Find("1.0 REQUIRED COMPONENTS contract-1", folder.Path("kit")).status, 0);
  const std::map<std::string, std::string> packages{
      {"devhost", "devhost"}, {"module", "snmp-configuration-agent"}, {"drivers", "snmp-device-drivers"}};
  for (const auto& [component, package] : packages) {
    const ShellResult result = Find("1.0 REQUIRED COMPONENTS " + component, folder.Path("kit"));
    EXPECT_NE(result.status, 0) << component;
    EXPECT_THAT(result.output,
                HasSubstr("the component \"" + component + "\" is not installed beside the kit in " + folder.Path("kit") +
                          ": install the package " + package +
                          " of version " PROJECT_VERSION ", or what a build has: cmake --install BUILD --prefix " +
                          folder.Path("kit") + " --component " + component + "."));
  }
  const ShellResult optional = Find("1.0 OPTIONAL_COMPONENTS devhost", folder.Path("kit"));
  EXPECT_EQ(optional.status, 0);
  EXPECT_THAT(optional.output, HasSubstr("found: 1"));
}

}  // namespace
