#include "host/LogXMessage.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

#include "devhost/driver/LogSink.h"

namespace devhost {
namespace {

std::atomic<LogSink*> s_sink{nullptr};

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
  return s_sink.exchange(sink);
}

}  // namespace devhost

void LogXMessage(unsigned int level, const char* format, ...) {
  devhost::LogSink* const sink = devhost::s_sink;
  if (format == nullptr || sink == nullptr) {
    return;
  }
  std::string line;
  std::va_list arguments;
  va_start(arguments, format);
  const bool formatted = devhost::Format(line, format, arguments);
  va_end(arguments);
  if (formatted) {
    sink->Log(level, line.c_str(), __builtin_return_address(0));
  }
}
