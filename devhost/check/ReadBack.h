#ifndef DEVHOST_CHECK_READ_BACK_H
#define DEVHOST_CHECK_READ_BACK_H

#include <string>
#include <string_view>

namespace devhost {

// What the agent's reader makes of one line inside a section, for a device that holds no settings yet.
struct ReadBack {
  enum class Kind { Nothing, Word, Field, Trap };
  Kind kind = Kind::Nothing;
  std::string keyword;  // the one that the reader finds
  bool sets = false;    // a field that is missing sets nothing
  std::string value;    // of a word or a field
  std::string target;   // of a trap, as the two below
  std::string community;
  std::string port;
};

ReadBack ReadLineBack(std::string_view line);

// Whether the value of a word or a trap loses `keyword` because it holds it as a word of its own.
bool LosesKeyword(std::string_view line, const ReadBack& read);

}  // namespace devhost

#endif
