#include "host/LogXMessage.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

#include "devhost/driver/DriverServices.h"
#include "devhost/driver/LogCaller.h"

namespace devhost {
namespace {

LogSink* s_logSink = nullptr;
thread_local const void* t_logCaller = nullptr;

void Write(unsigned int level, const char* line, const void* caller) noexcept {
  if (s_logSink == nullptr) {
    std::fprintf(stderr, "log %u: %s\n", level, line);
    return;
  }
  const void* const outer = t_logCaller;
  t_logCaller = caller;
  s_logSink->Log(level, line);
  t_logCaller = outer;
}

// False when the format cannot be followed or there is no memory for the line.
bool Format(std::string& line, const char* format, std::va_list arguments) noexcept {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  bool formatted = false;
  try {
    if (length >= 0) {
      line.resize(static_cast<std::size_t>(length));
      formatted = std::vsnprintf(&line[0], line.size() + 1, format, again) == length;
    }
  } catch (...) {
    // The line is dropped.
  }
  va_end(again);
  return formatted;
}

}  // namespace

LogSink* SetLogSink(LogSink* sink) noexcept {
  LogSink* const before = s_logSink;
  s_logSink = sink;
  return before;
}

const void* LogCaller() noexcept {
  return t_logCaller;
}

}  // namespace devhost

void LogXMessage(unsigned int level, const char* format, ...) {
  if (format == nullptr) {
    return;
  }
  std::string line;
  std::va_list arguments;
  va_start(arguments, format);
  const bool formatted = devhost::Format(line, format, arguments);
  va_end(arguments);
  if (formatted) {
    devhost::Write(level, line.c_str(), __builtin_return_address(0));
  }
}
