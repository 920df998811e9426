// The lines of docs/decisions/console.md about security, over real sockets.
#include "devhost/console/Server.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "devhost/console/Routes.h"
#include "tests/devhost/console/RunningServer.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;

using Clock = std::chrono::steady_clock;

// The path of a route with numbers in its braces.
std::string PathOf(const Route& route) {
  std::string path(route.path);
  for (std::size_t brace = path.find('{'); brace != std::string::npos; brace = path.find('{')) {
    path.replace(brace, path.find('}') + 1 - brace, "1");
  }
  return path;
}

std::string BodyOf(const Route& route) {
  return route.method == "POST" || route.method == "PUT" ? "{}" : "";
}

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  return text.replace(text.find(what), what.size(), with);
}

bool CanConnect(struct sockaddr_in address, std::uint16_t port) {
  const FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  address.sin_port = htons(port);
  return ::connect(socket.Get(), reinterpret_cast<struct sockaddr*>(&address), sizeof address) == 0;
}

TEST(TheServer, ListensOnOneAddressOnly) {
  const RunningServer server;
  struct sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_TRUE(CanConnect(address, server.Port()));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
  EXPECT_FALSE(CanConnect(address, server.Port()));
  struct ifaddrs* all = nullptr;
  ASSERT_EQ(::getifaddrs(&all), 0);
  for (const struct ifaddrs* one = all; one != nullptr; one = one->ifa_next) {
    if (one->ifa_addr == nullptr || one->ifa_addr->sa_family != AF_INET) {
      continue;
    }
    const auto& own = *reinterpret_cast<const struct sockaddr_in*>(one->ifa_addr);
    EXPECT_EQ(CanConnect(own, server.Port()), own.sin_addr.s_addr == htonl(INADDR_LOOPBACK)) << ::inet_ntoa(own.sin_addr);
  }
  ::freeifaddrs(all);
}

TEST(TheServer, SaysWhenItsPortIsTaken) {
  const RunningServer first;
  try {
    const Server second({}, first.Port(), [](std::string_view) {});
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("cannot listen on 127.0.0.1, port " + std::to_string(first.Port())));
  }
}

TEST(TheServer, HasItsTokenInTheFragmentOfItsAddress) {
  const RunningServer server;
  EXPECT_EQ(server.Address(), "http://127.0.0.1:" + std::to_string(server.Port()) + "/#" + server.Token());
}

// Whatever route somebody adds, the guard stands in front of it.
TEST(EveryRoute, RefusesWhoeverHasNoTokenOrComesFromElsewhere) {
  const RunningServer server;
  server.AwaitState("up");
  for (const Route& route : Routes()) {
    const std::string good = server.Request(std::string(route.method), PathOf(route), BodyOf(route));
    const auto status = [&server](const std::string& request) { return server.Exchange(request).status; };
    const std::string token = "X-Devhost-Token: " + server.Token() + "\r\n";
    EXPECT_EQ(status(Replaced(good, token, "")), 401) << route.path;
    EXPECT_EQ(status(Replaced(good, "Host: 127.0.0.1", "Host: evil.test")), 421) << route.path;
    EXPECT_EQ(status(Replaced(good, token, token + "Origin: http://evil.test\r\n")), 403) << route.path;
    EXPECT_EQ(status(Replaced(good, token, token + "Sec-Fetch-Site: cross-site\r\n")), 403) << route.path;
  }
  EXPECT_THAT(server.Get("/session").body, HasSubstr("\"state\":\"up\"")) << "and nothing was restarted";
}

// The test above would pass where everything is refused.
TEST(EveryRoute, AnswersWhoeverHasTheToken) {
  const RunningServer server;
  server.AwaitState("up");
  for (const Route& route : Routes()) {
    EXPECT_EQ(server.Exchange(server.Request(std::string(route.method), PathOf(route), BodyOf(route))).status, 200)
        << route.path;
  }
}

