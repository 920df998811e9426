#ifndef DEVHOST_SYSTEM_LINE_INPUT_H
#define DEVHOST_SYSTEM_LINE_INPUT_H

#include <cstddef>
#include <optional>
#include <string>

#include "devhost/system/FileText.h"

namespace devhost {

// A line of more than LineInput::kLongestLine bytes.
class LineTooLong : public FileError {
 public:
  using FileError::FileError;
};

// Reads lines from a descriptor as they come, each as soon as it is complete: whoever writes them may wait for an answer.
class LineInput {
 public:
  static constexpr std::size_t kLongestLine = std::size_t{16} * 1024 * 1024;

  // The descriptor is borrowed; `name` is for messages.
  LineInput(int descriptor, std::string name);

  // Waits for the next line and returns it without its line feed; nothing at the end of the input. The last line needs no
  // line feed. Throws LineTooLong when it has read over a line that is too long: the next call returns the line behind it.
  // Throws FileError when the input cannot be read; there is nothing to read after that.
  std::optional<std::string> Next();

 private:
  // Reads more; false at the end of the input.
  bool Fill();
  // Reads over the rest of the line.
  void Skip();

  int m_descriptor;
  std::string m_name;
  std::string m_read;      // but not returned yet
  std::size_t m_seen = 0;  // so much of it holds no line feed
};

}  // namespace devhost

#endif
