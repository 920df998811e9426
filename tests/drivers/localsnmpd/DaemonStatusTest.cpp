#include "drivers/localsnmpd/DaemonStatus.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "drivers/common/OffLineStatus.h"

namespace {

TEST(AStatusOfADaemon, IsNeverTheOneForTextsAcceptedForLaterAndHasWordsAndALineOnItsPage) {
  std::ifstream stream(DEVICE_DRIVERS_PAGE);
  const std::string page(std::istreambuf_iterator<char>(stream), {});
  for (const int status : {drivers::kDaemonNotInstalled, drivers::kDaemonNotStarted, drivers::kDaemonEndedAtStart,
                           drivers::kDaemonNotReady, drivers::kPortTaken, drivers::kDaemonFolderUnusable,
                           drivers::kServedCopyNotWritten, drivers::kDaemonDoesNotEnd, drivers::kControllerOffLine}) {
    EXPECT_NE(-9, status);
    EXPECT_NE("unknown reason", drivers::DescribeDaemonStatus(status));
    EXPECT_NE(std::string::npos, page.find("\n| " + std::to_string(status) + " | ")) << status;
  }
}

}  // namespace
