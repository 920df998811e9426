#include "drivers/localsnmpd/ServedDirectives.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Why(const std::string& line) {
  return drivers::WhyNotServed(*devhost::ReadDirective(line));
}

TEST(ADirective, IsServedWhenItIsKnownToStayInTheCage) {
  for (const std::string line :
       {"rocommunity public", "sysName x", "trap2sink 10.0.0.5 public 162",
        "trap2sink host:162 /unix:", "trap2sink 2001:db8::1 public", "trap2sink [fe80::1]:162 public", "master agentx",
        "proc sshd", "createUser bob SHA pass AES pass", "trapsink -profile unix:x -tag y ::1 public",
        "trap2sink UDP:10.0.0.5:162", "trapsess -v 3 -u bob -a SHA -A /pass -l authPriv 10.0.0.5",
        "trapsess -Ci -v2c -cpublic -name n tcp:10.0.0.5:162"}) {
    EXPECT_EQ("", Why(line)) << line;
  }
}

TEST(ADirective, IsNotServedWhenItNamesAFileAPortOrAUser) {
  for (const std::string keyword :
       {"agentaddress", "agentuser",    "agentgroup",    "smuxsocket",  "proxy",         "include",        "includeSearch",
        "includeFile",  "includeDir",   "persistentDir", "logOption",   "file",          "logmatch",       "dlmod",
        "perl",         "perlInitFile", "agentXPerms",   "quit",        "leave_pidfile", "injectHandler",  "com2secunix",
        "usmUser",      "engineBoots",  "psysname",      "certSecName", "defDomain",     "sendmail_queue", "secret"}) {
    EXPECT_NE("", Why(keyword + " x y")) << keyword;
  }
}

TEST(ADirective, IsNotServedWhenItRunsAProgram) {
  for (const std::string keyword : {"extend", "extendfix", "extend-sh", "extend-exec", "exec", "execfix", "sh", "pass",
                                    "pass_persist", "procfix", "EXTEND", "Sh", "passPersist", "execFix2"}) {
    EXPECT_NE("", Why(keyword + " x /bin/true")) << keyword;
  }
  EXPECT_EQ("this directive would run a program", Why("Extend x /bin/true"));
}

// The keyword may be a community that somebody wrote in the wrong place.
TEST(ADirective, ThatIsNotKnownIsNotRepeated) {
  EXPECT_EQ("the driver does not know this directive", Why("geheim x"));
  EXPECT_EQ("this directive names a file", Why("LogMatch geheim /tmp/x"));
}

// The daemon of today crashes when it reads one.
TEST(ASink, HasATarget) {
  for (const std::string line : {"trap2sink -x", "trap2sink -name", "trapsink -v2c", "informsink -tag t", "trap2sink"}) {
    EXPECT_EQ("it has no target on the network", Why(line)) << line;
  }
}

// A word that looks like the value of an option, or like a part of a quoted one, is the target to the daemon.
TEST(ASink, IsCutAsTheDaemonCutsIt) {
  for (const std::string line : {"trap2sink -v unix:/tmp/x 127.0.0.1", "trapsink -v -w unix:/tmp/x 127.0.0.1",
                                 "informsink -name \"a unix:/tmp/x\" 127.0.0.1", "trap2sink -tag 'a unix:x' ::1"}) {
    EXPECT_EQ("it has no target on the network", Why(line)) << line;
  }
}

TEST(ASink, HasItsTargetOnTheNetwork) {
  for (const std::string target : {"unix:/tmp/x", "UNIX:x", "/tmp/x", "std:", "ssh:host", "alias:x", "\"unix:x\"",
                                   "un\\ix:x", "unix:162", "dtls6:162", "new:x"}) {
    EXPECT_EQ("it has no target on the network", Why("trap2sink " + target + " public")) << target;
    EXPECT_NE("", Why("trapsink -tag x " + target)) << target;
    EXPECT_NE("", Why("trapsess -v 2c -c public " + target)) << target;
  }
}

TEST(ASessionForTraps, HasNoOptionsThatNameFiles) {
  for (const std::string options :
       {"-Lf /tmp/x", "-L f", "-Ypersistentdir=/tmp/x", "-Y x", "-v2c -m x", "-M /x", "-d", "-dLf", "-D",
        "--persistentDir=/tmp/x", "--", "-", "-CiLf", "-T x", "\"-Lf\" x", "-c public -Lf x"}) {
    EXPECT_NE("", Why("trapsess " + options + " 10.0.0.5")) << options;
  }
}

TEST(TheSocketForSubagents, IsTheDrivers) {
  EXPECT_TRUE(drivers::IsReplacedByDriver(*devhost::ReadDirective("agentXSocket tcp:127.0.0.1:705")));
  EXPECT_FALSE(drivers::IsReplacedByDriver(*devhost::ReadDirective("agentXTimeout 1")));
}

}  // namespace
