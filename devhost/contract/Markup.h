#ifndef DEVHOST_CONTRACT_MARKUP_H
#define DEVHOST_CONTRACT_MARKUP_H

#include <cstddef>
#include <optional>
#include <string>

namespace devhost {

struct MarkupProblem {
  std::size_t line;  // counted from 1
  const char* reason;
  const char* remedy;
};

// Finds markup that the host's reader lets pass although other programs refuse it or read something else: a document type,
// and a "<" in an attribute. `text` is what ReadXml takes.
std::optional<MarkupProblem> FindMarkupProblem(const std::string& text);

}  // namespace devhost

#endif
