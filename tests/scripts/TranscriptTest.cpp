#include "tests/scripts/Transcript.h"

#include <gmock/gmock.h>

#include "tests/support/ScratchFolder.h"

namespace testsupport {
namespace {

TEST(ATranscript, IsPlayedCommandByCommand) {
  const ScratchFolder folder;
  folder.Write("a", "1\n");
  EXPECT_EQ(PlayTranscript("# Head\n\n$ cat a\n2\n$ pwd\n$ echo b >&2; exit 3\n", folder.Path()),
            "# Head\n\n$ cat a\n1\n$ pwd\n{project}\n$ echo b >&2; exit 3\nb\n[exit status 3]\n");
}

TEST(ATranscript, HidesWhatDiffersFromRunToRun) {
  const ScratchFolder folder;
  EXPECT_EQ(PlayTranscript("$ echo Monday, May, 04 2020 at 01:02:03 " MODULE_FOLDER "/a.so\n", folder.Path()),
            "$ echo Monday, May, 04 2020 at 01:02:03 " MODULE_FOLDER "/a.so\n{time} {modules}/a.so\n");
}

TEST(ATranscript, EndsTheLastLineOfAnOutput) {
  const ScratchFolder folder;
  EXPECT_EQ(PlayTranscript("$ printf a\n$ true\n", folder.Path()), "$ printf a\na\n$ true\n");
}

TEST(ASignal, IsPartOfTheStatus) {
  const ScratchFolder folder;
  EXPECT_EQ(RunShell("kill -9 $$", folder.Path()).status, 137);
}

TEST(TwoTexts, AreComparedLineByLine) {
  EXPECT_EQ(UnifiedDifference("a\n", "a\n"), "");
  EXPECT_THAT(UnifiedDifference("a\nb\n", "a\nc\n"), testing::HasSubstr("\n a\n-b\n+c\n"));
}

}  // namespace
}  // namespace testsupport
