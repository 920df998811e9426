#include "devhost/console/RequestReader.h"

#include <gmock/gmock.h>

#include "devhost/console/Guard.h"

namespace devhost {
namespace {

using State = RequestReader::State;

constexpr char kPost[] = "POST /a?b=c HTTP/1.1\r\nHost: h\r\nContent-Length: 5\r\nX-Twice: 1\r\nx-twice: 2\r\n\r\n12345";

TEST(ARequestOnTheNetwork, HasAHeadFirstAndABodyOnDemand) {
  RequestReader reader;
  EXPECT_EQ(reader.Put(kPost), State::Body);
  EXPECT_EQ(reader.Current().method, "POST");
  EXPECT_EQ(reader.Current().target, "/a?b=c");
  EXPECT_EQ(reader.Current().version, 11U);
  EXPECT_THAT(reader.Current().Values("X-Twice"), testing::ElementsAre("1", "2"));
  EXPECT_EQ(reader.Current().body, "");
  EXPECT_EQ(reader.Resume(), State::Done);
  EXPECT_EQ(reader.Current().body, "12345");
  EXPECT_TRUE(reader.KeepsAlive());
}

TEST(ARequestOnTheNetwork, MayComeByteByByte) {
  RequestReader reader;
  bool isResumed = false;
  for (const char byte : std::string(kPost)) {
    ASSERT_NE(reader.GetState(), State::Done);
    if (reader.Put({&byte, 1}) == State::Body && !isResumed) {
      isResumed = true;
      reader.Resume();
    }
  }
  EXPECT_EQ(reader.GetState(), State::Done);
  EXPECT_EQ(reader.Current().body, "12345");
}

TEST(ARequestOnTheNetwork, MayBeFollowedByTheNext) {
  RequestReader reader;
  reader.Put(std::string(kPost) + "GET /next HTTP/1.1\r\nConnection: close\r\n\r\n");
  reader.Resume();
  EXPECT_EQ(reader.Current().body, "12345");
  EXPECT_EQ(reader.Next(), State::Body);
  EXPECT_EQ(reader.Current().target, "/next");
  EXPECT_EQ(reader.Current().body, "");
  EXPECT_EQ(reader.Resume(), State::Done);
  EXPECT_FALSE(reader.KeepsAlive());
  EXPECT_EQ(reader.Next(), State::Head);
}

// The parser would wait for the rest of a version that ends with the head.
TEST(AHeadOnTheNetwork, ThatEndsInItsFirstLineIsRefused) {
  RequestReader reader;
  for (const char byte : std::string("GET / HT\r\n\r\n")) {
    reader.Put({&byte, 1});
  }
  EXPECT_EQ(reader.GetState(), State::Wrong);
}

TEST(AHeadOnTheNetwork, HasAtMost8192Bytes) {
  const std::string start = "GET / HTTP/1.1\r\nX: ";
  const std::string most = start + std::string(kLongestHead - start.size() - 4, 'x') + "\r\n\r\n";
  EXPECT_EQ(RequestReader().Put(most), State::Body);
  RequestReader reader;
  EXPECT_EQ(reader.Put("X" + most), State::Wrong);
  EXPECT_EQ(reader.Refusal().status, 431U);
  RequestReader endless;
  State state = State::Head;
  for (int i = 0; i < 20 && state == State::Head; ++i) {
    state = endless.Put(std::string(1000, 'x'));
  }
  EXPECT_EQ(state, State::Wrong);
}

TEST(ABodyOnTheNetwork, HasAtMostAMegabyte) {
  RequestReader reader;
  EXPECT_EQ(reader.Put("POST / HTTP/1.1\r\nContent-Length: 1048577\r\n\r\n"), State::Wrong);
  EXPECT_EQ(reader.Refusal().status, 413U);
}

TEST(SomethingElseThanARequest, IsRefusedForGood) {
  for (const char* const bytes :
       {"\r\n\r\n", "GET\r\n\r\n", "GET / HTTP/2.0\r\n\r\n", "GET /\r\n\r\n", "PRI * HTTP/2.0\r\n\r\n",
        "\x16\x03\x01\x02\r\n\r\n", "GET / HTTP/1.1\r\nNo colon\r\n\r\n", "GET / HTTP/1.1\r\nSpace : 1\r\n\r\n",
        "G\tT / HTTP/1.1\r\n\r\n", "POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
        "POST / HTTP/1.1\r\nContent-Length: +1\r\n\r\n",
        "POST / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n",
        "GET / HTTP/1.1\r\nA: b\x01\r\n\r\n"}) {
    RequestReader reader;
    EXPECT_EQ(reader.Put(bytes), State::Wrong) << bytes;
    EXPECT_EQ(reader.Refusal().status, 400U) << bytes;
    EXPECT_EQ(reader.Put("GET / HTTP/1.1\r\n\r\n"), State::Wrong) << bytes;
    EXPECT_EQ(reader.Next(), State::Wrong) << bytes;
  }
}

}  // namespace
}  // namespace devhost
