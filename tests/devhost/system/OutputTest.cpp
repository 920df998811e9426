#include "devhost/system/Output.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

namespace devhost {
namespace {

struct Pipe {
  Pipe() { EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0); }
  ~Pipe() {
    CloseReader();
    ::close(ends[1]);
  }
  void CloseReader() {
    if (ends[0] >= 0) {
      ::close(ends[0]);
      ends[0] = -1;
    }
  }
  std::string Read(std::size_t size) {
    std::string text(size, '\0');
    std::size_t used = 0;
    while (used < size) {
      const ssize_t got = ::read(ends[0], &text[used], size - used);
      if (got <= 0) {
        break;
      }
      used += static_cast<std::size_t>(got);
    }
    return text.substr(0, used);
  }
  int ends[2] = {-1, -1};
};

TEST(Output, IsWrittenAtOnce) {
  Pipe pipe;
  Output output(pipe.ends[1]);
  output.Write("line\n");
  EXPECT_EQ(pipe.Read(5), "line\n");
  EXPECT_EQ(output.Error(), 0);
}

TEST(Output, ArrivesWholeThroughAPipeThatDoesNotBlock) {
  Pipe pipe;
  ASSERT_EQ(::fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK), 0);
  const std::string text(1000000, 'x');
  std::string got;
  std::thread reader([&] { got = pipe.Read(text.size()); });
  Output output(pipe.ends[1]);
  output.Write(text);
  reader.join();
  EXPECT_EQ(got, text);
  EXPECT_EQ(output.Error(), 0);
}

TEST(OutputToAClosedPipe, RemembersTheErrorAndDropsTheRest) {
  Pipe pipe;
  pipe.CloseReader();
  const auto before = ::signal(SIGPIPE, SIG_IGN);
  Output output(pipe.ends[1]);
  output.Write("a");
  output.Write("b");
  ::signal(SIGPIPE, before);
  EXPECT_EQ(output.Error(), EPIPE);
}

TEST(OutputToAFullDisk, RemembersTheError) {
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  Output output(full);
  output.Write("a");
  EXPECT_EQ(output.Error(), ENOSPC);
  ::close(full);
}

}  // namespace
}  // namespace devhost
