#include "devhost/xml/XmlPlaces.h"

#include <gtest/gtest.h>

#include "devhost/xml/XmlReader.h"

namespace devhost {
namespace {

TEST(APlace, CountsLinesAndBytesFromOne) {
  const std::string text = "ab\n\nc";
  XmlPlaces places(text);
  const std::size_t expected[][2] = {{1, 1}, {1, 2}, {1, 3}, {2, 1}, {3, 1}, {3, 2}};
  for (std::size_t offset = 0; offset != 6; ++offset) {
    places.MoveTo(offset);
    EXPECT_EQ(places.Line(), expected[offset][0]) << offset;
    EXPECT_EQ(places.Column(), expected[offset][1]) << offset;
  }
}

TEST(AnError, BehindTheTextIsAtItsEnd) {
  try {
    ThrowXmlError("a\nbc", 100, "why");
  } catch (const XmlError& error) {
    EXPECT_STREQ(error.what(), "why");
    EXPECT_EQ(error.Line(), 2U);
    EXPECT_EQ(error.Column(), 3U);
  }
}

}  // namespace
}  // namespace devhost
