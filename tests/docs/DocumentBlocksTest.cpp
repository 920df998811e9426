#include "tests/docs/DocumentBlocks.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace testsupport {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

TEST(APage, GivesItsFencedBlocksInOrder) {
  const std::string page = "# Head\n```xml file=a.xml example=b\n<a/>\n\n```\ntext\n```\nplain\n```\n";
  const std::vector<DocumentBlock> blocks = ReadBlocks(page);
  ASSERT_THAT(blocks, SizeIs(2));
  EXPECT_EQ(blocks[0].language, "xml");
  EXPECT_EQ(blocks[0].attributes.at("file"), "a.xml");
  EXPECT_EQ(blocks[0].attributes.at("example"), "b");
  EXPECT_EQ(blocks[0].text, "<a/>\n\n");
  EXPECT_EQ(blocks[0].line, 2u);
  EXPECT_EQ(page.substr(blocks[0].begin, blocks[0].text.size()), blocks[0].text);
  EXPECT_EQ(blocks[1].language, "");
  EXPECT_THAT(blocks[1].attributes, IsEmpty());
  EXPECT_EQ(blocks[1].text, "plain\n");
}

TEST(APage, MayHaveNoBlocks) {
  EXPECT_THAT(ReadBlocks("text `a` ``\n"), IsEmpty());
}

TEST(ABlockThatIsNeverClosed, IsRefused) {
  EXPECT_THROW(ReadBlocks("a\n```xml\n<a/>\n"), std::runtime_error);
}

TEST(AnAttributeWithoutAValue, IsRefused) {
  EXPECT_THROW(ReadBlocks("```xml file\n```\n"), std::runtime_error);
}

TEST(AnExample, IsFoundByItsName) {
  EXPECT_THAT(DocumentExample("tests/docs/README.md", "greeting"), testing::StrEq("hello\n"));
  EXPECT_THROW(DocumentExample("tests/docs/README.md", "farewell"), std::runtime_error);
}

}  // namespace
}  // namespace testsupport