TEST(EveryChange, IsRefusedWhereTheConsoleIsReadOnly) {
  RunningServer::Setup setup;
  setup.isReadOnly = true;
  const RunningServer server(setup);
  server.AwaitState("up");
  for (const Route& route : Routes()) {
    const int status = server.Exchange(server.Request(std::string(route.method), PathOf(route), BodyOf(route))).status;
    // A host that is up is not restarted; TheFront has a test of one that has ended.
    const bool isRefused = route.access == Access::Change || route.path == "/host/restart";
    EXPECT_EQ(status, isRefused ? 403 : 200) << route.method << " " << route.path;
  }
}

// What is wrong about a request, and the answer.
struct Wrong {
  std::string request;
  int status;
};

// Each ends its connection, so that nothing behind it is taken for a request.
TEST(AWrongRequest, IsRefusedAndEndsTheConnection) {
  const RunningServer server;
  const std::string port = std::to_string(server.Port());
  const std::string own = "Host: 127.0.0.1:" + port + "\r\nX-Devhost-Token: " + server.Token() + "\r\n";
  const std::string json = own + "Content-Type: application/json\r\n";
  const std::string command = "POST /api/v1/command HTTP/1.1\r\n";
  for (const Wrong& wrong : std::vector<Wrong>{
           {"GET http://127.0.0.1:" + port + "/api/v1/devices HTTP/1.1\r\n" + own + "\r\n", 400},
           {"GET http://evil.test/ HTTP/1.1\r\n" + own + "\r\n", 400},
           {"GET /api/v1/../v1/devices HTTP/1.1\r\n" + own + "\r\n", 400},
           {"GET /api/v1/%64evices HTTP/1.1\r\n" + own + "\r\n", 400},
           {"GET /%2e%2e/etc/passwd HTTP/1.1\r\n" + own + "\r\n", 400},
           {"CONNECT evil.test:80 HTTP/1.1\r\n" + own + "\r\n", 400},
           {"OPTIONS * HTTP/1.1\r\n" + own + "\r\n", 400},
           {"GET / HTTP/1.1\r\n\r\n", 421},
           {"GET / HTTP/1.1\r\n" + own + own + "\r\n", 421},
           {"GET / HTTP/3.0\r\n" + own + "\r\n", 400},
           {command + json + "Content-Length: 2\r\nContent-Length: 2\r\n\r\n{}", 400},
           {command + json + "Content-Length: 2\r\nContent-Length: 3\r\n\r\n{}", 400},
           {command + json + "Content-Length: 2,2\r\n\r\n{}", 400},
           {command + json + "Content-Length: +2\r\n\r\n{}", 400},
           {command + json + "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n", 400},
           {command + json + "Transfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n", 400},
           {command + json + "Transfer-Encoding: identity\r\n\r\n{}", 400},
           {command + json + "Transfer-Encoding : chunked\r\n\r\n", 400},
           {command + json + "Content-Length: 2000000\r\n\r\n", 413},
           {command + own + "Content-Type: text/plain\r\nContent-Length: 2\r\n\r\n{}", 415},
           {command + own + "Content-Length: 2\r\n\r\n{}", 415},
           {command + json + "Content-Length: 2\r\nExpect: 100-continue\r\n\r\n{}", 417},
           {"GET / HTTP/1.1\r\n" + own + "X: " + std::string(9000, 'x') + "\r\n\r\n", 431},
           {"PATCH /api/v1/devices HTTP/1.1\r\n" + own + "\r\n", 405},
           {"GET /api/v1/nothing HTTP/1.1\r\n" + own + "\r\n", 404},
           {"GET /nothing HTTP/1.1\r\n" + own + "\r\n", 404},
       }) {
    Client client(server.Port());
    client.Send(wrong.request);
    const Received answer = client.Read();
    EXPECT_EQ(answer.status, wrong.status) << wrong.request.substr(0, 300);
    EXPECT_EQ(answer.headers.count("connection"), 1U) << wrong.request.substr(0, 300);
    EXPECT_TRUE(client.IsClosed()) << wrong.request.substr(0, 300);
  }
}

