// Sends what docs/console-api.md shows.
#include <regex>
#include <set>

#include "devhost/console/Routes.h"
#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

// The line that stands before a fenced block names the request; it says whether If-Match is sent, too.
struct ShownRequest {
  std::string method;
  std::string path;
  bool hasBase = false;
  std::string body;
};

class ThePageOfTheInterface : public SessionFixture {
 protected:
  ThePageOfTheInterface() {
    means.projectFile = folder.Path("project.xml");
    project.variables = {{5, 7, "lamp"}};
    const std::regex form("\n`([A-Z]+) (/[^` ]+)`([^\n]*)\n\n```json\n([^`]*)```\n");
    for (std::sregex_iterator at(page.begin(), page.end(), form), end; at != end; ++at) {
      const std::smatch& found = *at;
      requests.push_back({found[1], found[2], found[3].str().find("`If-Match`") != std::string::npos, found[4]});
    }
  }

  std::size_t Blocks() const {
    std::size_t blocks = 0;
    for (std::size_t at = 0; (at = page.find("\n```json", at)) != std::string::npos; ++at) {
      ++blocks;
    }
    return blocks;
  }
  // Every member that is answered is explained.
  void ExpectExplained(const Json& answer) const {
    for (const auto& member : answer.items()) {
      EXPECT_THAT(page, HasSubstr("`" + member.key() + "`"));
    }
  }

  const std::string page = testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/console-api.md");
  std::vector<ShownRequest> requests;
};

TEST_F(ThePageOfTheInterface, ShowsABodyOfEachRouteThatHasOne) {
  EXPECT_EQ(requests.size(), Blocks()) << "a block has no line with its request before it";
  std::set<std::string> shown;
  for (const ShownRequest& request : requests) {
    const RouteMatch match = FindRoute(request.method, request.path);
    ASSERT_NE(match.route, nullptr) << request.method << " " << request.path;
    shown.insert(std::string(match.route->method) + " " + std::string(match.route->path));
  }
  for (const Route& route : Routes()) {
    if (route.by == Answerer::Host && (route.method == "POST" || route.method == "PUT")) {
      EXPECT_EQ(shown.count(std::string(route.method) + " " + std::string(route.path)), 1U)
          << route.method << " " << route.path;
    }
  }
}

TEST_F(ThePageOfTheInterface, ShowsBodiesThatASessionTakesInTheirOrder) {
  Start();
  const Json kitchen = Ask("GET", "/devices/12").body;
  ExpectExplained(kitchen);
  ExpectExplained(kitchen.at("settings"));
  std::string base = kitchen.at("base");
  for (const ShownRequest& request : requests) {
    const Reply reply = Ask(request.method, request.path, Json::parse(request.body), request.hasBase ? base : "");
    ASSERT_EQ(reply.status, 200) << request.method << " " << request.path << reply.body;
    ExpectExplained(reply.body);
    EXPECT_THAT(reply.body.value("verdict", ""), Not(AnyOf("stopped", "failed", "unchanged"))) << reply.body;
    EXPECT_THAT(reply.body.value("reply", ""), Not(HasSubstr("Fail"))) << reply.body;
    base = reply.body.value("base", base);
  }
  EXPECT_EQ(Ask("GET", "/devices/12/history").body.at("snapshots").size(), 2U);
}

}  // namespace
}  // namespace devhost
