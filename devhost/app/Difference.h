#ifndef DEVHOST_APP_DIFFERENCE_H
#define DEVHOST_APP_DIFFERENCE_H

#include <string>
#include <vector>

namespace devhost {

// Shows a person where `found` departs from `expected`, in a few lines. Two short texts are shown whole; of longer ones the
// first line that differs, as - and +, with a mark under the first difference and the lines before it. The lines hold no
// control characters. The texts differ.
std::vector<std::string> ExplainDifference(const std::string& expected, const std::string& found);

}  // namespace devhost

#endif
