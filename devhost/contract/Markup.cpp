#include "devhost/contract/Markup.h"

#include <algorithm>

namespace devhost {

namespace {

// Where a document type stands, or npos. It stands before the root element, where else only comments and processing
// instructions stand.
std::size_t FindDocumentType(const std::string& text) {
  std::size_t at = 0;
  while ((at = text.find('<', at)) != std::string::npos) {
    const bool isComment = text.compare(at, 4, "<!--") == 0;
    if (!isComment && text.compare(at, 2, "<?") != 0) {
      return text.compare(at, 2, "<!") == 0 ? at : std::string::npos;
    }
    at = text.find(isComment ? "-->" : "?>", at + (isComment ? 4 : 2));
  }
  return std::string::npos;
}

// Where an attribute holds a "<", which XML forbids and the parser lets pass; or npos. The text is otherwise well-formed.
std::size_t FindBracketInAttribute(const std::string& text) {
  char quote = 0;  // that the attribute is in
  bool inTag = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    if (quote != 0) {
      if (byte == '<') {
        return at;
      }
      quote = byte == quote ? '\0' : quote;
    } else if (inTag) {
      quote = byte == '"' || byte == '\'' ? byte : '\0';
      inTag = byte != '>';
    } else if (byte == '<') {
      const bool isComment = text.compare(at, 4, "<!--") == 0;
      const bool isData = text.compare(at, 9, "<![CDATA[") == 0;
      const bool isInstruction = text.compare(at, 2, "<?") == 0;
      inTag = !isComment && !isData && !isInstruction;
      if (!inTag) {
        at = std::min(text.size(), text.find(isComment ? "-->" : isData ? "]]>" : "?>", at + 2));
      }
    }
  }
  return std::string::npos;
}

std::size_t LineOf(const std::string& text, std::size_t offset) {
  return static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n')) + 1;
}

}  // namespace

std::optional<MarkupProblem> FindMarkupProblem(const std::string& text) {
  const std::size_t type = FindDocumentType(text);
  if (type != std::string::npos) {
    return MarkupProblem{LineOf(text, type), "a document type can change what the document says", "remove <!DOCTYPE ..>"};
  }
  const std::size_t bracket = FindBracketInAttribute(text);
  if (bracket != std::string::npos) {
    return MarkupProblem{LineOf(text, bracket), "not well-formed XML: an attribute holds a \"<\"", "write &lt;"};
  }
  return std::nullopt;
}

}  // namespace devhost
