#include "devhost/script/ScriptPrograms.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

std::string ErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

std::string ErrorOfProgram(const std::string& program, const std::string& folder = ".") {
  return ErrorOf([&] { CheckProgram(program, folder); });
}

TEST(AProgram, CanBeRunWhenItIsThereAndExecutable) {
  const testsupport::ScratchFolder folder;
  folder.Write("text", "no program");
  EXPECT_EQ(ErrorOfProgram("true"), "");
  EXPECT_EQ(ErrorOfProgram("/bin/sh"), "");
  EXPECT_EQ(ErrorOfProgram("no-such-program-at-all"),
            "cannot run \"no-such-program-at-all\": it is not in PATH, /usr/local/sbin, /usr/sbin or /sbin");
  EXPECT_EQ(ErrorOfProgram("./gone", folder.Path()), "cannot run \"./gone\": No such file or directory");
  EXPECT_EQ(ErrorOfProgram("./text", folder.Path()), "cannot run \"./text\": Permission denied");
}

TEST(ARun, IsAFailureUnlessItEndsWithStatusZeroInTimeAndSpace) {
  ProgramRun run;
  run.words = {"sh", "-c", "x"};
  const auto check = [&run](const ProgramResult& result) { return ErrorOf([&] { CheckRun(run, result); }); };
  ProgramResult result;
  EXPECT_EQ(check(result), "");
  result.exitStatus = 3;
  EXPECT_EQ(check(result), "sh ended with status 3");
  result.signal = 9;
  EXPECT_EQ(check(result), "sh was ended by signal 9");
  result.tooLong = true;
  EXPECT_EQ(check(result), "sh was ended because it wrote more than 16777216 bytes");
  result.late = true;
  EXPECT_EQ(check(result), "sh was ended because it took longer than 60 seconds");
}

TEST(AnAddress, IsPutInWhereverItStandsInAWord) {
  const auto address = [](const std::string& driver) { return "<" + driver + ">"; };
  EXPECT_EQ(WithAddresses("a{address:k}b{address:7}", address), "a<k>b<7>");
  EXPECT_EQ(WithAddresses("{address:k", address), "{address:k");
  EXPECT_EQ(WithAddresses("", address), "");
}

}  // namespace
}  // namespace devhost
