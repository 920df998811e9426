#include "fuzz/support/Input.h"

#include <stdexcept>

namespace fuzz {
namespace {

// The letter for a part follows from its place: '@' is the first one, 'A' the next.
constexpr const char* kParts[64] = {
    "Halvoren Section Start",
    "# Halvoren Section Start\n",
    "# Halvoren Section End\n",
    "Halvoren Section End",
    "#",
    "\n",
    " ",
    "  ",
    "\t",
    "\r\n",
    "\"",
    "a",
    "10.0.0.5",
    "162",
    "rocommunity",
    "rwcommunity",
    "agentXTimeout",
    "agentXRetries",
    "sysContact",
    "sysLocation",
    "sysName",
    "trap2sink",
    "\nrocommunity  ",
    "\nrwcommunity  ",
    "\ntrap2sink  10.0.0.5  \"",
    "\"  162\n",
    "\nagentXTimeout  ",
    "\nagentXRetries  ",
    "\nsysContact  ",
    "\nsysLocation  ",
    "\nsysName  ",
    "public",
    "my community",
    "Halvoren Section ",
    "Start",
    "End",
    "\n\n",
    "\n#",
    "<",
    "&amp;",
    "]]>",
    "\xc3\xa4",
    "\xff",
    "'",
    "true",
    "1",
    "0",
    "4294967295",
    "4294967296",
    "-1",
    " 5 ",
    "false",
    "x",
    "b c",
    "#\n",
    "\v",
    "\f",
    "{}",
    "\\",
    "=",
    "\ntrap2sink  ",
    "# Halvoren Section End\n#\n#   text\n\n",
    "below\n",
    "\n# rocommunity is read-only\n",
};

}  // namespace

std::string Input::Text() {
  std::string text;
  for (unsigned int count = Below(16); count != 0; --count) {
    text += kParts[Below(64)];
  }
  return text;
}

std::string Input::Rest() {
  std::string rest;
  while (!AtEnd()) {
    rest += static_cast<char>(Byte());
  }
  return rest;
}

void Require(bool holds, std::string_view what) {
  if (!holds) {
    throw std::logic_error(std::string(what));
  }
}

void RequireSame(std::string_view what, std::string_view actual, std::string_view expected) {
  if (actual != expected) {
    std::string message(what);
    message.append(":\n--- is ---\n").append(actual).append("\n--- should be ---\n").append(expected).append("\n---");
    throw std::logic_error(message);
  }
}

}  // namespace fuzz
