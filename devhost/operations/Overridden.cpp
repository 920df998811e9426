#include "devhost/operations/Overridden.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "devhost/check/CheckFile.h"
#include "devhost/check/ConfigText.h"

namespace devhost {

std::vector<Finding> OverridingLines(const std::string& text, const std::string& path, const std::string& file,
                                     bool showSecrets) {
  constexpr std::string_view kRules[] = {"overrides-section", "first-community-wins", "old-community",
                                         "first-disk-line-wins"};
  CheckMeans means;
  means.showSecrets = showSecrets;
  means.circumstances.path = path;
  const Layout layout = LayOut(text);
  std::vector<Finding> overriding;
  for (Finding& finding : CheckText(text, file, means).findings) {
    // What surprises within the section comes from the settings, and is said about them.
    const bool isInside =
        layout.IsReplaced() && finding.file == file && finding.line > layout.firstStart && finding.line < layout.firstEnd;
    if (!isInside && std::find(std::begin(kRules), std::end(kRules), finding.rule) != std::end(kRules)) {
      overriding.push_back(std::move(finding));
    }
  }
  return overriding;
}

}  // namespace devhost
