#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/LineInput.h"
#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ShellCommand : public CommandsFixture {
 protected:
  void SetUp() override {
    folder.Write("kitchen/snmpd.conf", "");
    project =
        File("project.xml",
             "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
             "<driver id='12' name='kitchen' module='simulated_device.so'><config folder='{project}/kitchen'/></driver>"
             "<variable device='5' id='7' name='lamp'/></project>");
  }

  // A session of these lines.
  Outcome Session(const std::string& lines, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> words = {"shell", "--project", project, "--module-dir", MODULE_FOLDER};
    words.insert(words.end(), options.begin(), options.end());
    return RunOn(lines, words);
  }

  std::string project;
};

TEST_F(ShellCommand, PlaysEachLine) {
  const Outcome outcome = Session("command AddManagedDevice deviceId=12\n# nothing\n\nprint bye");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(outcome.out, HasSubstr("load kitchen 12 "));
  EXPECT_THAT(outcome.out, EndsWith("command agent AddManagedDevice deviceId=12\n"
                                    "invalidate agent\n"
                                    "notification agent <ManagedDeviceAdded><id>12</id></ManagedDeviceAdded>\n"
                                    "reply agent <deviceId>12</deviceId>\n"
                                    "print bye\n"
                                    "notification agent <DeviceDeleted><id>12</id></DeviceDeleted>\n"
                                    "unload kitchen\n"
                                    "unload agent\n"));
}

TEST_F(ShellCommand, GoesOnAfterALineThatIsWrongOrFails) {
  const Outcome outcome = Session(
      "comand GetDeviceList\nprint 'open\ncommand Unknown\nexpect reply is x\ndevice kitchen set nonsense 1\nprint still "
      "here\n");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, HasSubstr("error standard input:1: unknown action"));
  EXPECT_THAT(outcome.out, HasSubstr("error standard input:2: "));
  EXPECT_THAT(outcome.out, HasSubstr("error standard input:3: no driver has registered the command"));
  EXPECT_THAT(outcome.out, HasSubstr("expect standard input:4: "));
  EXPECT_THAT(outcome.out, HasSubstr("error standard input:5: "));
  EXPECT_THAT(outcome.out, HasSubstr("print still here\n"));
}

