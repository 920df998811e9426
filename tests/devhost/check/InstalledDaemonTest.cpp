// What the installed snmpd lists.
#include "devhost/check/InstalledDaemon.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

// On Debian 12. Another daemon may list others: then the list for machines without one wants to be looked at.
TEST(TheInstalledDaemon, ListsTheDirectivesThatAreKnownWithoutIt) {
  const std::optional<DirectiveNames> names = AskForDirectiveNames();
  ASSERT_TRUE(names) << "install the package snmpd";
  EXPECT_EQ(names->daemon, UsualDirectiveNames().daemon);
  EXPECT_EQ(names->programs, UsualDirectiveNames().programs);
}

TEST(ADaemonThatListsNothing, IsNotAskedInVain) {
  const testsupport::ScratchFolder folder;
  ::chmod(folder.Write("snmpd", "#!/bin/sh\necho none\n").c_str(), 0700);
  const std::string before = ::getenv("PATH");
  ::setenv("PATH", folder.Path().c_str(), 1);
  const std::optional<DirectiveNames> names = AskForDirectiveNames();
  ::setenv("PATH", before.c_str(), 1);
  EXPECT_FALSE(names);
}

}  // namespace
}  // namespace devhost
