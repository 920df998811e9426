#ifndef DEVHOST_TEXT_DIFFERENCE_H
#define DEVHOST_TEXT_DIFFERENCE_H

#include <functional>
#include <string>
#include <vector>

namespace devhost {

// Shows a person where `found` departs from `expected`, in a few lines. Two short texts are shown whole; of longer ones the
// first line that differs, as - and +, with a mark under the first difference and the lines before it. The lines hold no
// control characters. The texts differ. `mask` is how a text is shown; where only masked places differ, that is said.
using Mask = std::function<std::string(const std::string&)>;
std::vector<std::string> ExplainDifference(const std::string& expected, const std::string& found, const Mask& mask);

}  // namespace devhost

#endif