TEST_F(ShellCommand, EndsEachLineWithAnObjectForPrograms) {
  const Outcome outcome = Session("print a\n\nflag 5 8 true\n", {"--json"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, HasSubstr("{\"n\":4,\"kind\":\"done\",\"good\":true}\n"
                                     "{\"n\":5,\"line\":1,\"kind\":\"print\",\"text\":\"a\"}\n"
                                     "{\"n\":6,\"line\":1,\"kind\":\"done\",\"good\":true}\n"
                                     "{\"n\":7,\"line\":2,\"kind\":\"done\",\"good\":true}\n"
                                     "{\"n\":8,\"line\":3,\"kind\":\"error\","));
  EXPECT_THAT(outcome.out, HasSubstr("\"line\":3,\"kind\":\"done\",\"good\":false}\n"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("\"line\":4")));
}

TEST_F(ShellCommand, KeepsStatesAtTheEndOfTheInput) {
  const std::string states = folder.Path("states");
  EXPECT_EQ(Session("load-project\nflag 5 7 true\n", {"--state", states}).status, ExitStatus::Good);
  EXPECT_THAT(folder.Read("states/driver-1.xml"), HasSubstr("snmpTrapEnabled=\"true\""));
  const Outcome next = Session("load-project\nexpect flag 5 7 is true\nexpect flag 5 7 is false\n", {"--state", states});
  EXPECT_THAT(next.out, Not(HasSubstr("standard input:2")));
  EXPECT_THAT(next.out, HasSubstr("expect standard input:3"));
}

TEST_F(ShellCommand, MasksSecretsUnlessItIsAsked) {
  const std::string line = "device kitchen set communityRead placeholder\ndevice kitchen show settings\n";
  EXPECT_THAT(Session(line, {"--json"}).out, Not(HasSubstr("placeholder")));
  EXPECT_THAT(Session(line, {"--json", "--show-secrets"}).out, HasSubstr("\"value\":\"placeholder\""));
}

TEST_F(ShellCommand, RefusesAProjectThatIsWrong) {
  const Outcome outcome = RunOn("print a\n", {"shell", "--project", File("wrong.xml", "<project/>")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
}

TEST_F(ShellCommand, AnswersALineThatIsTooLongAndGoesOn) {
  const std::string lines = "print a\n" + std::string(LineInput::kLongestLine + 1, 'x') + "\nprint b\n";
  Outcome outcome = Session(lines);
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(outcome.out, HasSubstr("print a\nerror standard input:2: a line has more than 16777216 bytes\nprint b\n"));
  outcome = Session(lines, {"--json"});
  EXPECT_THAT(outcome.out, HasSubstr("\"line\":2,\"kind\":\"error\",\"text\":\"a line has more than 16777216 bytes\"}\n"
                                     "{\"n\":8,\"line\":2,\"kind\":\"done\",\"good\":false}\n"
                                     "{\"n\":9,\"line\":3,\"kind\":\"print\",\"text\":\"b\"}\n"));
}

TEST_F(ShellCommand, AnswersAStartThatFailsForPrograms) {
  const std::string missing = folder.Path("missing.xml");
  const Outcome outcome = RunOn("print a\n", {"shell", "--json", "--project", missing});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "{\"n\":1,\"kind\":\"error\",\"text\":\"cannot read \\\"" + missing +
                             "\\\": No such file or directory\"}\n{\"n\":2,\"kind\":\"done\",\"good\":false}\n");
  EXPECT_EQ(outcome.errors, "devhost: cannot read \"" + missing + "\": No such file or directory\n");
}

TEST_F(ShellCommand, AnswersAModuleThatCannotBeLoadedForPrograms) {
  File("no.so", "no module");
  const std::string wrong = File("wrong.xml",
                                 "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
                                 "<driver id='12' name='kitchen' module='./no.so'/></project>");
  const Outcome outcome = RunOn("print a\n", {"shell", "--json", "--module-dir", MODULE_FOLDER, "--project", wrong});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.out, HasSubstr("\"kind\":\"error\",\"text\":\""));
  EXPECT_THAT(outcome.out, EndsWith("\"kind\":\"done\",\"good\":false}\n"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("\"kind\":\"print\"")));
}

// Another program that waits for the end of each line before it sends the next.
TEST_F(ShellCommand, AnswersALineBeforeTheNextIsThere) {
  int toShell[2] = {-1, -1};
  int fromShell[2] = {-1, -1};
  ASSERT_EQ(::pipe2(toShell, O_CLOEXEC), 0);
  ASSERT_EQ(::pipe2(fromShell, O_CLOEXEC), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(toShell[0], STDIN_FILENO);
    ::dup2(fromShell[1], STDOUT_FILENO);
    ::alarm(300);
    ::execl(DEVHOST_PROGRAM, DEVHOST_PROGRAM, "shell", "--json", "--project", project.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(toShell[0]);
  ::close(fromShell[1]);
  const FileDescriptor reading(fromShell[0]);
  LineInput answers(reading.Get(), "the shell");
  const auto readToDone = [&answers] {
    std::string all;
    while (auto line = answers.Next()) {
      all += *line + "\n";
      if (line->find("\"kind\":\"done\"") != std::string::npos) {
        break;
      }
    }
    return all;
  };
  EXPECT_THAT(readToDone(), HasSubstr("\"kind\":\"load\""));
  for (const std::string id : {"12", "13"}) {
    const std::string line = "command AddManagedDevice deviceId=" + id + "\n";
    ASSERT_EQ(::write(toShell[1], line.data(), line.size()), static_cast<ssize_t>(line.size()));
    EXPECT_THAT(readToDone(), HasSubstr(id == "12" ? "\"xml\":\"<deviceId>12</deviceId>\"" : "\"xml\":\"<Fail/>\""));
  }
  // A name with line breaks goes in and comes out as it is.
  const std::string rename =
      "command SetDeviceState "
      "xml=\"<managedDevice><snmpSysNameSetting>a&#13;b&#10;c</snmpSysNameSetting><deviceId>12</deviceId></"
      "managedDevice>\"\n"
      "device kitchen show settings\n";
  ASSERT_EQ(::write(toShell[1], rename.data(), rename.size()), static_cast<ssize_t>(rename.size()));
  EXPECT_THAT(readToDone(), HasSubstr("\"xml\":\"<Success/>\""));
  EXPECT_THAT(readToDone(), HasSubstr("{\"name\":\"sysName\",\"value\":\"a\\rb\\nc\""));
  const std::string list = "command GetDeviceList\n";
  ASSERT_EQ(::write(toShell[1], list.data(), list.size()), static_cast<ssize_t>(list.size()));
  EXPECT_THAT(readToDone(), HasSubstr("<snmpSysNameSetting>a&#13;b\\nc</snmpSysNameSetting>"));
  ::close(toShell[1]);
  EXPECT_THAT(readToDone(), HasSubstr("\"kind\":\"unload\""));
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace devhost
