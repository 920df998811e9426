#include "drivers/common/MisspeltAttribute.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/drivers/support/FakeHost.h"

namespace {

std::string Misspelt(const std::string& attributes) {
  return drivers::FindMisspelt(
      *ToNode("<config " + attributes + "/>"),
      {{"host"}, {"hosts"}, {"key", {"keyFile"}}, {"knownHosts"}, {"start"}, {"restart"}, {"stop"}});
}

TEST(AMisspeltAttribute, IsFoundWithTheNameThatIsLikelyMeant) {
  EXPECT_EQ("the attribute knownhosts is unknown; knownHosts is likely meant", Misspelt("knownhosts='/k'"));
  for (const char* const name : {"KnownHosts", "known-hosts", "known_hosts", "KNOWNHOSTS", "knownHost", "knownHosst",
                                 "knwonHosts", "knnownHosts", "knownHostss"}) {
    EXPECT_EQ("the attribute " + std::string(name) + " is unknown; knownHosts is likely meant",
              Misspelt(std::string(name) + "='/k'"));
  }
  for (const char* const name : {"keyFile", "keyfile", "key-file", "KeyFile", "keys", "Key"}) {
    EXPECT_EQ("the attribute " + std::string(name) + " is unknown; key is likely meant",
              Misspelt(std::string(name) + "='/k'"));
  }
}

TEST(AMisspeltAttribute, IsNoneThatIsKnown) {
  EXPECT_EQ("", Misspelt("host='h' hosts='h' key='/k' knownHosts='/k' start='a' restart='b' stop='c'"));
}

TEST(AMisspeltAttribute, IsNotOneOfSomebodyElse) {
  EXPECT_EQ("", Misspelt("comment='x' room='attic' kitchen='y'"));
  EXPECT_EQ("", Misspelt(""));
}

}  // namespace
