#include "devhost/console/Connection.h"

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tests/devhost/console/RunningServer.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLong{60};

RunningServer::Setup Hasty() {
  RunningServer::Setup setup;
  setup.limits.head = setup.limits.body = setup.limits.write = std::chrono::milliseconds(300);
  setup.limits.ping = std::chrono::milliseconds(300);
  return setup;
}

// A stream of events that has begun. `more` are header lines. A hasty server refuses a client that a busy machine has kept
// from asking in time, and a full one may not have seen yet that another client has left: that client comes again.
std::unique_ptr<Client> Listen(const RunningServer& server, const std::string& more = "", int buffer = 0) {
  std::unique_ptr<Client> client;
  std::string head;
  for (const auto start = Clock::now(); head.find(" 200 ") == std::string::npos && Clock::now() - start < kLong;) {
    client = std::make_unique<Client>(server.Port(), buffer);
    client->Send(server.Request("GET", "/events", "", more));
    head = client->ReadUntil("\r\n\r\n");
  }
  EXPECT_THAT(head, HasSubstr("text/event-stream"));
  return client;
}

// The answer to a client that comes again where it was too late for the server.
Received GetInTime(const RunningServer& server, const std::string& path) {
  Received answer;
  for (const auto start = Clock::now(); answer.status == 0 && Clock::now() - start < kLong;) {
    answer = server.Get(path);
  }
  return answer;
}

// Whether the first port of 127.0.0.1 has closed its connection with the second, which has not read all yet: FIN_WAIT1.
bool HasClosed(std::uint16_t from, std::uint16_t to) {
  std::array<char, 64> wanted{};
  std::snprintf(wanted.data(), wanted.size(), " 0100007F:%04X 0100007F:%04X 04 ", unsigned{from}, unsigned{to});
  return testsupport::ScratchFolder::ReadFile("/proc/net/tcp").find(wanted.data()) != std::string::npos;
}

TEST(AConnection, StaysForTheNextRequest) {
  const RunningServer server;
  Client client(server.Port());
  client.Send(server.Request("GET", "/devices") + server.Request("GET", "/variables"));
  EXPECT_THAT(client.Read().body, HasSubstr("\"/devices\""));
  EXPECT_THAT(client.Read().body, HasSubstr("\"/variables\""));
  client.Send(server.Request("GET", "/session", "", "Connection: close\r\n"));
  EXPECT_EQ(client.Read().status, 200);
  EXPECT_TRUE(client.IsClosed());
}

TEST(AConnection, SendsTheHeadOfAPage) {
  const RunningServer server;
  Client client(server.Port());
  client.Send("HEAD / HTTP/1.1\r\nHost: localhost:" + std::to_string(server.Port()) + "\r\n\r\n" +
              server.Request("GET", "/session"));
  const Received head = client.Read(true);
  EXPECT_EQ(head.status, 200);
  EXPECT_NE(head.headers.at("content-length"), "0");
  EXPECT_EQ(client.Read().status, 200) << "the next answer, with no body between them";
}

TEST(AConnection, SendsAPagePackedToWhoeverTakesThat) {
  const RunningServer server;
  const std::string start = "GET / HTTP/1.1\r\nHost: localhost:" + std::to_string(server.Port()) + "\r\n";
  const Received plain = server.Exchange(start + "\r\n");
  EXPECT_EQ(plain.headers.count("content-encoding"), 0U);
  EXPECT_THAT(plain.body, StartsWith("<!"));
  const Received packed = server.Exchange(start + "Accept-Encoding: deflate, gzip, br\r\n\r\n");
  EXPECT_EQ(packed.headers.at("content-encoding"), "gzip");
  EXPECT_THAT(packed.body, StartsWith("\x1f\x8b"));
  EXPECT_LT(packed.body.size(), plain.body.size());
  for (const char* const other : {"gzip;q=0", "identity", "xgzip", "gzip;q=0.5, br"}) {
    EXPECT_EQ(server.Exchange(start + "Accept-Encoding: " + other + "\r\n\r\n").body, plain.body) << other;
  }
}

TEST(AConnection, EndsWithARefusal) {
  const RunningServer server;
  Client client(server.Port());
  client.Send(Ask(server.Port(), "wrong", "POST", "/api/v1/command", "{}") + server.Request("GET", "/session"));
  EXPECT_EQ(client.Read().status, 401);
  EXPECT_EQ(client.Read().status, 0) << "what comes behind it is not a request";
}

TEST(AConnection, LetsTheClientReadARefusalOfALongBody) {
  const RunningServer server;
  Client client(server.Port());
  std::string request = server.Request("POST", "/command", std::string(1'000'000, ' '));
  request.replace(request.find(server.Token()), 4, "xxxx");
  client.Send(request);
  EXPECT_EQ(client.Read().status, 401);
}

TEST(AConnection, WaitsOnlySoLongForAHead) {
  const RunningServer server(Hasty());
  Client silent(server.Port());
  Client slow(server.Port());
  slow.Send("GET / HTTP/1.1\r\n");
  EXPECT_TRUE(silent.IsClosed());
  EXPECT_TRUE(slow.IsClosed());
}

