#include "drivers/common/OffLineStatus.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "drivers/common/FileStatus.h"

namespace {

TEST(AStatusOfAControllerOffLine, HasWordsAndALineOnItsPage) {
  std::ifstream stream(DEVICE_DRIVERS_PAGE);
  const std::string page(std::istreambuf_iterator<char>(stream), {});
  for (const int status :
       {drivers::kAcceptedForLater, drivers::kControllerOffLine, drivers::kNoTextKnown, drivers::kFileWasChanged}) {
    EXPECT_NE("unknown reason", drivers::DescribeOffLineStatus(status));
    EXPECT_NE(std::string::npos, page.find("\n| " + std::to_string(status) + " | ")) << status;
  }
}

TEST(AStatusOfAControllerOffLine, IsTheOneOfTextsAcceptedForLaterOnlyWhereATextWas) {
  EXPECT_EQ(-9, drivers::kAcceptedForLater);
  EXPECT_NE(-9, drivers::kControllerOffLine);
  EXPECT_NE(-9, drivers::kNoTextKnown);
}

}  // namespace
