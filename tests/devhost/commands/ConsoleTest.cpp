#include "devhost/commands/Console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <string>

#include "devhost/system/FileDescriptor.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

class AConsole : public testing::Test {
 protected:
  std::string Errors() const { return folder.Read("errors"); }

  const testsupport::ScratchFolder folder;
  const FileDescriptor errors{::open(folder.Write("errors", "").c_str(), O_WRONLY | O_CLOEXEC)};
};

TEST_F(AConsole, PrintsAProblemOnOneLine) {
  Console console(errors.Get(), errors.Get());
  console.Complain("cannot read \"a\nb\"\x1b[2J");
  EXPECT_EQ(Errors(), "devhost: cannot read \"a\\nb\"\\x1b[2J\n");
}

TEST_F(AConsole, KeepsTheStatusOfACommandWhoseOutputWasWritten) {
  Console console(errors.Get(), errors.Get());
  console.Out().Write("a\n");
  EXPECT_EQ(console.Finish(ExitStatus::Good), ExitStatus::Good);
  EXPECT_EQ(console.Finish(ExitStatus::Wrong), ExitStatus::Wrong);
  EXPECT_EQ(Errors(), "a\n");
}

TEST_F(AConsole, SaysThatTheOutputCannotBeWritten) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  Console console(full.Get(), errors.Get());
  console.Out().Write("a\n");
  EXPECT_EQ(console.Finish(ExitStatus::Good), ExitStatus::Failed);
  EXPECT_EQ(Errors(), "devhost: cannot write the output: No space left on device\n");
}

TEST_F(AConsole, DoesNotTellAReaderThatHasGoneAway) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  FileDescriptor reader(ends[0]);
  const FileDescriptor writer(ends[1]);
  reader.Close();
  const auto before = ::signal(SIGPIPE, SIG_IGN);
  Console console(writer.Get(), errors.Get());
  console.Out().Write("a\n");
  ::signal(SIGPIPE, before);
  EXPECT_EQ(console.Finish(ExitStatus::Good), ExitStatus::Failed);
  EXPECT_EQ(Errors(), "");
}

}  // namespace
}  // namespace devhost
