#ifndef DEVHOST_TEXT_DIFFERENCE_H
#define DEVHOST_TEXT_DIFFERENCE_H

#include <functional>
#include <string>
#include <vector>

namespace devhost {

// Shows where `found` differs from `expected`, in a few lines: two short texts whole; of longer ones the first line that
// differs, as - and +, with a mark under the first difference and the lines before it. The texts must differ. They are shown
// as the masks return them; when only masked places differ, the lines say so. No line holds control characters.
using Mask = std::function<std::string(const std::string&)>;
std::vector<std::string> ExplainDifference(const std::string& expected, const std::string& found, const Mask& maskExpected,
                                           const Mask& maskFound);

}  // namespace devhost

#endif