TEST(EveryAnswer, HasThePoliciesOfTheConsole) {
  const RunningServer server;
  server.AwaitState("up");
  Client events(server.Port());
  events.Send(server.Request("GET", "/events"));
  const std::string host = "Host: 127.0.0.1:" + std::to_string(server.Port()) + "\r\n\r\n";
  for (const Received& answer :
       {server.Get("/session"), server.Get("/devices"), server.Get("/nothing"), server.Exchange("GET / HTTP/1.1\r\n" + host),
        server.Exchange("GET /api/v1/session HTTP/1.1\r\n" + host), server.Exchange("GET / HTTP/1.1\r\n\r\n"),
        server.Exchange("rubbish\r\n\r\n"), events.Read()}) {
    ASSERT_NE(answer.status, 0);
    EXPECT_EQ(
        answer.headers.at("content-security-policy"),
        "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; base-uri 'none'; "
        "form-action 'none'; frame-ancestors 'none'")
        << answer.head;
    EXPECT_EQ(answer.headers.at("x-content-type-options"), "nosniff");
    EXPECT_EQ(answer.headers.at("referrer-policy"), "no-referrer");
    EXPECT_EQ(answer.headers.at("cross-origin-opener-policy"), "same-origin");
    EXPECT_EQ(answer.headers.at("cross-origin-resource-policy"), "same-origin");
    EXPECT_EQ(answer.headers.at("cache-control"), "no-store");
    EXPECT_THAT(answer.head, Not(HasSubstr("Access-Control")));
    EXPECT_THAT(answer.head, Not(HasSubstr("Set-Cookie")));
  }
}

// A page that reaches this address under a name of its own learns nothing, not even what exists.
TEST(AnAnswerToAnotherHost, IsTheSameForEveryTarget) {
  const RunningServer server;
  const auto get = [&server](const std::string& target) {
    return server.Exchange("GET " + target + " HTTP/1.1\r\nHost: evil.test\r\n\r\n");
  };
  const Received first = get("/");
  EXPECT_EQ(first.status, 421);
  for (const char* const target : {"/index.html", "/api/v1/session", "/nothing"}) {
    EXPECT_EQ(get(target).head + get(target).body, first.head + first.body);
  }
}

TEST(WrongTokens, WaitAfterTenAndKeepNobodyElseWaiting) {
  const RunningServer server;
  const std::string wrong = Ask(server.Port(), std::string(64, '0'), "GET", "/api/v1/session");
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(server.Exchange(wrong).status, 401);
  }
  const auto start = Clock::now();
  Client client(server.Port());
  client.Send(wrong);
  EXPECT_EQ(server.Get("/session").status, 200);
  EXPECT_EQ(client.Read().status, 401);
  EXPECT_GE(Clock::now() - start, TokenPause::kPause);
}

TEST(ConnectionsBeyondTheLimit, AreTurnedAway) {
  RunningServer::Setup setup;
  setup.limits.connections = 3;
  const RunningServer server(setup);
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 3; ++i) {
    clients.push_back(std::make_unique<Client>(server.Port()));
    clients.back()->Send(server.Request("GET", "/session"));
    EXPECT_EQ(clients.back()->Read().status, 200);
  }
  Client fourth(server.Port());
  EXPECT_EQ(fourth.Read().status, 503);
  EXPECT_TRUE(fourth.IsClosed());
  clients.pop_back();
  Received answer;
  for (int i = 0; i < 100 && answer.status != 200; ++i) {
    answer = server.Get("/session");
  }
  EXPECT_EQ(answer.status, 200);
}

TEST(AConnectionWithoutTheToken, LeavesItsPlaceToTheNextWhenThereIsNoRoom) {
  RunningServer::Setup setup;
  setup.limits.connections = 6;
  const RunningServer server(setup);
  server.AwaitState("up");
  Client events(server.Port());
  events.Send(server.Request("GET", "/events"));
  events.ReadUntil("\r\n\r\n");
  Client oldest(server.Port());
  Client young(server.Port());
  young.Send(server.Request("GET", "/session").substr(0, 20));
  const Client idle[] = {Client(server.Port()), Client(server.Port()), Client(server.Port())};
  EXPECT_EQ(server.Get("/session").status, 200);
  EXPECT_TRUE(oldest.IsClosed());
  young.Send(server.Request("GET", "/session").substr(20));
  EXPECT_EQ(young.Read().status, 200);
  for (int i = 0; i < 10; ++i) {
    const Client more(server.Port());
    EXPECT_EQ(server.Get("/session").status, 200);
  }
  server.Exchange(server.Request("POST", "/host/restart", "{}"));
  EXPECT_THAT(events.ReadUntil("\"starting\""), HasSubstr("\"starting\"")) << "the stream has shown the token, and stays";
}

