#include "tests/docs/DocumentBlocks.h"

#include <sstream>
#include <stdexcept>

#include "tests/support/ScratchFolder.h"

namespace testsupport {

namespace {

constexpr char kFence[] = "```";

std::runtime_error Wrong(std::size_t line, const std::string& problem) {
  return std::runtime_error("line " + std::to_string(line) + ": " + problem);
}

DocumentBlock Opened(const std::string& fence, std::size_t line) {
  DocumentBlock block;
  block.line = line;
  std::istringstream words(fence.substr(3));
  words >> block.language;
  for (std::string word; words >> word;) {
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) {
      throw Wrong(line, "\"" + word + "\" is not an attribute; allowed: file=NAME, example=NAME, step=KIND");
    }
    block.attributes[word.substr(0, equals)] = word.substr(equals + 1);
  }
  return block;
}

}  // namespace

std::vector<DocumentBlock> ReadBlocks(const std::string& page) {
  std::vector<DocumentBlock> blocks;
  bool inside = false;
  std::size_t number = 0;
  for (std::size_t at = 0; at < page.size();) {
    const std::size_t feed = page.find('\n', at);
    const std::size_t next = feed == std::string::npos ? page.size() : feed + 1;
    const std::string line = page.substr(at, (feed == std::string::npos ? next : feed) - at);
    ++number;
    if (inside && line == kFence) {
      blocks.back().text = page.substr(blocks.back().begin, at - blocks.back().begin);
      inside = false;
    } else if (!inside && line.compare(0, 3, kFence) == 0) {
      blocks.push_back(Opened(line, number));
      blocks.back().begin = next;
      inside = true;
    }
    at = next;
  }
  if (inside) {
    throw Wrong(blocks.back().line, "the block is never closed");
  }
  return blocks;
}

std::string DocumentExample(const std::string& page, const std::string& name) {
  std::vector<std::string> found;
  for (const DocumentBlock& block : ReadBlocks(ScratchFolder::ReadFile(std::string(SOURCE_FOLDER) + "/" + page))) {
    const auto attribute = block.attributes.find("example");
    if (attribute != block.attributes.end() && attribute->second == name) {
      found.push_back(block.text);
    }
  }
  if (found.size() != 1) {
    throw std::runtime_error(page + " has " + std::to_string(found.size()) + " blocks with example=" + name);
  }
  return found.front();
}

}  // namespace testsupport
