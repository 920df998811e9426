#ifndef DEVHOST_DRIVER_LOG_SINK_H
#define DEVHOST_DRIVER_LOG_SINK_H

namespace devhost {

// Where `LogXMessage` goes.
class LogSink {
 public:
  virtual ~LogSink() = default;
  // `line` is formatted, without a line feed, and borrowed for the call; `caller` is an address in the code that logs it.
  // Called on the thread that logs.
  virtual void Log(unsigned int level, const char* line, const void* caller) noexcept = 0;
};

// Sets the one sink of the process and returns the one before. Null, the initial state, drops all lines. The sink must
// outlive the calls that are under way when it is replaced.
LogSink* SetLogSink(LogSink* sink) noexcept;

}  // namespace devhost

#endif
