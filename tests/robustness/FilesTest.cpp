// When a file is not one that a person would write, each program says so in one line, or works.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/robustness/Kitchen.h"
#include "tests/robustness/Measure.h"
#include "tests/scripts/Transcript.h"

namespace testsupport {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

// Returns the commands that read the file `name`, each in its own way.
std::vector<Words> Readers(const std::string& name) {
  return {{"run", name}, {"check", name}, {"advise", name}, {"preview", "--project", "project.xml", "kitchen", name}};
}

std::string Project(const Kitchen& kitchen, const std::string& text) {
  kitchen.Write("other.xml", text);
  return Measure({"run", "--project", "other.xml"}, kitchen.Path()).output;
}

TEST(AFolder, IsRefusedByEveryProgram) {
  const Kitchen kitchen;
  for (const Words& words : Readers("kitchen")) {
    const Measured run = Measure(words, kitchen.Path());
    EXPECT_EQ(run.status, 2) << words.front();
    EXPECT_EQ(run.output, "devhost: cannot read \"kitchen\": Is a directory\n") << words.front();
  }
}

// The programs run at the same time, because each waits some seconds for a writer.
TEST(APipeThatNobodyWritesInto, IsRefusedByEveryProgram) {
  const Kitchen kitchen;
  ASSERT_EQ(::mkfifo(kitchen.Path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(::mkfifo(kitchen.Path("slow").c_str(), 0600), 0);
  // A writer who takes longer than that has at least opened the pipe.
  const int writer = ::open(kitchen.Path("slow").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  MeasuredRun patient({"check", "slow"}, kitchen.Path());

  kitchen.Write("script", "command SetDeviceState xml=@pipe\nprint played\n");
  std::vector<std::unique_ptr<MeasuredRun>> runs;
  for (const Words& words : Readers("pipe")) {
    runs.push_back(std::make_unique<MeasuredRun>(words, kitchen.Path()));
  }
  MeasuredRun value({"run", "script"}, kitchen.Path());
  for (const std::unique_ptr<MeasuredRun>& each : runs) {
    const Measured run = each->Wait();
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.output, "devhost: cannot read \"pipe\": it is a pipe, and nobody writes into it\n");
  }
  const Measured run = value.Wait();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("error script:1: cannot read \"pipe\": it is a pipe, and nobody writes into it\nprint "
                                    "played\n"));

  const std::string text = "rocommunity placeholder\n";
  EXPECT_EQ(::write(writer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  ::close(writer);
  EXPECT_EQ(patient.Wait().output, "slow: no findings\n");
}

TEST(AProjectThatIsAPipe, IsRefused) {
  const Kitchen kitchen;
  ASSERT_EQ(::mkfifo(kitchen.Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(Measure({"run", "--project", "pipe"}, kitchen.Path()).output,
            "devhost: cannot read \"pipe\": it is not a regular file\n");
  kitchen.Write("script", "expect file kitchen golden pipe\n");
  EXPECT_EQ(Measure({"run", "--project", "project.xml", "script"}, kitchen.Path()).output,
            "devhost: script:1: cannot read \"pipe\": it is not a regular file\n");
}

TEST(AStateThatIsAPipeOrAFolder, IsPutAside) {
  const Kitchen kitchen;
  kitchen.Write("states/driver-12.xml/a", "");
  ASSERT_EQ(::mkfifo(kitchen.Path("states/driver-1.xml").c_str(), 0600), 0);
  const Measured run = Measure({"run", "--project", "project.xml", "--state", "states"}, kitchen.Path());
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("states/driver-1.xml: the state cannot be used: it is not a regular file; kept as "
                                    "driver-1.xml.damaged\n"));
  EXPECT_THAT(run.output, HasSubstr("states/driver-12.xml: the state cannot be used: Is a directory; kept as "
                                    "driver-12.xml.damaged\n"));
}

TEST(AFileThatMayNotGrowFurther, StaysAsItIs) {
  const Kitchen kitchen;
  std::string variables;
  for (int id = 1; id <= 200; ++id) {
    variables += "<variable device=\"5\" id=\"" + std::to_string(id) + "\" name=\"lamp\"/>\n";
  }
  kitchen.WriteProject(variables);
  kitchen.WriteConf("# by hand\n");
  kitchen.Write("states/driver-1.xml", "<Old/>");
  const std::string contact(40000, 'x');
  kitchen.Write("settings.xml", Kitchen::Settings("<snmpSysContactSetting>" + contact + "</snmpSysContactSetting>"));
  kitchen.Write("script",
                "load-project\ncommand AddManagedDevice deviceId=12\ncommand SetDeviceState xml=@settings.xml\nexpect reply "
                "is <WriteFail/>\n");
  const ShellResult run =
      RunShell("ulimit -f 16; exec devhost run --project project.xml --state states script", kitchen.Path());
  EXPECT_EQ(run.status, 1) << run.output;
  EXPECT_THAT(run.output, HasSubstr("it is too large: more than 256 MiB, or more than this process may write (ulimit -f)"));
  EXPECT_THAT(run.output, HasSubstr("the state is not kept: it cannot be written: File too large"));
  EXPECT_EQ(kitchen.Read("kitchen/snmpd.conf"), "# by hand\n");
  EXPECT_EQ(kitchen.Read("states/driver-1.xml"), "<Old/>");
}

// Only two programs run, because each reads a quarter of a gigabyte before it refuses the file.
TEST(AFileWithoutEnd, IsRefused) {
  const Kitchen kitchen;
  const std::string problem = "cannot read \"/dev/zero\": it is larger than the 268435456 bytes that are allowed\n";
  EXPECT_EQ(Measure({"check", "/dev/zero"}, kitchen.Path()).output, "devhost: " + problem);
#ifdef MEASURES_MEMORY
  kitchen.Write("script", "command SetDeviceState xml=@/dev/zero\nprint played\n");
  const Measured run = Measure({"run", "script"}, kitchen.Path());
  EXPECT_THAT(run.output, HasSubstr("error script:1: " + problem + "print played\n"));
  EXPECT_LT(run.peak, std::size_t{1200} * 1024 * 1024);
#endif
}

TEST(AnEmptyFile, IsAScriptButNotXml) {
  const Kitchen kitchen;
  kitchen.Write("empty", "");
  EXPECT_EQ(Measure({"run", "empty"}, kitchen.Path()).status, 0);
  EXPECT_THAT(Measure({"check", "empty"}, kitchen.Path()).output, HasSubstr("empty: warning: nobody has access"));
  EXPECT_EQ(Measure({"advise", "empty"}, kitchen.Path()).output,
            "devhost: empty:1:1: the settings are not well-formed XML: no root element\n");
  EXPECT_EQ(Project(kitchen, ""), "devhost: other.xml:1:1: the project is not well-formed XML: no root element\n");
}

TEST(AScript, MayHaveAByteOrderMarkAndCarriageReturnsAndNoLastLineFeed) {
  const Kitchen kitchen;
  kitchen.Write("script", "\xef\xbb\xbfprint a\r\nprint b");
  EXPECT_THAT(Measure({"run", "script"}, kitchen.Path()).output, HasSubstr("\nprint a\nprint b\n"));
}

TEST(AScript, MayHoldBytesThatAreNotUtf8) {
  const Kitchen kitchen;
  kitchen.Write("script", "print \xff\xfe\nprint b");
  EXPECT_THAT(Measure({"run", "script"}, kitchen.Path()).output, HasSubstr("\nprint \xff\xfe\nprint b\n"));
}

TEST(AScriptWithNulBytes, IsRefused) {
  const Kitchen kitchen;
  kitchen.Write("script", std::string("print a\nprint b\0c\n", 18));
  const Measured run = Measure({"run", "script"}, kitchen.Path());
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.output, "devhost: script:2: the line holds a NUL byte: a script is text\n");
}

TEST(AProjectInAnotherEncoding, IsRefused) {
  const Kitchen kitchen;
  const std::string problem =
      ": the project is not well-formed XML: a character that XML does not allow, or that is not UTF-8\n";
  EXPECT_EQ(Project(kitchen, "<project>\n\xe9</project>"), "devhost: other.xml:2:1" + problem);
  EXPECT_EQ(Project(kitchen, std::string("\xff\xfe<\0a\0/\0>\0", 10)), "devhost: other.xml:1:1" + problem);
  EXPECT_EQ(Project(kitchen, std::string("<project>\0</project>", 20)), "devhost: other.xml:1:10" + problem);
}

TEST(AnSnmpdConfWithNulBytes, IsReported) {
  const Kitchen kitchen;
  kitchen.WriteConf(std::string("rocommunity a\0b\r\nsysName \xff", 26));
  EXPECT_THAT(Measure({"check", "kitchen/snmpd.conf"}, kitchen.Path()).output,
              StartsWith("kitchen/snmpd.conf:1: error: a NUL byte"));
}

TEST(AnOutputThatTakesNothing, IsReported) {
  const Kitchen kitchen;
  kitchen.Write("script", "print a\n");
  for (const char* const command : {"run script", "check kitchen/snmpd.conf", "advise settings.xml",
                                    "preview --project project.xml kitchen settings.xml", "--help"}) {
    const ShellResult run = RunShell(std::string("devhost ") + command + " >/dev/full", kitchen.Path());
    // For a preview, 1 would be an answer.
    EXPECT_EQ(run.status, command[0] == 'p' ? 2 : 1) << command;
    EXPECT_EQ(run.output, "devhost: cannot write the output: No space left on device\n") << command;
  }
}

}  // namespace
}  // namespace testsupport
