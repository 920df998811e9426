#include "devhost/contract/TextKind.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace devhost {
namespace {

// Which of the texts are of that kind.
std::vector<std::string> OfKind(TextKind kind, const std::vector<std::string>& texts) {
  std::vector<std::string> found;
  for (const std::string& text : texts) {
    if (IsOfKind(kind, text)) {
      found.push_back(text);
    }
  }
  return found;
}

using Texts = std::vector<std::string>;

TEST(ASwitch, IsTrueFalseOneOrZero) {
  const Texts texts = {"true", "false", "1", "0", "TRUE", "", " true", "yes"};
  EXPECT_EQ(OfKind(TextKind::Switch, texts), (Texts{"true", "false", "1", "0"}));
  EXPECT_EQ(OfKind(TextKind::WrittenSwitch, texts), (Texts{"true", "false"}));
}

TEST(AnId, HasThirtyTwoBitsAndOneSpelling) {
  EXPECT_EQ(OfKind(TextKind::Id, {"0", "12", "4294967295", "4294967296", "99999999999999999999", "-1", "-0", "+1", "01",
                                  "00", " 1", "1 ", "", "1x", "-"}),
            (Texts{"0", "12", "4294967295"}));
}

TEST(ASignedId, HasTheSameBitsAsAnId) {
  EXPECT_EQ(OfKind(TextKind::SignedId,
                   {"0", "12", "-1", "-2147483648", "2147483647", "2147483648", "-2147483649", "-0", "-01", "--1", ""}),
            (Texts{"0", "12", "-1", "-2147483648", "2147483647"}));
}

TEST(APort, MayBeLeftOut) {
  EXPECT_EQ(OfKind(TextKind::Port, {"", "1", "162", "65535", "65536", "0", "0162", "snmp"}),
            (Texts{"", "1", "162", "65535"}));
}

TEST(ALine, HasNoBreakAndAtMost255Characters) {
  const std::string longest(255, 'x');
  std::string inTwoBytes;
  for (int i = 0; i != 255; ++i) {
    inTwoBytes += "\xC3\xA4";
  }
  EXPECT_EQ(OfKind(TextKind::Line, {"", "a b\tc", longest, inTwoBytes, longest + "x", "a\nb", "a\rb"}),
            (Texts{"", "a b\tc", longest, inTwoBytes}));
  EXPECT_EQ(OfKind(TextKind::FilledLine, {"", "a"}), (Texts{"a"}));
}

TEST(ADriverName, IsNotDigitsAlone) {
  EXPECT_EQ(OfKind(TextKind::DriverName, {"kitchen", "k-1_b.c", "12", "", "two words", "k\xC3\xBC"}),
            (Texts{"kitchen", "k-1_b.c"}));
}

TEST(AnyText, MayBeEmptyUnlessItHasToBeFilled) {
  EXPECT_TRUE(IsOfKind(TextKind::Any, ""));
  EXPECT_FALSE(IsOfKind(TextKind::Filled, ""));
  EXPECT_TRUE(IsOfKind(TextKind::Filled, "\n"));
}

TEST(EachKind, SaysWhatItIs) {
  for (int kind = static_cast<int>(TextKind::Any); kind <= static_cast<int>(TextKind::DriverName); ++kind) {
    EXPECT_STRNE(MeaningOf(static_cast<TextKind>(kind)), "") << kind;
  }
}

}  // namespace
}  // namespace devhost
