// Kills the real program at random moments and looks at what it leaves.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include "devhost/xml/XmlReader.h"
#include "tests/scripts/Transcript.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

constexpr int kVariables = 60;  // more than one block of the file system

// All flags are the same at every moment at which the state is kept, so a mixture of two states would show.
std::string Script() {
  std::string script = "load-project\n";
  for (const char* const flag : {"true", "false"}) {
    for (int id = 1; id <= kVariables; ++id) {
      script += "flag 5 " + std::to_string(id) + " " + flag + "\n";
    }
    // Managing a device makes the state out of date, and so does giving it up.
    script += "command AddManagedDevice deviceId=12\ncommand DeleteManagedDevice deviceId=12\nrestart\nload-project\n";
  }
  std::string repeated;
  for (int i = 0; i != 50; ++i) {
    repeated += script;
  }
  return repeated;
}

std::string ProjectText() {
  std::string text =
      "<project>\n<driver id='1' name='agent' module='snmp_configuration_agent.so'/>\n"
      "<driver id='12' name='kitchen' module='simulated_device.so'><config folder='{project}'/></driver>\n";
  for (int id = 1; id <= kVariables; ++id) {
    text += "<variable device='5' id='" + std::to_string(id) + "' name='v'/>\n";
  }
  return text + "</project>\n";
}

pid_t Spawn(const std::string& folder) {
  std::string program = PROGRAM_FOLDER "/devhost";
  std::string words[] = {program, "run", "--project", folder + "/p.xml", "--state", folder + "/s", folder + "/a.devhost"};
  char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                       words[4].data(), words[5].data(), words[6].data(), nullptr};
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t child = -1;
  const int error = ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? child : -1;
}

// "" when the file is absent; otherwise the flag that all its variables have. Anything else is a failure.
std::string FlagOfAll(const std::string& path) {
  if (!std::filesystem::exists(path)) {
    return "";
  }
  const XmlElement state = ReadXml(testsupport::ScratchFolder::ReadFile(path));
  EXPECT_EQ(state.name, "SNMPState");
  EXPECT_EQ(state.children.size(), 1U);
  const std::vector<XmlElement>& variables = state.children.at(0).children;
  EXPECT_EQ(variables.size(), static_cast<std::size_t>(kVariables));
  const std::string flag = *variables.at(0).FindAttribute("snmpTrapEnabled");
  for (const XmlElement& variable : variables) {
    EXPECT_EQ(*variable.FindAttribute("snmpTrapEnabled"), flag);
  }
  return flag;
}

// False when the program had ended by itself before.
bool Kill(pid_t child) {
  ::kill(child, SIGKILL);
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFSIGNALED(status);
}

// How long it takes from the start of the program to its first state, here and now.
std::chrono::microseconds TimeToFirstState(const std::string& folder) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  const pid_t child = Spawn(folder);
  while (!std::filesystem::exists(folder + "/s/driver-1.xml") && Clock::now() < start + std::chrono::seconds(30)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const Clock::time_point end = Clock::now();
  EXPECT_TRUE(Kill(child)) << "the program ended while it had much to do";
  return std::chrono::duration_cast<std::chrono::microseconds>(end - start);
}

TEST(AHostThatIsKilledAtAnyMoment, LeavesTheOldOrTheNewState) {
  const testsupport::ScratchFolder folder;
  folder.Write("p.xml", ProjectText());
  folder.Write("a.devhost", Script());
  const std::chrono::microseconds first = TimeToFirstState(folder.Path());
  std::filesystem::remove_all(folder.Path("s"));
  std::minstd_rand random(20260504);
  std::uniform_int_distribution<int> moment(0, static_cast<int>(2 * first.count()));
  int kept = 0;
  int interrupted = 0;
  int kills = 0;
  // On a busy machine the first run may have taken so long that later ones end before their moment: those do not count.
  for (int run = 0; kills != 110 && run != 1000; ++run) {
    const pid_t child = Spawn(folder.Path());
    ASSERT_GT(child, 0);
    // Not a wait for something: the moment is what the test is about.
    std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
    kills += Kill(child) ? 1 : 0;
    const bool half = std::filesystem::exists(folder.Path("s/driver-1.xml.new"));
    const std::string flag = FlagOfAll(folder.Path("s/driver-1.xml"));
    ASSERT_FALSE(HasFailure()) << "in run " << run;
    kept += flag.empty() ? 0 : 1;
    interrupted += half ? 1 : 0;
  }
  EXPECT_EQ(kills, 110);
  std::cout << first.count() << " us to the first state, " << kept << " states found, " << interrupted
            << " writes interrupted\n";
  EXPECT_GT(kept, 50);
  // The next start works, and the flags are those of the file.
  const std::string flag = FlagOfAll(folder.Path("s/driver-1.xml"));
  folder.Write("b.devhost", "load-project\nexpect flag 5 1 is " + flag + "\nexpect flag 5 60 is " + flag + "\n");
  const testsupport::ShellResult last =
      testsupport::RunShell("devhost run --project p.xml --state s b.devhost", folder.Path());
  EXPECT_EQ(last.status, 0) << last.output;
  EXPECT_FALSE(std::filesystem::exists(folder.Path("s/driver-1.xml.damaged")));
}

}  // namespace
}  // namespace devhost
