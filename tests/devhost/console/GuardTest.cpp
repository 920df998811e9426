#include "devhost/console/Guard.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::HasSubstr;

class TheGuard : public testing::Test {
 protected:
  // A request that it lets through.
  HttpRequest Good(const std::string& method = "GET", const std::string& path = "/api/v1/devices") const {
    HttpRequest request;
    request.method = method;
    request.target = path;
    request.headers = {{"Host", "127.0.0.1:4711"}, {"X-Devhost-Token", token.Text()}};
    if (method == "POST" || method == "PUT") {
      request.headers.emplace_back("Content-Type", "application/json");
      request.headers.emplace_back("Content-Length", "2");
    }
    return request;
  }
  // The same without one header.
  static HttpRequest Without(HttpRequest request, const std::string& name) {
    for (auto header = request.headers.begin(); header != request.headers.end(); ++header) {
      if (header->first == name) {
        request.headers.erase(header);
        break;
      }
    }
    return request;
  }
  static HttpRequest With(HttpRequest request, const std::string& name, const std::string& value) {
    request.headers.emplace_back(name, value);
    return request;
  }
  static HttpRequest Instead(const HttpRequest& request, const std::string& name, const std::string& value) {
    return With(Without(request, name), name, value);
  }
  // The status of the refusal; 0 when it lets the request through.
  unsigned Check(const HttpRequest& request, bool isReadOnly = false) const {
    const GuardVerdict verdict = Guard(4711, token, isReadOnly).Check(request);
    return verdict.refusal ? verdict.refusal->status : 0;
  }

  const Token token;
};

TEST_F(TheGuard, LetsThePageAndItsRequestsThrough) {
  EXPECT_EQ(Check(Good()), 0U);
  EXPECT_EQ(Check(Good("PUT", "/api/v1/devices/12/settings")), 0U);
  EXPECT_EQ(Check(Good("DELETE", "/api/v1/devices/12/managed")), 0U);
  EXPECT_EQ(Check(Good("GET", "/api/v1/devices/12/history/3?against=before")), 0U);
  EXPECT_EQ(Check(Without(Good("GET", "/"), "X-Devhost-Token")), 0U);
  EXPECT_EQ(Check(Good("HEAD", "/")), 0U);
}

TEST_F(TheGuard, KnowsTheConsoleByTwoNames) {
  EXPECT_EQ(Check(Instead(Good(), "Host", "localhost:4711")), 0U);
  for (const char* const host : {"", "127.0.0.1", "localhost", "127.0.0.1:4712", "evil.test", "evil.test:4711", "[::1]:4711",
                                 "localhost.:4711", "LOCALHOST:4711", "127.0.0.1:4711 ", "127.0.0.1:04711", "127.1:4711"}) {
    EXPECT_EQ(Check(Instead(Good(), "Host", host)), 421U) << host;
    EXPECT_EQ(Check(Instead(Good("GET", "/"), "Host", host)), 421U) << host;
    EXPECT_EQ(Check(Instead(Good("GET", "/nothing"), "Host", host)), 421U) << host;
  }
  EXPECT_EQ(Check(Without(Good(), "Host")), 421U);
  EXPECT_EQ(Check(With(Good(), "Host", "127.0.0.1:4711")), 421U) << "twice";
}

TEST_F(TheGuard, TakesNoTargetThatCouldMeanTwoThings) {
  for (const char* const target : {"http://127.0.0.1:4711/api/v1/devices", "*", "", "api", "/api/v1/%64evices",
                                   "/api/v1/../v1/devices", "/..", "/./", "/api/v1/./devices", "/api/v1/devices?a?b",
                                   "/api\\v1", "/\xc3\xa4", "/a b", "/a\tb", "/#x", "/a;b", "/a:b", "//evil.test@"}) {
    EXPECT_EQ(Check(Good("GET", target)), 400U) << target;
  }
}

TEST_F(TheGuard, WantsTheTokenOfEveryRequestToTheInterface) {
  EXPECT_EQ(Check(Without(Good(), "X-Devhost-Token")), 401U);
  EXPECT_EQ(Check(Instead(Good(), "X-Devhost-Token", "")), 401U);
  EXPECT_EQ(Check(Instead(Good(), "X-Devhost-Token", Token().Text())), 401U);
  EXPECT_EQ(Check(With(Good(), "X-Devhost-Token", token.Text())), 401U) << "twice";
  for (const char* const path : {"/api", "/api/", "/api/v1", "/api/v2/devices", "/api/v1/nothing"}) {
    EXPECT_EQ(Check(Without(Good("GET", path), "X-Devhost-Token")), 401U) << path;
    EXPECT_EQ(Check(Good("GET", path)), 404U) << path;
  }
}

TEST_F(TheGuard, TellsAWrongTokenFromNone) {
  const Guard guard(4711, token, false);
  EXPECT_FALSE(guard.Check(Without(Good(), "X-Devhost-Token")).isWrongToken);
  EXPECT_TRUE(guard.Check(Instead(Good(), "X-Devhost-Token", "x")).isWrongToken);
}

TEST_F(TheGuard, AnswersNoPageOfOthers) {
  EXPECT_EQ(Check(With(Good(), "Origin", "http://127.0.0.1:4711")), 0U);
  EXPECT_EQ(Check(With(Good(), "Origin", "http://localhost:4711")), 0U);
  for (const char* const origin : {"http://evil.test", "null", "", "https://127.0.0.1:4711", "http://127.0.0.1",
                                   "http://127.0.0.1:4712", "http://evil.test:4711"}) {
    EXPECT_EQ(Check(With(Good(), "Origin", origin)), 403U) << origin;
    EXPECT_EQ(Check(With(Good("GET", "/"), "Origin", origin)), 403U) << origin;
  }
  EXPECT_EQ(Check(With(With(Good(), "Origin", "http://127.0.0.1:4711"), "Origin", "http://evil.test")), 403U);
}

