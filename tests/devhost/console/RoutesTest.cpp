#include "devhost/console/Routes.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::ElementsAre;

TEST(TheTableOfRoutes, HasEachMethodOfAPathOnce) {
  std::set<std::string> seen;
  for (const Route& route : Routes()) {
    EXPECT_TRUE(seen.insert(std::string(route.method) + " " + std::string(route.path)).second) << route.path;
    EXPECT_EQ(route.path.front(), '/');
    EXPECT_FALSE(route.meaning.empty());
  }
}

// What changes nothing can be asked for where the console is read-only.
TEST(TheTableOfRoutes, CallsEveryGetARead) {
  for (const Route& route : Routes()) {
    EXPECT_EQ(route.method == "GET", route.access == Access::Read) << route.path;
  }
}

TEST(ARoute, IsFoundWithTheNumbersOfItsPath) {
  const RouteMatch match = FindRoute("GET", "/devices/12/history/3");
  ASSERT_NE(match.route, nullptr);
  EXPECT_EQ(match.route->path, "/devices/{id}/history/{number}");
  EXPECT_THAT(match.numbers, ElementsAre("12", "3"));
}

TEST(ARoute, HasOnlyNumbersInItsBraces) {
  for (const char* const path : {"/devices/x", "/devices/-1", "/devices/", "/devices/12345678901", "/devices/1/", "/devices",
                                 "devices/1", "//devices/1", "/devices//1", "/devices/1/file/2", "/", ""}) {
    const RouteMatch match = FindRoute("GET", path);
    EXPECT_TRUE(match.route == nullptr || match.route->path == "/devices") << path;
  }
}

TEST(APathWithAnotherMethod, NamesTheMethodsThatItHas) {
  const RouteMatch match = FindRoute("GET", "/devices/12/managed");
  EXPECT_EQ(match.route, nullptr);
  EXPECT_EQ(match.allowed, "PUT, DELETE");
  EXPECT_EQ(FindRoute("GET", "/nothing").allowed, "");
}

TEST(ThePageOfTheInterface, ListsEveryRouteAndNoOther) {
  std::ostringstream rows;
  for (const Route& route : Routes()) {
    const char* const access[] = {"reads", "tries", "changes"};
    rows << "| `" << route.method << " " << route.path << "` | " << access[static_cast<int>(route.access)] << " | "
         << route.meaning << " |\n";
  }
  const std::string page = testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/console-api.md");
  const std::size_t start = page.find("| `GET /session`");
  ASSERT_NE(start, std::string::npos);
  EXPECT_EQ(page.substr(start, page.find("\n\n", start) + 1 - start), rows.str());
}

}  // namespace
}  // namespace devhost
