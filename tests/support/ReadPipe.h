#ifndef TESTS_SUPPORT_READ_PIPE_H
#define TESTS_SUPPORT_READ_PIPE_H

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <string_view>

namespace testsupport {

// Calls `use` with everything that comes out of a pipe until its end, block by block. Returns false when that takes longer
// than the limit.
template <class Use>
bool ReadPipe(int from, std::chrono::milliseconds limit, Use use) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  char block[65536];
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    struct pollfd ready = {from, POLLIN, 0};
    if (left <= 0 || ::poll(&ready, 1, static_cast<int>(left)) == 0) {
      return false;
    }
    const ssize_t got = ::read(from, block, sizeof(block));
    if (got <= 0) {
      return true;
    }
    use(std::string_view(block, static_cast<std::size_t>(got)));
  }
}

}  // namespace testsupport

#endif
