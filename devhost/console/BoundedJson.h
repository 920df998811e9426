#ifndef DEVHOST_CONSOLE_BOUNDED_JSON_H
#define DEVHOST_CONSOLE_BOUNDED_JSON_H

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace devhost {

// How deep the body of a request may nest. With the line around it, it stays below what the host process takes.
inline constexpr std::size_t kBodyLevels = 30;
// The same for a line of the host process.
inline constexpr std::size_t kLineLevels = 64;

// Parses JSON whose objects and arrays nest at most `levels` deep; `{}` is one level. Returns a discarded value, which is
// neither an object nor anything else, for text that is not JSON or nests deeper. The library writes a value by recursion,
// so that one of any depth would use up the stack.
nlohmann::ordered_json ParseBounded(std::string_view text, std::size_t levels);

}  // namespace devhost

#endif
