#include "devhost/snmpd/OwnWords.h"

#include <gtest/gtest.h>

#include <map>

#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"

namespace devhost {
namespace {

struct Said {
  const char* said;
  const char* shown;
};

class TheDaemonsOwnWords : public testing::TestWithParam<Said> {};

TEST_P(TheDaemonsOwnWords, AreShownUpToWhatItQuotes) {
  EXPECT_EQ(OwnWords(GetParam().said), GetParam().shown);
}

constexpr Said Whole(const char* said) {
  return {said, said};
}

INSTANTIATE_TEST_SUITE_P(QuoteNothing, TheDaemonsOwnWords,
                         testing::Values(Whole("missing COMMUNITY parameter"), Whole("Should be yes|no|true|false|0|1"),
                                         Whole("sysobjectid token not a parsable OID:"),
                                         Whole("diskio path does not exist."), Whole("ignoring extra tokens on line")));

INSTANTIATE_TEST_SUITE_P(Quote, TheDaemonsOwnWords,
                         testing::Values(Said{"cannot create sink: two <words", "cannot create sink: *****"},
                                         Said{"Unknown token: hidden.", "Unknown token: *****"},
                                         Said{"Blank line following hidden token.", "Blank line following *****"},
                                         Said{"\tignoring:  hidden", "ignoring: *****"},

                                         Said{"missing COMMUNITY parameterhidden", "missing COMMUNITY parameter *****"}));

INSTANTIATE_TEST_SUITE_P(AreNotKnown, TheDaemonsOwnWords,
                         testing::Values(Said{"hidden: cannot create sink", "*****"},
                                         Said{"time string hidden contains an invalid suffix letter", "*****"},
                                         Said{"no \"hidden\" handler registered.", "*****"}, Said{"", "*****"}));

// Lines that the daemon complains of, each with what it says.
constexpr Said kComplaints[] = {
    {"agentxtimeout hidden", "Invalid timeout value"},
    {"authaccess a b cccccccccccccccccccccccccccccccccccc d", "View value too long"},
    {"certsecname 60 .1.3 = 5", "unexpected fromat: *****"},
    {"com2sec -Cn", "missing CONTEXT_NAME parameter"},
    {"com2sec x 1.2.3.4/99 hidden", "bad mask length"},
    {"com2sec x 1.2.3.4/300.1.1.1 hidden", "bad mask"},
    {"com2sec x default", "missing COMMUNITY parameter"},
    {"createuser bob FOO hidden", "unknown authProtocol"},
    {"createuser -e x", "invalid EngineID argument to -e"},
    {"createuser bob SHA hidden", "could not generate the authentication key from the supplied pass phrase."},
    {"createuser bob SHA passpass1 FOO hidden12", "unknown privProtocol"},
    {"createuser bob SHA passpass1 AES hidden", "could not generate the privacy key from the supplied pass phrase."},
    {"group x any noauth", "bad security model *****"},
    {"master 60 hidden", "master *****"},
    {"monitor -r 5 -u root -o x name expr", "unknown monitor OID"},
    {"pass .1.3", "No command specified on pass line"},
    {"pass_persist .1.3", "No command specified on pass_persist line"},
    {"proxy -Cn hidden", "No context name passed to -Cn"},
    {"proxy -Cx", "unknown argument passed to -C"},
    {"rocommunity", "Blank line following *****"},
    {"setevent x hidden y", "unknown set OID"},
    {"sysobjectid bogus", "sysobjectid token not a parsable OID:"},
    {"trap2sink 10.0.0.5 hidden 99999x", "cannot create sink: *****"},
    {"usersetauthkey x", "invalid name specifier"},
    {"view x included .1 zz", "invalid MASK"},
    {"view x included .1 "
     "ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff",
     "MASK too long"},
    {"hidden x", "Unknown token: *****"}};

// What the daemon says about each line of a text, as its own words.
std::map<std::size_t, std::string> OwnWordsAbout(const std::string& text) {
  const MemoryFile file(text);
  const std::string home = "/dev/null/none";
  ProgramRun run;
  run.words = {"snmpd", "-f", "-Le", "-C", "-c", file.Path(), "-m", "", "-M", "", "-I", "-smux", "-r", "bogus:x"};
  run.environment = {{"SNMP_PERSISTENT_DIR", home}, {"SNMPCONFPATH", home}, {"HOME", home}};
  std::map<std::size_t, std::string> said;
  for (const Complaint& complaint : ReadDaemonOutput(RunProgram(run).output).complaints) {
    said[complaint.line] += OwnWords(complaint.text) + "\n";
  }
  return said;
}

TEST(TheInstalledDaemon, ComplainsInWordsThatAreKnownToBeItsOwn) {
  if (FindProgram("snmpd").empty()) {
    GTEST_SKIP() << "snmpd is not installed";
  }
  std::string text;
  for (const Said& complaint : kComplaints) {
    text.append(complaint.said).append(1, '\n');
  }
  std::map<std::size_t, std::string> said = OwnWordsAbout(text);
  for (std::size_t i = 0; i != sizeof kComplaints / sizeof kComplaints[0]; ++i) {
    const std::string& words = said[i + 1];
    EXPECT_NE(("\n" + words).find(std::string("\n") + kComplaints[i].shown + "\n"), std::string::npos)
        << kComplaints[i].said << "\n"
        << words;
    EXPECT_EQ(words.find("hidden"), std::string::npos) << words;
  }
}

}  // namespace
}  // namespace devhost
