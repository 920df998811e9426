#include "devhost/console/HttpRequest.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

HttpRequest WithHeaders() {
  HttpRequest request;
  request.target = "/a/b?c=d?e";
  request.headers = {{"Host", "one"}, {"hOST", "two"}, {"Single", "value"}};
  return request;
}

TEST(ARequest, HasHeadersWhateverTheirCase) {
  EXPECT_THAT(WithHeaders().Values("HOST"), ElementsAre("one", "two"));
  EXPECT_THAT(WithHeaders().Values("Hos"), IsEmpty());
}

TEST(ARequest, HasNoValueForAHeaderThatStandsTwice) {
  EXPECT_EQ(WithHeaders().Value("host"), "");
  EXPECT_EQ(WithHeaders().Value("single"), "value");
}

TEST(ATarget, IsAPathAndAQuery) {
  EXPECT_EQ(WithHeaders().Path(), "/a/b");
  EXPECT_EQ(WithHeaders().Query(), "c=d?e");
  EXPECT_EQ(HttpRequest().Query(), "");
}

TEST(AnError, IsAnObjectWithACodeAndAMessage) {
  const HttpAnswer answer = ErrorAnswer(404, "not-found", "say \"what\" and \xff");
  EXPECT_EQ(answer.status, 404U);
  const nlohmann::json body = nlohmann::json::parse(answer.body);
  EXPECT_EQ(body["error"]["code"], "not-found");
  EXPECT_EQ(body["error"]["message"], "say \"what\" and \xef\xbf\xbd");
}

TEST(AHead, HasTheLengthAndTheHeadersOfTheAnswer) {
  HttpAnswer answer{405, "12345"};
  answer.headers.emplace_back("Allow", "GET");
  const std::string head = HeadOf(answer, true);
  EXPECT_THAT(head, testing::StartsWith("HTTP/1.1 405 Method Not Allowed\r\n"));
  EXPECT_THAT(head, HasSubstr("\r\nContent-Length: 5\r\n"));
  EXPECT_THAT(head, HasSubstr("\r\nAllow: GET\r\n"));
  EXPECT_THAT(head, HasSubstr("\r\nConnection: close\r\n"));
  EXPECT_THAT(head, testing::EndsWith("\r\n\r\n"));
  EXPECT_THAT(HeadOf(answer, false), Not(HasSubstr("Connection")));
  EXPECT_THAT(HeadOf(answer, false, true), Not(HasSubstr("Content-Length")));
}

}  // namespace
}  // namespace devhost
