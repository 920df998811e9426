#ifndef DRIVERS_HOSTPROBE_FINDING_H
#define DRIVERS_HOSTPROBE_FINDING_H

#include <string>
#include <type_traits>

namespace drivers {

// The first thing that a check finds wrong, in words; empty as long as everything is as promised.
class Finding {
 public:
  // Notes `words` unless `holds`. Returns `holds`.
  bool Unless(bool holds, const std::string& words) {
    if (!holds && m_words.empty()) {
      m_words = words;
    }
    return holds;
  }

  // Notes that `what` is not `expected`: a truth value, a number or a text.
  template <class Value, class Expected>
  void Compare(const std::string& what, const Value& found, const Expected& expected) {
    const Value wanted(expected);
    if (!(found == wanted) && m_words.empty()) {
      m_words = what + " is " + Shown(found) + ", not " + Shown(wanted);
    }
  }

  const std::string& Words() const { return m_words; }

 private:
  template <class Value>
  static std::string Shown(const Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      return value ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<Value>) {
      return std::to_string(value);
    } else {
      return "\"" + (value.size() > kMost ? value.substr(0, kMost) + "\"..." : value + "\"");
    }
  }

  static constexpr std::size_t kMost = 60;

  std::string m_words;
};

}  // namespace drivers

#endif
