#include <gmock/gmock.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using NewDriverCommand = CommandsFixture;
using Names = std::set<std::string>;

Names FilesIn(const std::string& folder) {
  Names names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

TEST_F(NewDriverCommand, WritesEveryFileOfTheExampleUnderTheNewName) {
  const Outcome outcome = Run({"new-driver", "tea_kettle2", folder.Path("new")});
  EXPECT_EQ(outcome.status, ExitStatus::Good) << outcome.errors;
  EXPECT_EQ(outcome.out, "wrote the driver tea_kettle2 into " + folder.Path("new") + "; go on with its README.md\n");
  Names expected = FilesIn(SOURCE_FOLDER "/examples/driver");
  EXPECT_EQ(expected.erase("ExampleDevice.cpp"), 1U);
  expected.insert("TeaKettle2.cpp");
  EXPECT_EQ(FilesIn(folder.Path("new")), expected);
  for (const std::string& name : expected) {
    EXPECT_THAT(folder.Read("new/" + name), Not(HasSubstr("xample_device"))) << name;
    EXPECT_THAT(folder.Read("new/" + name), Not(HasSubstr("ExampleDevice"))) << name;
  }
  EXPECT_THAT(folder.Read("new/CMakeLists.txt"), HasSubstr("snmp_driver(tea_kettle2 TeaKettle2.cpp)"));
  EXPECT_EQ(folder.Read("new/session.devhost"),
            testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/examples/driver/session.devhost"));
}

TEST_F(NewDriverCommand, RefusesNamesThatAreNotAllowed) {
  for (const char* const name : {"", "Kettle", "2kettles", "_kettle", "tea-kettle", "../kettle", "k\xc3\xa4nnchen"}) {
    const Outcome outcome = Run({"new-driver", name, folder.Path("new")});
    EXPECT_EQ(outcome.status, ExitStatus::Wrong) << name;
    EXPECT_THAT(outcome.errors, HasSubstr("allowed: lower-case letters, digits and _, a letter first")) << name;
    EXPECT_FALSE(std::filesystem::exists(folder.Path("new"))) << name;
  }
}

TEST_F(NewDriverCommand, TouchesNoFolderThatIsThere) {
  std::filesystem::create_directory(folder.Path("there"));
  const Outcome outcome = Run({"new-driver", "kettle", folder.Path("there")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, StartsWith("devhost: cannot make the folder \"" + folder.Path("there") + "\": it is there"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("there")));
}

TEST_F(NewDriverCommand, RefusesAFolderThatCannotBeMade) {
  const Outcome outcome = Run({"new-driver", "kettle", folder.Path("missing/new")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("No such file or directory"));
}

}  // namespace
}  // namespace devhost
