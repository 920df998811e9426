#include "devhost/system/MemoryFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "devhost/system/RunProgram.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testsupport::ScratchFolder;

TEST(AMemoryFile, HoldsItsText) {
  const std::string text("a\0\xff\n", 4);
  EXPECT_EQ(ScratchFolder::ReadFile(MemoryFile(text).Path()), text);
  const std::string megabytes(3000000, 'x');
  EXPECT_EQ(ScratchFolder::ReadFile(MemoryFile(megabytes).Path()), megabytes);
  EXPECT_EQ(ScratchFolder::ReadFile(MemoryFile("").Path()), "");
}

TEST(AMemoryFile, IsReadByAProgramThatIsStarted) {
  const MemoryFile file("text\n");
  ProgramRun run;
  run.words = {"cat", file.Path()};
  EXPECT_EQ(RunProgram(run).output, "text\n");
}

TEST(AMemoryFile, IsItsUsersAloneAndInNoFolder) {
  const MemoryFile file("text\n");
  struct stat status = {};
  ASSERT_EQ(::stat(file.Path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISREG(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(status.st_nlink, 0U);
}

TEST(AMemoryFile, IsGoneWithItsObject) {
  auto file = std::make_unique<MemoryFile>("text\n");
  const std::string path = file->Path();
  file.reset();
  struct stat status = {};
  EXPECT_NE(::stat(path.c_str(), &status), 0);
}

}  // namespace
}  // namespace devhost
