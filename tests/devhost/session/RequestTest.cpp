#include "devhost/session/Request.h"

#include "devhost/session/RequestError.h"
#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;

using ARequest = SessionFixture;

std::string WhyRefused(const std::string& line) {
  Request request;
  try {
    ReadRequest(line, request);
    return "";
  } catch (const RequestError& error) {
    return std::to_string(error.status) + " " + error.what();
  }
}

TEST(ALine, IsReadWithAllItsParts) {
  Request request;
  ReadRequest(
      R"({"id":7,"method":"PUT","path":"/devices/12/settings","query":{"a":"b"},"ifMatch":"base","body":{"accepted":[]}})",
      request);
  EXPECT_EQ(request.id, 7);
  EXPECT_EQ(request.method, "PUT");
  EXPECT_EQ(request.path, "/devices/12/settings");
  EXPECT_THAT(request.steps, testing::ElementsAre("devices", "12", "settings"));
  EXPECT_EQ(request.query.dump(), R"({"a":"b"})");
  EXPECT_EQ(request.ifMatch, "base");
  EXPECT_EQ(request.body.dump(), R"({"accepted":[]})");
}

TEST(ALine, MayLeaveOutWhatItDoesNotNeed) {
  Request request;
  ReadRequest(R"({"id":7,"method":"GET","path":"/devices","body":null})", request);
  EXPECT_EQ(request.ifMatch, "");
  EXPECT_EQ(request.query.dump(), "{}");
  EXPECT_EQ(request.body.dump(), "{}");
}

TEST(ALine, IsRefusedWithTheReason) {
  EXPECT_EQ(WhyRefused("{}"), "400 the request has no id; allowed: a number");
  EXPECT_EQ(WhyRefused(R"({"id":7})"), "400 the path does not begin with a slash");
  EXPECT_EQ(WhyRefused(R"({"id":7,"path":7})"), "400 path is not a text");
  EXPECT_EQ(WhyRefused(R"({"id":7,"path":"/a","body":[]})"), "422 the body is not a JSON object");
  EXPECT_EQ(WhyRefused(R"({"id":7,"path":"/a","query":"b"})"), "422 the query is not a JSON object");
}

// A number of 64 bits must not pass for one of its lower half.
TEST(AMember, IsANumberOf32BitsAtMost) {
  const nlohmann::json body = {{"large", 4294967295U}, {"larger", 4294967296U}, {"below", -1}, {"part", 1.5}, {"text", "1"}};
  EXPECT_EQ(NumberMember(body, "large"), 4294967295U);
  for (const char* const name : {"larger", "below", "part", "text", "missing"}) {
    EXPECT_THROW(NumberMember(body, name), RequestError) << name;
  }
}

TEST(AMisspeltMember, DoesNotPassForOneThatIsMissing) {
  EXPECT_NO_THROW(AllowMembers({{"accepted", 1}}, {"accepted", "settings"}));
  try {
    AllowMembers({{"acepted", 1}}, {"accepted", "settings"});
    FAIL();
  } catch (const RequestError& error) {
    EXPECT_STREQ(error.what(), "the body has a member that is not known; allowed: accepted, settings");
  }
}

TEST_F(ARequest, AnswersALineOfNothingButBrackets) {
  Start();
  for (const char bracket : {'[', '{'}) {
    session->Play(std::string(std::size_t{1} << 20, bracket));
    EXPECT_EQ(Lines().back().at("status"), 400);
  }
  session->Play(R"({"id":7,"method":"POST","path":"/command","body":{"parameters":)" + std::string(100, '[') +
                std::string(100, ']') + "}}");
  EXPECT_THAT(Lines().back().at("body").at("error").at("message").get<std::string>(), HasSubstr("deeper than 32"));
}

// The front waits for the answer under this id, wherever it stands in the line.
TEST_F(ARequest, AnswersABodyThatIsTooDeepUnderItsId) {
  Start();
  for (const std::size_t depth : {std::size_t{40}, std::size_t{1} << 19}) {
    const std::string body = R"("body":{"a":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
    for (const std::string& line : {R"({"id":7,"method":"POST","path":"/command",)" + body + "}",
                                    "{" + body + R"(,"method":"POST","path":"/command","id":7})"}) {
      session->Play(line);
      EXPECT_EQ(Lines().back().at("id"), 7);
      EXPECT_EQ(Lines().back().at("status"), 422);
    }
  }
  EXPECT_EQ(Ask("GET", "/devices").status, 200);
}

}  // namespace
}  // namespace devhost
