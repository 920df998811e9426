#include "devhost/contract/Markup.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::HasSubstr;

TEST(ADocumentType, IsFoundBeforeTheRootElement) {
  const auto problem = FindMarkupProblem("<?xml version='1.0'?>\n<!-- <!-x -->\n<!DOCTYPE Fail>\n<Fail/>");
  ASSERT_TRUE(problem);
  EXPECT_EQ(problem->line, 3U);
  EXPECT_THAT(problem->reason, HasSubstr("a document type"));
  EXPECT_FALSE(FindMarkupProblem("<?xml version='1.0'?>\n<!-- <!DOCTYPE Fail> -->\n<Fail/><!-- <!DOCTYPE -->"));
}

TEST(ABracketInAnAttribute, IsFound) {
  const std::string begin = "<!-- '<' --><?x \"<\"?><a b='";
  const std::string end = "'><![CDATA[<'<]]>\n<!-- <\" -->it's <c d=\">'\"/></a>";
  EXPECT_FALSE(FindMarkupProblem(begin + "1>\"" + end));
  const auto problem = FindMarkupProblem("\n" + begin + "1<" + end);
  ASSERT_TRUE(problem);
  EXPECT_EQ(problem->line, 2U);
  EXPECT_THAT(problem->reason, HasSubstr("holds a \"<\""));
}

}  // namespace
}  // namespace devhost
