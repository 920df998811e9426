// What is installed, and that drivers are built and work with nothing else.

#include <gmock/gmock.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/kit/InstalledKit.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testsupport::ScratchFolder;

using Names = std::set<std::string>;

constexpr char kModules[] = "lib/snmp-configuration-agent/1/";

ShellResult InKit(const std::string& command, const ScratchFolder& folder) {
  return InstalledKit::Get().Run(command, folder.Path());
}

// Returns the names of all files below `folder` whose content, text or not, holds `text`.
Names FilesWith(const std::string& text, const std::string& folder) {
  Names names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && ScratchFolder::ReadFile(entry.path().string()).find(text) != std::string::npos) {
      names.insert(entry.path().string());
    }
  }
  return names;
}

TEST(TheInstalledKit, NamesNeitherTheFolderOfItsBuildNorTheOneThatItWasInstalledInto) {
  const InstalledKit& kit = InstalledKit::Get();
  EXPECT_THAT(FilesWith(kit.FirstPath(), kit.Path()), IsEmpty());
  EXPECT_THAT(FilesWith(BUILD_FOLDER, kit.Path()), IsEmpty());
}

TEST(TheInstalledProgram, FindsItsLibraryAndTheAgentWhereverTheyAre) {
  const ScratchFolder folder;
  const ShellResult result = InKit("echo 'command GetDeviceList' | devhost run -", folder);
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output,
              HasSubstr("load agent 1 " + InstalledKit::Get().Path(kModules) + "snmp_configuration_agent.so\n"));
  EXPECT_THAT(result.output, HasSubstr("reply agent <managedDevices/>\n"));
}

TEST(ANewDriver, IsBuiltAndTestedWithCMake) {
  const ScratchFolder folder;
  const ShellResult result = InKit(
      "devhost new-driver tea_kettle new && cd new && cmake --preset release && cmake --build build && "
      "ctest --test-dir build --output-on-failure && "
      "devhost conform --level full --duration 1 --strict build/tea_kettle.so && devhost module build/tea_kettle.so && nm "
      "-D --defined-only "
      "build/tea_kettle.so",
      folder);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("100% tests passed, 0 tests failed out of 2"));
  EXPECT_THAT(result.output, HasSubstr("\nconforms: "));
  EXPECT_THAT(result.output, HasSubstr("version 1.0.0\ncontract 1\nprocessor "));
  EXPECT_THAT(result.output, testing::ContainsRegex("processor [a-z0-9]+\n[0-9a-f]+ T GetCreationFunc\n[0-9a-f]+ [BDR] "
                                                    "versionString\n$"));
}

TEST(ANewDriver, IsBuiltAndTestedWithPkgConfigAndMake) {
  const ScratchFolder folder;
  const ShellResult result = InKit(
      "devhost new-driver tea_kettle new && cd new && rm CMakeLists.txt && make CXX=\"$CXX\" check && "
      "devhost module build/tea_kettle.so && nm -D --defined-only build/tea_kettle.so",
      folder);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("version 1.0.0\ncontract 1\nprocessor "));
  EXPECT_THAT(result.output, testing::ContainsRegex("processor [a-z0-9]+\n[0-9a-f]+ T GetCreationFunc\n[0-9a-f]+ [BDR] "
                                                    "versionString\n$"));
}

TEST(ANewDriversSession, FailsWhenTheDriverIsWrong) {
  const ScratchFolder folder;
  const ShellResult result = InKit(
      "devhost new-driver tea_kettle new && cd new && sed -i 's/m_file->Replace(config)/0/' TeaKettle.cpp && "
      "make CXX=\"$CXX\" check",
      folder);
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("2 expectations not met; first: session.devhost:7"));
}

TEST(ADriverThatOnlyWarns, FailsItsTestWhenThatIsStrict) {
  const ScratchFolder folder;
  const std::string test = " && cmake --build build && ctest --test-dir build -R conform --output-on-failure";
  const ShellResult lax = InKit(
      "devhost new-driver tea_kettle new && cd new && "
      "sed -i -e 's/int ReadFile(std::string& config) override {/& static_cast<void>(::chdir(\"\\/\") == 0);/' "
      "-e '1i #include <unistd.h>' TeaKettle.cpp && cmake --preset release" +
          test,
      folder);
  EXPECT_EQ(lax.status, 0) << lax.output;
  const ShellResult strict = InKit(
      "cd new && sed -i 's/snmp_driver_conform(tea_kettle)/snmp_driver_conform(tea_kettle STRICT)/' CMakeLists.txt" + test,
      folder);
  EXPECT_NE(strict.status, 0);
  EXPECT_THAT(strict.output, HasSubstr("warn      process-folder: the working folder of the process is another one"));
}

class ADriverStraightFromTheHeaders : public testing::Test {
 protected:
  ADriverStraightFromTheHeaders() {
    folder.Write("project.xml",
                 "<project><driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/>"
                 "<driver id=\"12\" name=\"device\" module=\"./build/straight_device.so\"><config/></driver></project>");
  }

  void ExpectThatItIsBuiltWith(const std::string& build) const {
    const ShellResult result = InKit(build +
                                         " && printf 'command AddManagedDevice deviceId=12\ncommand GetDeviceList\n' | "
                                         "devhost run --project project.xml - && devhost module build/straight_device.so",
                                     folder);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("<deviceId>12</deviceId></managedDevice></managedDevices>\n"));
    EXPECT_THAT(result.output, HasSubstr("version 2.5.0\ncontract 1\n"));
  }

  const ScratchFolder folder;
};

TEST_F(ADriverStraightFromTheHeaders, IsBuiltWithCMake) {
  ExpectThatItIsBuiltWith("cmake -S '" SOURCE_FOLDER "/tests/kit/straight' -B build && cmake --build build");
}

// The Makefile is that of the example, with the names of this driver.
TEST_F(ADriverStraightFromTheHeaders, IsBuiltWithPkgConfigAndMake) {
  ExpectThatItIsBuiltWith(
      "devhost new-driver straight_device new && cp '" SOURCE_FOLDER
      "/tests/kit/straight/StraightDevice.cpp' new/ && sed -i 's/^VERSION := .*/VERSION := 2.5.0/' new/Makefile && "
      "make -C new CXX=\"$CXX\" && mv new/build .");
}

TEST(AProjectThatTakesTheKitAsASubdirectory, BuildsItsDriver) {
  const ScratchFolder folder;
  folder.Write("CMakeLists.txt",
               "cmake_minimum_required(VERSION 3.25)\nproject(mine VERSION 3.1 LANGUAGES CXX)\n"
               "add_subdirectory(\"" SOURCE_FOLDER
               "\" agent EXCLUDE_FROM_ALL)\n"
               "snmp_driver(mine \"" SOURCE_FOLDER
               "/examples/driver/ExampleDevice.cpp\")\n"
               "target_link_libraries(mine PRIVATE snmp-driver-kit::base)\n");
  const ShellResult result =
      InKit("cmake -S . -B build && cmake --build build --parallel 2 && devhost module build/mine.so", folder);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("version 3.1\ncontract 1\n"));
}

}  // namespace
