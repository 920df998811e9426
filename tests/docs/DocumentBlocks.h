#ifndef TESTS_DOCS_DOCUMENT_BLOCKS_H
#define TESTS_DOCS_DOCUMENT_BLOCKS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace testsupport {

// One fenced block of a page:
//
//   ```LANGUAGE [name=value]...
//   text
//   ```
struct DocumentBlock {
  std::string language;
  std::map<std::string, std::string> attributes;
  std::string text;       // with the final line feed
  std::size_t line = 0;   // of the opening fence, counted from 1
  std::size_t begin = 0;  // the offset of the text in the page
};

// Returns the fenced blocks of a page, in order. Throws std::runtime_error, which names the line, for a block that is never
// closed or an attribute that is not name=value.
std::vector<DocumentBlock> ReadBlocks(const std::string& page);

// Returns the text of the block that a page of the project marks with example=NAME. Tests compare it with what the system
// makes: DocumentExample("docs/managed-section.md", "section"). Throws std::runtime_error when the page has no such block,
// or several.
std::string DocumentExample(const std::string& page, const std::string& name);

}  // namespace testsupport

#endif
