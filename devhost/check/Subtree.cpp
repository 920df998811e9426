#include "devhost/check/Subtree.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>

namespace devhost {

namespace {

constexpr std::size_t kLongestSubtree = 128;

// A number, or a text in quotes, which stands for numbers.
bool IsNumber(const std::string& text) {
  if (text.size() > 2 && text.front() == '"' && text.back() == '"') {
    return true;
  }
  const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  return !text.empty() && (isHex ? text.find_first_not_of("0123456789abcdefABCDEF", 2)
                                 : text.find_first_not_of("0123456789")) == std::string::npos;
}

}  // namespace

Subtree JudgeSubtree(std::string_view text) {
  // The daemon knows the roots of the tree by name, whatever MIB files it has.
  static const std::set<std::string_view> kRoots = {"iso", "ccitt", "joint-iso-ccitt"};
  text.remove_prefix(text.substr(0, 1) == "." ? 1 : 0);
  text.remove_suffix(text.size() > 1 && text.back() == '.' ? 1 : 0);
  std::size_t count = 0;
  bool isNamed = false;
  for (std::size_t at = 0; at <= text.size(); ++count) {
    const std::size_t end = std::min(text.find('.', at), text.size());
    const std::string part(text.substr(at, end - at));
    if (part.empty() || part.front() == '-' || part.front() == '#') {
      return Subtree::Wrong;
    }
    isNamed = isNamed || !(IsNumber(part) || (count == 0 && kRoots.count(part) != 0));
    at = end + 1;
  }
  return isNamed ? Subtree::Named : count > kLongestSubtree ? Subtree::Wrong : Subtree::Good;
}

}  // namespace devhost
