#ifndef DEVHOST_OPERATIONS_EXPLANATION_H
#define DEVHOST_OPERATIONS_EXPLANATION_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// Why a daemon serves something else than the section of its file says, as far as the rules of "devhost check" know.
class Explanation {
 public:
  // `path`: where the file is on this machine, absolute, for the files that it includes; with "", these are not looked into.
  // `showSecrets`: the findings may quote communities.
  Explanation(const std::string& file, const std::string& path, bool showSecrets);

  // Why the daemon does not do what the section says with this keyword, in lower case: "shadowed by line 63 of the foreign
  // text", "shadowed by /etc/snmp/part.conf:3", or what is wrong with the section's own line. "" when the file does not
  // explain it.
  std::string Of(std::string_view keyword) const;
  // The value of the last line with the keyword, which the daemon uses; "" when there is none.
  std::string LastValue(std::string_view keyword) const;

 private:
  struct Line {
    std::string keyword;
    std::string value;
    std::string problem;  // "" when there is none
  };
  std::vector<Line> m_lines;  // those with a directive, in the order in which the daemon reads them
};

}  // namespace devhost

#endif
