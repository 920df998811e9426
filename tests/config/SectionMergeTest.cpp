#include "config/SectionMerge.h"

#include <gtest/gtest.h>

namespace {

using managed_section::Merge;

const char kNew[] = "NEW\n";

TEST(AFileWithoutASection, IsKeptBelowTheNewOne) {
  EXPECT_EQ(Merge(kNew, "rocommunity x\n\n# end"), "NEW\n\nrocommunity x\n\n# end");
}

TEST(AnEmptyFile, LeavesOneMoreLineFeed) {
  EXPECT_EQ(Merge(kNew, ""), "NEW\n\n");
}

TEST(AFileWithAStartMarkerOnly, IsKeptWhole) {
  const std::string old = "above\n# Halvoren Section Start\nsysName  old\n";
  EXPECT_EQ(Merge("# Halvoren Section Start\n", old), "# Halvoren Section Start\n\n" + old);
}

TEST(AFileWithAnEndMarkerOnly, IsKeptWhole) {
  EXPECT_EQ(Merge(kNew, "a\n# Halvoren Section End\n\nb\n"), "NEW\n\na\n# Halvoren Section End\n\nb\n");
}

TEST(Markers, AreCaseSensitive) {
  const std::string old = "# halvoren section start\n# halvoren section end\n\nb\n";
  EXPECT_EQ(Merge(kNew, old), "NEW\n\n" + old);
}

TEST(TextAboveTheOldSection, IsGone) {
  EXPECT_EQ(Merge(kNew, "user line\n# Halvoren Section Start\nx\n# Halvoren Section End\n#\n\nbelow\n"), "NEW\n\nbelow\n");
}

TEST(TextBelowTheOldSection, IsKeptByteForByte) {
  const std::string below = "\n\n \t\r\n# comment\nsysName  mine\n\n\nlast line without a feed";
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\n#\n" + below), kNew + below.substr(0));
}

TEST(ANulByte, IsKeptLikeAnyOther) {
  const std::string text = std::string("a\0b\n", 4);
  EXPECT_EQ(Merge(kNew, text), "NEW\n\n" + text);
  EXPECT_EQ(Merge(kNew, text + "# Halvoren Section Start\n" + text + "# Halvoren Section End\n#" + text + "\n" + text),
            "NEW\n\n" + text);
}

TEST(TheBlankLineAfterTheTrailer, IsConsumedAndMadeAgain) {
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\n#\n# x\n\nkept\n"), "NEW\n\nkept\n");
}

TEST(ASettingRightAfterTheTrailer, IsLost) {
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\n#\nsysName  lost\nkept\n"), "NEW\n\nkept\n");
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\nsysName  lost\nkept\n"), "NEW\n\nkept\n");
}

TEST(AnIndentedCommentAfterTheTrailer, IsLostLikeASetting) {
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\n # x\n# kept\n"), "NEW\n\n# kept\n");
}

TEST(ACarriageReturnAfterTheTrailer, CountsAsTheLineThatIsDropped) {
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\r\n# Halvoren Section End\r\n#\r\n\r\nkept\r\n"), "NEW\n\nkept\r\n");
}

TEST(NothingOfAFile, IsKeptWhenTheTrailerRunsToItsEnd) {
  EXPECT_EQ(Merge(kNew, "a\n# Halvoren Section Start\n# Halvoren Section End"), "NEW\n");
  EXPECT_EQ(Merge(kNew, "a\n# Halvoren Section Start\n# Halvoren Section End\n"), "NEW\n");
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\n#\n# x"), "NEW\n");
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\n#\n# x\n"), "NEW\n");
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\n# Halvoren Section End\nsetting"), "NEW\n");
}

TEST(AnEndMarkerAboveTheStartMarker, DecidesAllTheSame) {
  EXPECT_EQ(Merge(kNew, "# Halvoren Section End\n\nkept\n# Halvoren Section Start\nalso kept\n"),
            "NEW\n\nkept\n# Halvoren Section Start\nalso kept\n");
}

TEST(TwoOldSections, LoseOnlyTheFirst) {
  const std::string second = "# Halvoren Section Start\nb\n# Halvoren Section End\n";
  EXPECT_EQ(Merge(kNew, "# Halvoren Section Start\na\n# Halvoren Section End\n\n" + second), "NEW\n\n" + second);
}

TEST(BothMarkersOnOneLine, AreACompleteSection) {
  EXPECT_EQ(Merge(kNew, "x Halvoren Section End Halvoren Section Start y\n\nkept"), "NEW\n\nkept");
}

}  // namespace
