#ifndef DEVHOST_SYSTEM_LINE_INPUT_H
#define DEVHOST_SYSTEM_LINE_INPUT_H

#include <cstddef>
#include <optional>
#include <string>

namespace devhost {

// Reads lines from a descriptor as they come, each as soon as it is complete: whoever writes them may wait for an answer.
class LineInput {
 public:
  static constexpr std::size_t kLongestLine = std::size_t{16} * 1024 * 1024;

  // The descriptor is borrowed; `name` is for messages.
  LineInput(int descriptor, std::string name);

  // Waits for the next line and returns it without its line feed; nothing at the end of the input. The last line needs no
  // line feed. Throws FileError when the input cannot be read, or for a line of more than kLongestLine bytes; there is
  // nothing to read after that.
  std::optional<std::string> Next();

 private:
  // Reads more; false at the end of the input.
  bool Fill();

  int m_descriptor;
  std::string m_name;
  std::string m_read;      // but not returned yet
  std::size_t m_seen = 0;  // so much of it holds no line feed
};

}  // namespace devhost

#endif
