#include "devhost/console/Assets.h"

#include <array>
#include <utility>

namespace devhost {

namespace {

constexpr std::array<std::pair<std::string_view, const char*>, 4> kTypes = {{
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".svg", "image/svg+xml"},
}};

bool EndsWith(std::string_view name, std::string_view end) {
  return name.size() >= end.size() && name.substr(name.size() - end.size()) == end;
}

const char* TypeOf(std::string_view name) {
  for (const auto& [end, type] : kTypes) {
    if (EndsWith(name, end)) {
      return type;
    }
  }
  return nullptr;
}

}  // namespace

Asset FindAsset(std::string_view path) {
  const std::string_view name = path == "/" ? "index.html" : path.substr(path.empty() ? 0 : 1);
  const char* const type = TypeOf(name);
  for (const EmbeddedFile& file : PageFiles()) {
    if (type != nullptr && file.name == name) {
      return {file.text, file.packed, type};
    }
  }
  return {};
}

}  // namespace devhost
