#ifndef DEVHOST_REPLAY_LINE_DIFFERENCE_H
#define DEVHOST_REPLAY_LINE_DIFFERENCE_H

#include <string>
#include <vector>

#include "devhost/secrets/Masker.h"

namespace devhost {

// Where a line of a conversation is not as expected: what differs, and details as ExplainDifference gives them.
struct LineDifference {
  std::string what;  // "" when nothing does
  std::vector<std::string> details;
};

// Compares two lines as ComparedLine returns them; one that is not there is "". Members that `expected` lacks may be
// anything. Learns the secrets of both lines; what is shown is masked.
LineDifference CompareLines(const std::string& expected, const std::string& found, Masker& secrets);

}  // namespace devhost

#endif
