#include "devhost/project/DriverNames.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace devhost {
namespace {

// The message about a word that stands for no driver.
std::string ErrorOf(const DriverNames& names, const std::string& word) {
  try {
    names.Find(word);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

std::vector<DriverEntry> Numbered(unsigned long count) {
  std::vector<DriverEntry> drivers;
  for (unsigned long id = 1; id <= count; ++id) {
    drivers.push_back({id, "d" + std::to_string(id), "", ""});
  }
  return drivers;
}

class TheDriversOfAProject : public testing::Test {
 protected:
  const DriverNames names{{{12, "kitchen", "", ""}, {0, "agent", "", ""}, {4294967295UL, "attic", "", ""}}};
};

TEST_F(TheDriversOfAProject, AreFoundByNameAndById) {
  EXPECT_EQ(names.Find("kitchen"), 12U);
  EXPECT_EQ(names.Find("12"), 12U);
  EXPECT_EQ(names.Find("agent"), 0U);
  EXPECT_EQ(names.Find("0"), 0U);
  EXPECT_EQ(names.Find("4294967295"), 4294967295UL);
}

TEST_F(TheDriversOfAProject, HaveNames) {
  EXPECT_EQ(names.Name(0), "agent");
  EXPECT_EQ(names.Name(4294967295UL), "attic");
}

TEST_F(TheDriversOfAProject, AreListedForAWordThatIsNoneOfThem) {
  for (const char* const word : {"cellar", "Kitchen", "13", "12x", " 12", "-12", "+12", "", "99999999999999999999"}) {
    EXPECT_EQ(ErrorOf(names, word),
              "there is no driver of that name or id; the drivers of this project are: kitchen (12), agent (0), attic "
              "(4294967295)");
  }
}

TEST(ManyDriversOfAProject, AreNotAllListed) {
  const std::string twenty = ErrorOf(DriverNames(Numbered(20)), "x");
  EXPECT_EQ(twenty.substr(twenty.size() - 18), "d19 (19), d20 (20)");
  EXPECT_EQ(ErrorOf(DriverNames(Numbered(21)), "x"), twenty + ", ...");
  EXPECT_EQ(ErrorOf(DriverNames(Numbered(1000)), "x"), twenty + ", ...");
}

TEST(NoDrivers, AreListedAsNone) {
  EXPECT_EQ(ErrorOf(DriverNames({}), "x"), "there is no driver of that name or id; the drivers of this project are: none");
}

}  // namespace
}  // namespace devhost
