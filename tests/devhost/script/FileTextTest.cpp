#include "devhost/app/FileText.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;

std::string ErrorOf(const std::string& path, std::size_t maximumSize = kMaximumFileSize) {
  try {
    ReadFileText(path, maximumSize);
  } catch (const FileError& error) {
    return error.what();
  }
  return "";
}

TEST(AFile, IsReadByteForByte) {
  const testsupport::ScratchFolder folder;
  const std::string text("a\0\r\n\xff", 5);
  EXPECT_EQ(ReadFileText(folder.Write("a", text)), text);
  EXPECT_EQ(ReadFileText(folder.Write("empty", "")), "");
  const std::string large(300000, 'x');
  EXPECT_EQ(ReadFileText(folder.Write("large", large)), large);
}

TEST(AFileThatCannotBeRead, IsNamedWithTheReason) {
  const testsupport::ScratchFolder folder;
  EXPECT_EQ(ErrorOf("/no/such/file"), "cannot read \"/no/such/file\": No such file or directory");
  EXPECT_EQ(ErrorOf(folder.Path()), "cannot read \"" + folder.Path() + "\": Is a directory");
}

TEST(AFileThatNeverEnds, IsRefused) {
  EXPECT_THAT(ErrorOf("/dev/zero", 100000), HasSubstr("larger than the 100000 bytes"));
}

TEST(AFileOfTheLargestSize, IsRead) {
  const testsupport::ScratchFolder folder;
  EXPECT_EQ(ErrorOf(folder.Write("a", "12345"), 5), "");
  EXPECT_THAT(ErrorOf(folder.Write("b", "123456"), 5), HasSubstr("larger"));
}

TEST(AskingWhyAFileIsUnreadable, LeavesAPipeAlone) {
  const testsupport::ScratchFolder folder;
  ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(WhyUnreadable(folder.Path("pipe")), "");
  EXPECT_EQ(WhyUnreadable(folder.Path()), "Is a directory");
  EXPECT_EQ(WhyUnreadable(folder.Path("missing")), "No such file or directory");
}

TEST(APath, IsSeenFromItsFolder) {
  EXPECT_EQ(FolderOf("a/b/c"), "a/b");
  EXPECT_EQ(FolderOf("c"), ".");
  EXPECT_EQ(FolderOf("/c"), "/");
  EXPECT_EQ(PathIn("a/b", "c/d"), "a/b/c/d");
  EXPECT_EQ(PathIn("/", "c"), "/c");
  EXPECT_EQ(PathIn(".", "c"), "c");
  EXPECT_EQ(PathIn("a", "/c"), "/c");
}

}  // namespace
}  // namespace devhost
