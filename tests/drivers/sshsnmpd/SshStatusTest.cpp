#include "drivers/sshsnmpd/SshStatus.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "drivers/common/OffLineStatus.h"

namespace {

TEST(AStatusOfAControllerBehindSsh, IsNeverTheOneForTextsAcceptedForLaterAndHasWordsAndALineOnItsPage) {
  std::ifstream stream(DEVICE_DRIVERS_PAGE);
  const std::string page(std::istreambuf_iterator<char>(stream), {});
  for (const int status : {drivers::kHostKeyUnknown, drivers::kHostKeyDiffers, drivers::kLoginRefused,
                           drivers::kKeyFileUnusable, drivers::kNoCommand, drivers::kCommandFailed, drivers::kOutcomeUnknown,
                           drivers::kControllerUnfit, drivers::kKnownHostsUnusable, drivers::kControllerOffLine}) {
    EXPECT_NE(-9, status);
    EXPECT_NE("unknown reason", drivers::DescribeSshStatus(status));
    EXPECT_NE(std::string::npos, page.find("\n| " + std::to_string(status) + " | ")) << status;
  }
}

}  // namespace