TEST(TheServer, StopsInOrder) {
  RunningServer server;
  server.AwaitState("up");
  Client events(server.Port());
  events.Send(server.Request("GET", "/events"));
  Client idle(server.Port());
  const Server::End end = server.Stop();
  EXPECT_EQ(end.signal, 0);
  EXPECT_EQ(end.exitStatus, 0);
  EXPECT_FALSE(end.hasFailed);
  EXPECT_EQ(server.Kept(), "kept");
  EXPECT_TRUE(events.IsClosed());
  EXPECT_TRUE(idle.IsClosed());
}

TEST(TheServer, SaysWhatItsHostProcessComplainsAboutAtTheEnd) {
  RunningServer::Setup setup;
  setup.mode = "unkept";
  RunningServer server(setup);
  server.AwaitState("up");
  const Server::End end = server.Stop();
  EXPECT_EQ(end.exitStatus, 1);
  EXPECT_EQ(end.reason, "driver 12 \"kitchen\": the state is not kept");
}

TEST(TheServer, StopsAfterItsHostProcessHasEnded) {
  RunningServer server;
  server.Get("/devices/3");
  server.AwaitState("ended");
  EXPECT_EQ(server.Stop().exitStatus, 1);
}

int OpenedWith(const std::string& mode) {
  const testsupport::ScratchFolder folder;
  FrontOptions options;
  options.program = SCRIPTED_HOST;
  options.words = {"ScriptedHost", folder.Path("kept"), mode};
  Server server(std::move(options), 0, [](std::string_view) {});
  int opened = 0;
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  server.Run(
      [&] {
        ++opened;
        server.Stop();
      },
      [&] {
        if (Clock::now() >= deadline) {
          server.Stop();
        }
      });
  return opened;
}

TEST(ThePage, IsOpenedOnceWhenThereIsOne) {
  EXPECT_EQ(OpenedWith(""), 1);
  EXPECT_EQ(OpenedWith("rubbish"), 1) << "it says what has become of the host process";
  EXPECT_EQ(OpenedWith("slow"), 1) << "it says what the start waits for";
  // A start that takes that long opens it, too, as it may on a busy machine.
  int opened = 1;
  for (int i = 0; i < 10 && opened != 0; ++i) {
    const auto start = Clock::now();
    opened = OpenedWith("fail");
    ASSERT_TRUE(opened == 0 || Clock::now() - start >= Server::kSoon);
  }
  EXPECT_EQ(opened, 0);
}

TEST(AProjectThatCannotStart, EndsTheServerWithTheReason) {
  RunningServer::Setup setup;
  setup.mode = "fail";
  RunningServer server(setup);
  const Server::End end = server.Await();
  EXPECT_TRUE(end.hasFailed);
  EXPECT_EQ(end.exitStatus, 2);
  EXPECT_EQ(end.reason, "the project file is missing");
}

TEST(AHostProcessThatIsRubbishFromTheStart, LeavesThePage) {
  RunningServer::Setup setup;
  setup.mode = "rubbish";
  const RunningServer server(setup);
  EXPECT_THAT(server.AwaitState("ended"), HasSubstr("not a JSON object"));
}