// Bytes that trickle in do not extend the time.
TEST(AConnection, WaitsOnlySoLongForAHeadThatTrickles) {
  const RunningServer server(Hasty());
  Client client(server.Port());
  const auto start = Clock::now();
  while (!client.IsClosed(std::chrono::milliseconds(50)) && Clock::now() - start < std::chrono::seconds(20)) {
    client.Send("G");
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

TEST(AConnection, WaitsOnlySoLongForABody) {
  const RunningServer server(Hasty());
  Client client(server.Port());
  std::string request = server.Request("POST", "/command", "{}");
  request.pop_back();
  client.Send(request);
  EXPECT_TRUE(client.IsClosed());
}

// The host process may take as long as it needs: restarting a daemon takes half a minute.
TEST(AConnection, WaitsForTheHostProcess) {
  RunningServer::Setup setup = Hasty();
  setup.limits.head = setup.limits.body = setup.limits.write = std::chrono::milliseconds(100);
  const RunningServer server(setup);
  server.AwaitState("up");
  EXPECT_EQ(GetInTime(server, "/devices/9").status, 200);
}

TEST(AClientThatLeaves, TakesItsQuestionWithIt) {
  const RunningServer server;
  const std::unique_ptr<Client> events = Listen(server);
  Client first(server.Port());
  first.Send(server.Request("GET", "/devices/17"));
  EXPECT_THAT(server.AwaitState("busy"), HasSubstr("/devices/17"));
  {
    Client leaves(server.Port());
    leaves.Send(server.Request("GET", "/devices/11"));
    // It is in the queue before it leaves: the session is answered by the same thread, later.
    server.Get("/session");
  }
  // The same thread has seen by then that it has left.
  server.Get("/session");
  server.folder.Write("kept.go", "");
  EXPECT_EQ(first.Read().status, 200);
  server.Get("/devices/10");
  EXPECT_THAT(events->ReadUntil("\"restart\""), Not(HasSubstr("\"mark\"")));
}

TEST(AStream, BringsEventsWithTheirNumbers) {
  const RunningServer server;
  server.AwaitState("up");
  const std::unique_ptr<Client> events = Listen(server, "Last-Event-ID: 0\r\n");
  EXPECT_THAT(events->ReadUntil("\n\n"), StartsWith("id: 1\ndata: {\"kind\":\"host\",\"state\":\"starting\""));
  const std::string load = events->ReadUntil("\n\n");
  EXPECT_THAT(load, StartsWith("id: 2\ndata: {"));
  const nlohmann::json event = nlohmann::json::parse(load.substr(load.find('{')));
  EXPECT_EQ(event["kind"], "load");
  EXPECT_EQ(event["n"], 2);
  EXPECT_GT(event["time"], 1'000'000'000'000);
  EXPECT_THAT(events->ReadUntil("\n\n"), HasSubstr("\"state\":\"up\""));
  server.Get("/devices/11");
  EXPECT_THAT(events->ReadUntil("\n\n"), HasSubstr("\"mark\""));
}

TEST(AStream, BeginsWithNowUnlessTheClientSaysWhatItHas) {
  const RunningServer server;
  server.AwaitState("up");
  const std::unique_ptr<Client> events = Listen(server);
  server.Get("/devices/11");
  EXPECT_THAT(events->ReadUntil("\n\n"), StartsWith("id: 4\n"));
  const std::unique_ptr<Client> again = Listen(server, "Last-Event-ID: 2\r\n");
  EXPECT_THAT(again->ReadUntil("\n\n"), StartsWith("id: 3\n"));
}

TEST(AStream, SaysOnceThatEventsAreMissing) {
  const RunningServer server;
  server.Get("/devices/5");
  const std::unique_ptr<Client> events = Listen(server, "Last-Event-ID: 2\r\n");
  EXPECT_EQ(events->ReadUntil("\n\n"), "event: stale\ndata: {}\n\n");
  server.Get("/devices/11");
  EXPECT_THAT(events->ReadUntil("\"mark\""), Not(HasSubstr("stale")));
}

TEST(AStream, ShowsThatItLives) {
  const RunningServer server(Hasty());
  server.AwaitState("up");
  const std::unique_ptr<Client> events = Listen(server);
  EXPECT_EQ(events->ReadUntil("\n\n"), "event: ping\ndata: {}\n\n");
  EXPECT_EQ(events->ReadUntil("\n\n"), "event: ping\ndata: {}\n\n");
}

TEST(AStream, SaysWhenTheHostProcessEnds) {
  const RunningServer server;
  server.AwaitState("up");
  const std::unique_ptr<Client> events = Listen(server);
  server.Get("/devices/3");
  EXPECT_THAT(events->ReadUntil("\n\n"),
              HasSubstr("\"state\":\"ended\",\"reason\":\"the process was ended by SIGABRT during"));
  EXPECT_EQ(server.Get("/session").status, 200);
}

TEST(AClientThatDoesNotRead, IsCutOffAndNothingElseStops) {
  const RunningServer server(Hasty());
  server.AwaitState("up");
  const std::unique_ptr<Client> deaf = Listen(server, "", 4096);
  const std::unique_ptr<Client> other = Listen(server);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(GetInTime(server, "/devices/5").status, 200);
  }
  GetInTime(server, "/devices/11");
  other->ReadUntil("\"mark\"");
  // Only then may the client read: a client that reads in time is not cut off.
  for (int i = 0; i < 6000 && !HasClosed(server.Port(), deaf->Port()); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(deaf->IsClosed());
}

TEST(AStream, EndsWithItsClient) {
  RunningServer::Setup setup;
  setup.limits.connections = 2;
  const RunningServer server(setup);
  for (int i = 0; i < 20; ++i) {
    Received answer;
    const std::unique_ptr<Client> events = Listen(server);
    for (int attempt = 0; attempt < 100 && answer.status != 200; ++attempt) {
      answer = server.Get("/session");
    }
    EXPECT_EQ(answer.status, 200) << i;
  }
}

}  // namespace
}  // namespace devhost
