#include "host/LogXMessage.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "devhost/driver/LogSink.h"

namespace devhost {
namespace {

std::atomic<LogSink*> s_sink{nullptr};

}  // namespace

LogSink* SetLogSink(LogSink* sink) noexcept {
  return s_sink.exchange(sink);
}

}  // namespace devhost

// A line whose format cannot be followed, or for which there is no memory, is dropped.
void LogXMessage(unsigned int level, const char* format, ...) {
  devhost::LogSink* const sink = devhost::s_sink;
  if (format == nullptr || sink == nullptr) {
    return;
  }
  char* line = nullptr;
  std::va_list arguments;
  va_start(arguments, format);
  const int length = vasprintf(&line, format, arguments);
  va_end(arguments);
  if (length >= 0) {
    sink->Log(level, line, __builtin_return_address(0));
    std::free(line);
  }
}
