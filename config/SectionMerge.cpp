#include "config/SectionMerge.h"

#include <cstddef>

#include "config/ManagedSection.h"

namespace managed_section {
namespace {

// Where the text begins that a new section leaves in place, when `endMarker` is where the old section's end marker stands.
// That is at the line feed which ends the first line after the marker's line that is no comment, the line itself being
// dropped: in a file that the agent wrote it is the blank line below the trailer. A setting that follows the trailer
// directly is lost in this way; the format has always behaved so.
std::size_t KeptFrom(const std::string& text, std::size_t endMarker) {
  std::size_t lineEnd = text.find('\n', endMarker);
  while (lineEnd != std::string::npos) {
    const std::size_t line = lineEnd + 1;
    lineEnd = text.find('\n', line);
    const bool comment = line < text.size() && text[line] == '#';
    if (!comment) {
      break;
    }
  }
  return lineEnd == std::string::npos ? text.size() : lineEnd;
}

}  // namespace

std::string Merge(std::string section, const std::string& oldText) {
  const bool started = oldText.find(kStartMarker) != std::string::npos;
  const std::size_t endMarker = started ? oldText.find(kEndMarker) : std::string::npos;
  if (endMarker == std::string::npos) {
    section.reserve(section.size() + 1 + oldText.size());
    section.append("\n").append(oldText);
  } else {
    section.append(oldText, KeptFrom(oldText, endMarker), std::string::npos);
  }
  return section;
}

}  // namespace managed_section
