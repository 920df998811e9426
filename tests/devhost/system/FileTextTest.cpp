#include "devhost/system/FileText.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "devhost/system/FileDescriptor.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;

// What is thrown when a file is read, or "".
template <class Reader, class... Arguments>
std::string ErrorOf(Reader read, const Arguments&... arguments) {
  try {
    read(arguments...);
  } catch (const FileError& error) {
    return error.what();
  }
  return "";
}

void ReadWhole(const std::string& path) {
  ReadFileText(path);
}

TEST(AFile, IsReadUpToTheSizeThatIsAllowed) {
  const testsupport::ScratchFolder folder;
  const std::string path = folder.Write("a", "12345");
  EXPECT_EQ(ReadNamedText(path, 5).text, "12345");
  EXPECT_THAT(ErrorOf(ReadNamedText, path, std::size_t{4}), HasSubstr("it is larger than the 4 bytes that are allowed"));
  EXPECT_THAT(ErrorOf(ReadNamedText, std::string("/dev/zero"), std::size_t{4}),
              HasSubstr("it is larger than the 4 bytes that are allowed"));
}

TEST(AFile, IsReadByteForByte) {
  const testsupport::ScratchFolder folder;
  const std::string text("a\0\r\n\xff", 5);
  EXPECT_EQ(ReadFileText(folder.Write("a", text)), text);
  EXPECT_EQ(ReadFileText(folder.Write("empty", "")), "");
  const std::string large(300000, 'x');
  EXPECT_EQ(ReadFileText(folder.Write("large", large)), large);
}

TEST(ANamedText, IsAFileWithoutItsByteOrderMark) {
  const testsupport::ScratchFolder folder;
  const std::string path = folder.Write("a",
                                        "\xef\xbb\xbf"
                                        "b\xef\xbb\xbf\n");
  const NamedText read = ReadNamedText(path);
  EXPECT_EQ(read.name, path);
  EXPECT_EQ(read.text, "b\xef\xbb\xbf\n");
  EXPECT_EQ(ReadNamedText(folder.Write("cut", "\xef\xbb")).text, "\xef\xbb");
  EXPECT_THROW(ReadNamedText(folder.Path("none")), FileError);
}

TEST(ANamedText, IsStandardInputForADash) {
  const testsupport::ScratchFolder folder;
  const FileDescriptor outer(::dup(STDIN_FILENO));
  const FileDescriptor given(::open(folder
                                        .Write("a",
                                               "\xef\xbb\xbf"
                                               "b")
                                        .c_str(),
                                    O_RDONLY));
  ASSERT_EQ(::dup2(given.Get(), STDIN_FILENO), STDIN_FILENO);
  const NamedText read = ReadNamedText("-");
  ::dup2(outer.Get(), STDIN_FILENO);
  EXPECT_EQ(read.name, "standard input");
  EXPECT_EQ(read.text, "b");
}

TEST(AFileThatCannotBeRead, IsNamedWithTheReason) {
  const testsupport::ScratchFolder folder;
  EXPECT_EQ(ErrorOf(ReadWhole, "/no/such/file"), "cannot read \"/no/such/file\": No such file or directory");
  EXPECT_EQ(ErrorOf(ReadWhole, folder.Path()), "cannot read \"" + folder.Path() + "\": Is a directory");
}

TEST(AFileThatNeverEnds, IsRefused) {
  const FileDescriptor zero(::open("/dev/zero", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(ErrorOf(ReadDescriptorText, zero.Get(), "zero", std::size_t{100000}),
            "cannot read \"zero\": it is larger than the 100000 bytes that are allowed");
}

TEST(AFileOfTheLargestSize, IsRead) {
  const testsupport::ScratchFolder folder;
  folder.Write("a", "12345");
  folder.Write("b", "123456");
  const FileDescriptor open(::open(folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  EXPECT_EQ(ReadRegularFileAt(open.Get(), "a", 5), "12345");
  EXPECT_THAT(ErrorOf(ReadRegularFileAt, open.Get(), "b", std::size_t{5}), HasSubstr("larger"));
}

TEST(AskingWhyAFileIsUnreadable, LeavesAPipeAlone) {
  const testsupport::ScratchFolder folder;
  ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(WhyUnreadable(folder.Path("pipe")), "");
  EXPECT_EQ(WhyUnreadable(folder.Path()), "Is a directory");
  EXPECT_EQ(WhyUnreadable(folder.Path("missing")), "No such file or directory");
}

TEST(WhatHasToBeARegularFile, IsRefusedAtOnceWhenItIsNone) {
  const testsupport::ScratchFolder folder;
  ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  EXPECT_THAT(ErrorOf(ReadRegularFile, folder.Path("pipe")), HasSubstr("it is not a regular file"));
  EXPECT_THAT(ErrorOf(ReadRegularFile, folder.Path()), HasSubstr("Is a directory"));
  EXPECT_THAT(ErrorOf(ReadRegularFile, folder.Path("missing")), HasSubstr("No such file"));
  EXPECT_EQ(WhyNoRegularFile(folder.Path("pipe")), "it is not a regular file");
  EXPECT_EQ(WhyNoRegularFile(folder.Write("a", "text")), "");
  EXPECT_EQ(ReadRegularFile(folder.Path("a")), "text");
}

TEST(ASymbolicLink, IsFollowedOnlyWhereItMayBe) {
  const testsupport::ScratchFolder folder;
  folder.Write("a", "text");
  ASSERT_EQ(::symlink("a", folder.Path("link").c_str()), 0);
  EXPECT_EQ(ReadRegularFile(folder.Path("link")), "text");
  EXPECT_THAT(ErrorOf(ReadRegularFileAt, AT_FDCWD, folder.Path("link"), kMaximumFileSize),
              HasSubstr("it is a symbolic link"));
}

TEST(APathWithANulByte, IsRefused) {
  const testsupport::ScratchFolder folder;
  const std::string path = folder.Write("a", "text") + std::string("\0b", 2);
  EXPECT_THAT(ErrorOf(ReadWhole, path), HasSubstr("the name holds a NUL byte"));
  EXPECT_THAT(ErrorOf(ReadRegularFile, path), HasSubstr("the name holds a NUL byte"));
  EXPECT_EQ(WhyUnreadable(path), "the name holds a NUL byte");
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