TEST_F(TheGuard, BelievesABrowserAboutTheSiteOfARequest) {
  EXPECT_EQ(Check(With(Good(), "Sec-Fetch-Site", "same-origin")), 0U);
  EXPECT_EQ(Check(With(Good(), "Sec-Fetch-Site", "none")), 0U);
  for (const char* const site : {"cross-site", "same-site", "", "other"}) {
    EXPECT_EQ(Check(With(Good(), "Sec-Fetch-Site", site)), 403U) << site;
    EXPECT_EQ(Check(With(Good("GET", "/"), "Sec-Fetch-Site", site)), 403U) << site;
  }
}

// A link that somebody follows, or the file that --open opens.
TEST_F(TheGuard, LetsAnotherPageLeadToThePageAndToNothingElse) {
  const auto navigate = [this](const std::string& target, const std::string& dest) {
    return With(With(With(Good("GET", target), "Sec-Fetch-Site", "cross-site"), "Sec-Fetch-Mode", "navigate"),
                "Sec-Fetch-Dest", dest);
  };
  EXPECT_EQ(Check(navigate("/", "document")), 0U);
  EXPECT_EQ(Check(navigate("/", "iframe")), 403U);
  EXPECT_EQ(Check(navigate("/index.html", "document")), 403U);
  EXPECT_EQ(Check(navigate("/api/v1/devices", "document")), 403U);
}

TEST_F(TheGuard, RefusesChangesWhereTheConsoleIsReadOnly) {
  for (const Route& route : Routes()) {
    std::string path = "/api/v1" + std::string(route.path);
    for (std::size_t brace = path.find('{'); brace != std::string::npos; brace = path.find('{')) {
      path.replace(brace, path.find('}') + 1 - brace, "12");
    }
    EXPECT_EQ(Check(Good(std::string(route.method), path)), 0U) << route.path;
    EXPECT_EQ(Check(Good(std::string(route.method), path), true), route.access == Access::Change ? 403U : 0U) << route.path;
  }
}

TEST_F(TheGuard, WantsJsonAndNothingElse) {
  const HttpRequest good = Good("POST", "/api/v1/command");
  for (const char* const type : {"application/json; charset=utf-8", "Application/JSON"}) {
    EXPECT_EQ(Check(Instead(good, "Content-Type", type)), 0U) << type;
  }
  for (const char* const type : {"", "text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
                                 "application/json; charset=utf-16", "application/jsonx"}) {
    EXPECT_EQ(Check(Instead(good, "Content-Type", type)), 415U) << type;
  }
  EXPECT_EQ(Check(Without(good, "Content-Type")), 415U);
}

TEST_F(TheGuard, WantsTheLengthOfABodyOnceAndInDigits) {
  const HttpRequest good = Good("POST", "/api/v1/command");
  EXPECT_EQ(Check(With(good, "Content-Length", "2")), 400U);
  EXPECT_EQ(Check(With(good, "Transfer-Encoding", "chunked")), 400U);
  EXPECT_EQ(Check(With(Without(good, "Content-Length"), "Transfer-Encoding", "chunked")), 400U);
  for (const char* const length : {"", "+2", "-2", "2, 2", "0x2", "2 ", "9999999999"}) {
    EXPECT_EQ(Check(Instead(good, "Content-Length", length)), 400U) << length;
  }
  EXPECT_EQ(Check(Instead(good, "Content-Length", "1048576")), 0U);
  EXPECT_EQ(Check(Instead(good, "Content-Length", "1048577")), 413U);
  EXPECT_EQ(Check(With(Good(), "Content-Length", "1")), 400U) << "a GET with a body";
  EXPECT_EQ(Check(With(good, "Expect", "100-continue")), 417U);
}

TEST_F(TheGuard, NamesTheMethodsOfAPath) {
  const GuardVerdict verdict = Guard(4711, token, false).Check(Good("PATCH", "/api/v1/devices/12/managed"));
  ASSERT_TRUE(verdict.refusal);
  EXPECT_EQ(verdict.refusal->status, 405U);
  EXPECT_EQ(verdict.refusal->headers.at(0).second, "PUT, DELETE");
  EXPECT_EQ(Check(Good("POST", "/")), 405U);
  EXPECT_EQ(Check(Good("OPTIONS", "/")), 405U);
  EXPECT_EQ(Check(Good("GET", "/nothing.js")), 404U);
}

TEST_F(TheGuard, AllowsNoOtherSiteAnything) {
  HttpRequest preflight = Good("OPTIONS", "/api/v1/command");
  preflight = With(Without(preflight, "X-Devhost-Token"), "Origin", "http://evil.test");
  preflight = With(preflight, "Access-Control-Request-Headers", "x-devhost-token");
  const GuardVerdict verdict = Guard(4711, token, false).Check(preflight);
  ASSERT_TRUE(verdict.refusal);
  EXPECT_EQ(verdict.refusal->status, 403U);
  EXPECT_THAT(HeadOf(*verdict.refusal, true), testing::Not(HasSubstr("Access-Control")));
}

}  // namespace
}  // namespace devhost
