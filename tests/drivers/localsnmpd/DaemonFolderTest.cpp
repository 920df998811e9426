#include "drivers/localsnmpd/DaemonFolder.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::DaemonFolder;

TEST(ADaemonsLog, IsReadWhole) {
  const TemporaryFolder folder;
  DaemonFolder daemon(folder.Path());
  ASSERT_EQ("", daemon.Prepare());
  folder.Write("daemon/log", "first\nno line feed");
  EXPECT_EQ("first\nno line feed", daemon.ReadLog());
}

// Half of a secret would be shown.
TEST(ADaemonsLog, IsReadUpToItsLastWholeLineWhenItIsLong) {
  const TemporaryFolder folder;
  DaemonFolder daemon(folder.Path());
  ASSERT_EQ("", daemon.Prepare());
  const std::string start(1000000, 'a');
  folder.Write("daemon/log", start + "\n" + std::string(100000, 'b') + "\n");
  EXPECT_EQ(start + "\n", daemon.ReadLog());
  folder.Write("daemon/log", std::string(2000000, 'c'));
  EXPECT_EQ("", daemon.ReadLog());
}

}  // namespace
