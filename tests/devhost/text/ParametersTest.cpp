#include "devhost/text/Parameters.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

TEST(ACommandWithParameters, IsWrittenAsInAScript) {
  EXPECT_EQ(TextOf("Start", {}), "Start");
  EXPECT_EQ(TextOf("Set", {{"id", "12"}, {"text", "a b"}, {"none", ""}}), "Set id=12 text='a b' none=''");
  EXPECT_EQ(TextOf("two words", {{"its name", "a\nb"}}), "'two words' 'its name'=\"a\\nb\"");
}

}  // namespace
}  // namespace devhost
