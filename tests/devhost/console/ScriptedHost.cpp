// A host process for the tests of the console: what it does stands in its arguments and in the paths that it is asked for.
//   ScriptedHost FILE [fail|late|rubbish|mute|slow|unkept]
// Like a watched process, it names the call that it hangs in when it is asked.
// It writes its id into FILE.pid, and FILE.hangs once it can be asked where it hangs. When its input ends, it writes "kept"
// into FILE and ends.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using Json = nlohmann::json;

void Say(const std::string& line) {
  std::cout << line << "\n" << std::flush;
}

void SayEvents(int count, std::size_t length) {
  const std::string text(length, 'x');
  for (int i = 0; i < count; ++i) {
    std::cout << Json{{"event", {{"kind", "log"}, {"text", text}, {"i", i}}}}.dump() << "\n";
  }
  std::cout << std::flush;
}

void NameTheCall(int) {
  constexpr char kLine[] = "devhost: CopyFrom of driver 2 \"attic\" has not returned\n";
  if (::write(STDERR_FILENO, kLine, sizeof kLine - 1) < 0) {
    ::_exit(99);
  }
}

std::string s_file;  // the first argument

[[noreturn]] void Hang() {
  std::signal(SIGURG, &NameTheCall);
  std::ofstream(s_file + ".hangs") << "x";
  for (;;) {
    ::pause();
  }
}

// What is asked for under /devices/N, beside the answer.
void Act(int number) {
  switch (number) {
    case 2:
      Hang();
    case 3:
      std::cerr
          << "community \"secret\" was refused\ndevhost: the process was ended by SIGABRT during Initialize of driver 3\n"
          << std::flush;
      std::abort();
    case 4:
      Say("this is not JSON");
      Hang();
    case 5:
      SayEvents(20'000, 100);
      break;
    case 6:
      for (const std::string block(1 << 20, 'x');;) {
        std::cout << block << std::flush;
      }
    case 7:
      Say(R"({"id":999999,"status":200,"body":{}})");
      Hang();
    case 8:
      SayEvents(1, 300'000);
      break;
    case 9:
      ::usleep(300'000);
      break;
    case 10:
      Say(R"({"event":{"kind":"restart","device":10}})");
      Say(R"({"event":{"kind":"probe","device":10,"ms":3.5}})");
      Say(R"({"event":{"kind":"probe","device":10,"ms":2.5}})");
      break;
    case 11:
      Say(R"({"event":{"kind":"mark"}})");
      break;
    case 12:
      Say(R"([1,2,3])");
      Hang();
    case 13:
      std::exit(0);
    case 17:
      while (::access((s_file + ".go").c_str(), F_OK) != 0) {
        ::usleep(5'000);
      }
      break;
    case 16:
      for (int i = 0; i < 1000; ++i) {
        std::cerr << "devhost: " << i << " of driver 3 has not returned\n" << std::flush;
      }
      break;
    case 14:
      ::close(STDOUT_FILENO);
      Hang();
    case 15:
      Say(R"({"event":{"kind":"log","deep":)" + std::string(1'000'000, '[') + std::string(1'000'000, ']') + "}}");
      Hang();
    default:
      break;
  }
}

void Answer(const Json& question) {
  const std::string path = question.at("path");
  const std::string device = "/devices/";
  if (path.compare(0, device.size(), device) == 0) {
    Act(std::atoi(path.c_str() + device.size()));
  }
  const int status = path == "/devices/404" ? 404 : 200;
  Say(Json{{"id", question.at("id")}, {"status", status}, {"body", question}}.dump());
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[2] : "";
  s_file = argv[1];
  std::ofstream(s_file + ".pid") << ::getpid();
  if (mode == "fail") {
    Say(R"({"failed":"the project file is missing"})");
    return 2;
  }
  if (mode == "rubbish") {
    Say("rubbish");
  }
  if (mode == "mute") {
    Hang();
  }
  if (mode == "slow") {
    ::usleep(4'000'000);
  }
  if (mode == "late") {
    ::usleep(300'000);
  }
  Say(R"({"event":{"kind":"load","driver":"kitchen","driverId":10,"module":"m.so"}})");
  Say(R"({"ready":true})");
  for (std::string line; std::getline(std::cin, line);) {
    Answer(Json::parse(line));
  }
  std::ofstream(s_file) << "kept";
  if (mode == "unkept") {
    std::cerr << "devhost: driver 12 \"kitchen\": the state is not kept\n" << std::flush;
    return 1;
  }
}