// A console that is a process of its own.
class ConsoleProcess {
 public:
  ConsoleProcess() {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    m_pid = ::fork();
    if (m_pid == 0) {
      Serve(ends[1]);
    }
    ::close(ends[1]);
    std::string line(200, '\0');
    line.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(ends[0], line.data(), line.size()))));
    ::close(ends[0]);
    m_port = static_cast<std::uint16_t>(std::stoi(line));
    m_token = line.substr(line.find(' ') + 1);
  }
  ~ConsoleProcess() {
    if (m_pid > 0) {
      // In order: the host process of a killed console would still write into the folder while that is removed.
      ::kill(m_pid, SIGTERM);
      Await();
    }
  }
  ConsoleProcess(const ConsoleProcess&) = delete;
  ConsoleProcess& operator=(const ConsoleProcess&) = delete;

  std::string Request(const std::string& path) const { return Ask(m_port, m_token, "GET", "/api/v1" + path); }
  std::uint16_t Port() const { return m_port; }
  // Waits until the host process is up; its id.
  pid_t AwaitHost() const {
    Client client(m_port);
    client.Send(Request("/devices"));
    EXPECT_EQ(client.Read().status, 200);
    return std::stoi(folder.Read("kept.pid"));
  }
  void Signal(int signal) const { ::kill(m_pid, signal); }
  // Its exit status, or 128 and the signal that has ended it.
  int Await() {
    int status = 0;
    ::waitpid(std::exchange(m_pid, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  const testsupport::ScratchFolder folder;

 private:
  [[noreturn]] void Serve(int out) const {
    FrontOptions options;
    options.program = SCRIPTED_HOST;
    options.words = {"ScriptedHost", folder.Path("kept")};
    Server server(std::move(options), 0, [](std::string_view) {});
    const std::string line = std::to_string(server.Port()) + " " + server.GetToken().Text();
    if (::write(out, line.data(), line.size()) < 0) {
      ::_exit(99);
    }
    ::close(out);
    const Server::End end = server.Run();
    ::_exit(end.signal != 0 ? 128 + end.signal : end.exitStatus);
  }

  pid_t m_pid = -1;
  std::uint16_t m_port = 0;
  std::string m_token;
};

bool IsGone(pid_t pid) {
  for (int i = 0; i < 2000 && ::kill(pid, 0) == 0; ++i) {
    ::usleep(10'000);
  }
  return ::kill(pid, 0) != 0;
}

TEST(ASignal, StopsTheConsoleInOrder) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    ConsoleProcess console;
    const pid_t host = console.AwaitHost();
    console.Signal(signal);
    EXPECT_EQ(console.Await(), 0);
    EXPECT_EQ(console.folder.Read("kept"), "kept");
    EXPECT_NE(::kill(host, 0), 0);
  }
}

TEST(ASecondSignal, EndsTheConsoleAtOnce) {
  ConsoleProcess console;
  const pid_t host = console.AwaitHost();
  Client client(console.Port());
  client.Send(console.Request("/devices/2"));
  Client session(console.Port());
  do {
    session.Send(console.Request("/session"));
  } while (session.Read().body.find("\"busy\"") == std::string::npos);
  console.Signal(SIGINT);
  EXPECT_EQ(client.Read().status, 503);
  console.Signal(SIGINT);
  EXPECT_EQ(console.Await(), 128 + SIGINT);
  EXPECT_TRUE(IsGone(host));
}

TEST(AConsoleThatIsKilled, LetsItsHostProcessKeepTheStates) {
  ConsoleProcess console;
  const pid_t host = console.AwaitHost();
  console.Signal(SIGKILL);
  console.Await();
  EXPECT_TRUE(IsGone(host));
  EXPECT_EQ(console.folder.Read("kept"), "kept");
}

TEST(AHostProcessThatIsKilled, IsMissedByThePage) {
  ConsoleProcess console;
  const pid_t host = console.AwaitHost();
  Client events(console.Port());
  events.Send(console.Request("/events"));
  events.ReadUntil("\r\n\r\n");
  ::kill(host, SIGKILL);
  EXPECT_THAT(events.ReadUntil("\n\n"),
              HasSubstr("\"state\":\"ended\",\"reason\":\"the host process was ended by SIGKILL\""));
}

// A pipe or socket that the host process had would keep clients waiting after the console has gone.
TEST(AHostProcess, HasNoDescriptorOfTheConsole) {
  ConsoleProcess console;
  const Client client(console.Port());
  const std::string folder = "/proc/" + std::to_string(console.AwaitHost()) + "/fd";
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    count += std::stoi(entry.path().filename()) >= 0 ? 1 : 0;
  }
  EXPECT_EQ(count, 3);
}

}  // namespace
}  // namespace devhost
