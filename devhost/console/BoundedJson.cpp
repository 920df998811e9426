#include "devhost/console/BoundedJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace devhost {

namespace {

// Exact for JSON. Text that is not JSON may be taken for deeper or shallower than it is; the parser refuses it anyway.
bool NestsAtMost(std::string_view text, std::size_t levels) {
  std::size_t depth = 0;
  bool isInText = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      isInText = !isInText;
    } else if (isInText) {
      i += c == '\\' ? 1 : 0;
    } else if (c == '{' || c == '[') {
      if (++depth > levels) {
        return false;
      }
    } else if (c == '}' || c == ']') {
      depth -= std::min<std::size_t>(depth, 1);
    }
  }
  return true;
}

}  // namespace

nlohmann::ordered_json ParseBounded(std::string_view text, std::size_t levels) {
  using Json = nlohmann::ordered_json;
  return NestsAtMost(text, levels) ? Json::parse(text, nullptr, false) : Json(Json::value_t::discarded);
}

}  // namespace devhost
