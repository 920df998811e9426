#include "devhost/system/FileDescriptor.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <optional>
#include <utility>

namespace devhost {
namespace {

FileDescriptor OpenNull() {
  return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

bool IsOpenInTheProcess(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) != -1;
}

TEST(AFileDescriptor, IsClosedOnceAtItsEndOrBefore) {
  int number = -1;
  {
    const FileDescriptor file = OpenNull();
    number = file.Get();
    EXPECT_TRUE(file.IsOpen() && IsOpenInTheProcess(number));
  }
  EXPECT_FALSE(IsOpenInTheProcess(number));
  FileDescriptor closed = OpenNull();
  closed.Close();
  EXPECT_FALSE(closed.IsOpen());
  const FileDescriptor next = OpenNull();  // takes the number that is free
  EXPECT_EQ(next.Get(), number);
  closed.Close();
  EXPECT_TRUE(IsOpenInTheProcess(number));
}

TEST(AFileDescriptor, IsHandedOnWhenItIsMoved) {
  std::optional<FileDescriptor> first(OpenNull());
  const int number = first->Get();
  std::optional<FileDescriptor> second(std::move(*first));
  first.reset();
  EXPECT_EQ(second->Get(), number);
  FileDescriptor third;
  EXPECT_FALSE(third.IsOpen());
  third = std::move(*second);
  second.reset();
  EXPECT_EQ(third.Get(), number);
  EXPECT_TRUE(IsOpenInTheProcess(number));
}

}  // namespace
}  // namespace devhost
