#include "drivers/common/FileStatus.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using drivers::FileStatusOfErrno;
using drivers::kFileIsNotRegular;
using drivers::kFileIsSymbolicLink;

TEST(FileStatuses, NeverSuccessNorAcceptedForLater) {
  for (int error = 1; error < 200; ++error) {
    const int status = FileStatusOfErrno(error);
    EXPECT_LT(status, -100);
    EXPECT_NE(-9, status);
  }
  EXPECT_NE(kFileIsSymbolicLink, kFileIsNotRegular);
  EXPECT_NE(-9, kFileIsSymbolicLink);
  EXPECT_NE(-9, kFileIsNotRegular);
}

TEST(FileStatuses, AreThoseOfTheTable) {
  EXPECT_EQ(-101, FileStatusOfErrno(EPERM));
  EXPECT_EQ(-102, FileStatusOfErrno(ENOENT));
  EXPECT_EQ(-105, FileStatusOfErrno(EIO));
  EXPECT_EQ(-111, FileStatusOfErrno(EWOULDBLOCK));
  EXPECT_EQ(-113, FileStatusOfErrno(EACCES));
  EXPECT_EQ(-120, FileStatusOfErrno(ENOTDIR));
  EXPECT_EQ(-127, FileStatusOfErrno(EFBIG));
  EXPECT_EQ(-128, FileStatusOfErrno(ENOSPC));
  EXPECT_EQ(-130, FileStatusOfErrno(EROFS));
  EXPECT_EQ(-222, FileStatusOfErrno(EDQUOT));
}

TEST(FileStatuses, ReadInWords) {
  EXPECT_EQ("it is a symbolic link", drivers::DescribeFileStatus(kFileIsSymbolicLink));
  EXPECT_EQ("it is not a regular file", drivers::DescribeFileStatus(kFileIsNotRegular));
  EXPECT_EQ("No space left on device", drivers::DescribeFileStatus(-128));
  EXPECT_EQ("it is too large: more than 256 MiB, or more than this process may write (ulimit -f)",
            drivers::DescribeFileStatus(-127));
  EXPECT_EQ("somebody else is writing to it; try again", drivers::DescribeFileStatus(-111));
  EXPECT_EQ("the new text is larger than 256 MiB and could never be read again; the old file stays",
            drivers::DescribeFileStatus(drivers::kTextTooLarge));
  EXPECT_EQ("another user's file .snmpd.conf.new beside it is in the way; look at it, and remove it",
            drivers::DescribeFileStatus(drivers::kTemporaryOfAnotherUser));
  EXPECT_EQ("a folder named .snmpd.conf.new beside it is in the way; remove that folder",
            drivers::DescribeFileStatus(drivers::kFolderInTheWay));
  EXPECT_EQ(".snmpd.conf.lock beside it is not a regular file, or may not be opened; remove it",
            drivers::DescribeFileStatus(drivers::kLockUnusable));
  EXPECT_EQ("it is not permitted, or its mode, owner or access list cannot be kept", drivers::DescribeFileStatus(-101));
  EXPECT_EQ("success", drivers::DescribeFileStatus(0));
}

}  // namespace
