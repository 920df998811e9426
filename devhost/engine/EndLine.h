#ifndef DEVHOST_ENGINE_END_LINE_H
#define DEVHOST_ENGINE_END_LINE_H

#include <cstddef>

namespace devhost {

// The line that says who has ended the process, in memory of its own. Safe in a signal handler: nothing here allocates.
class EndLine {
 public:
  // Appends as much of the text as there is room for.
  EndLine& Add(const char* text) noexcept;
  // Writes the line to standard error, or where that is closed, to standard output. Where these are not the files any more
  // that they were at KeepOutputs, nothing is written: a driver may have closed them, and its own files have their numbers.
  // Returns whether the line was written.
  bool Write() noexcept;

  // From now on a driver that closes standard error or output does not keep a line away. Of the process, because handlers
  // take no argument. Undone by ReleaseOutputs.
  static void KeepOutputs() noexcept;
  static void ReleaseOutputs() noexcept;

 private:
  char m_text[1024];
  std::size_t m_size = 0;
};

}  // namespace devhost

#endif
