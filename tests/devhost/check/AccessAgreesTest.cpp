// The operands of lines about access, users, traps and plain values: the rules find something exactly where the real daemon
// complains or crashes. The lines come from a grid, and from files as people have them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "devhost/commands/Findings.h"
#include "tests/devhost/check/Examples.h"
#include "tests/devhost/check/RawDaemon.h"
#include "tests/devhost/check/ServedFile.h"

namespace devhost {
namespace {

using Words = std::vector<std::string>;

// One operand of a directive: what is good there, and what else is tried in its place. Names that a name server would be
// asked about are not.
struct Operand {
  std::string good;
  Words others;
};

const Operand kSource4 = {"default",
                          {"10.0.0.1",
                           "10.0.0.0/8",
                           "10.0.0.1/8",
                           "10.0.0.0/33",
                           "10.0.0.0/-1",
                           "10.0.0.0/+8",
                           "10.0.0.0/8x",
                           "10.0.0.0/0",
                           "0.0.0.0/0",
                           "10.0.0.0/08",
                           "10.0.0.0/255.0.0.0",
                           "10.0.0.0/255.0.0",
                           "10.0.3.0/255.0.255.0",
                           "10.1.0.0/255.0.255.0",
                           "10.0.0.0/",
                           "10.0.0.0//",
                           "10",
                           "10.1",
                           "010.0.0.1",
                           "0x0a000001",
                           "10.0.0.256",
                           "10.0.0.1.2",
                           "!10.0.0.1",
                           "localhost",
                           "localhost/8",
                           "localhost/32",
                           "0/0",
                           "10.0.0.0/8.0",
                           "10.0.0.0/4294967304",
                           "\"\"",
                           "'10.0.0.1'",
                           "\"10.0.0.1/8\""}};
const Operand kSource6 = {"default",
                          {"::1", "::1/128", "::1/129", "::1/127", "::1/-1", "::1/", "::1/x", "::/0",
                           "fe80::/ffc0::", "fe80::1/ffc0::", "fe80::/10", "127.0.0.1", "127.0.0.1/8", "!::1",
                           "2001:db8::/32", "2001:db8::1/32", "\"\""}};
// The line is one for both families of addresses.
const Operand kSourceOfBoth = {"default", {"10.0.0.1", "10.0.0.0/8", "10.0.0.1/8", "10.0.0.0/33", "!10.0.0.1"}};
const Operand kSubtree = {".1.3.6",
                          {"1", ".", "..1", ".1..3", ".1.x", ".1.-3", "iso", ".iso.3", "ccitt", "iso.org", "system", "mib-2",
                           ".1.3.6.1.", ".1.40", ".1.3.0x6", ".9.9", "SNMPv2-MIB::system", ".1.3.6.*", ".1.3.4294967296"}};
const Operand kModel = {"v2c", {"v1", "V1", "V2C", "v2", "v3", "usm", "USM", "tsm", "1", "any", "snmpv1", "\"v1\""}};
const Operand kModelOfAccess = {"any", {"ANY", "v1", "v2c", "v2", "v3", "usm", "tsm", "\"any\""}};
const Operand kLevel = {"noauth", {"auth", "priv", "noauthnopriv", "authNoPriv", "AuthPriv", "none", "1", "nope"}};
const Operand kPrefix = {"exact", {"prefix", "EXACT", "none", "1", "0", "\"exact\""}};
const Operand kType = {"read", {"write", "notify", "execute", "net", "log", "READ", "see"}};
const Operand kTypes = {"read", {"read,write", "read|net", "read:log", ",read", "read,", "see", "read,see", "READ"}};
const Operand kName = {"name", {"\"\"", std::string(32, 'x'), std::string(33, 'x')}};
const Operand kAny = {"name", {"\"other name\"", "other"}};
const Operand kMask = {"80",
                       {"0x80", "8", "ff:a0", "ff.a0", "ffa0", "ff a0", "xx", "ff:xx", "1ff", "\"ff\"", "80 # comment",
                        "# x", "ff:", ":ff", "x8", "8x"}};
const Operand kIncluded = {"included", {"excluded", "Included", "include", "1", "\"included\""}};
const Operand kContext = {"\"\"", {"context", std::string(32, 'x'), std::string(33, 'x')}};
const Operand kAuth = {"SHA", {"MD5", "sha-512", "SHA1", "sha384", "SHB", "MD-5", "AES"}};
const Operand kPassphrase = {"passphrase", {"12345678", "1234567", "\"two words\"", "\"a b\""}};
const Operand kPrivacy = {"AES", {"DES", "aes128", "AES-192", "AES256", "3DES", "none"}};

struct Form {
  std::string directive;
  std::vector<Operand> operands;
};

const std::vector<Form>& Forms() {
  static const std::vector<Form> kForms = {
      {"rocommunity", {kAny, kSource4, kSubtree, kAny}},
      {"rwcommunity6", {kAny, kSource6, kSubtree, kAny}},
      {"rocommunity  reader  default  -V", {kAny, kAny}},
      {"com2sec", {kName, kSource4, kAny}},
      {"com2sec  -Cn  context", {kName, kSource4, kAny}},
      {"com2sec6", {kName, kSource6, kAny}},
      {"group", {kAny, kModel, kAny, kAny}},
      {"access", {kContext, kContext, kModelOfAccess, kLevel, kPrefix, kAny, kAny, kAny, kAny}},
      {"setaccess", {kAny, kContext, kModelOfAccess, kLevel, kPrefix, kType, kAny}},
      {"view", {{"name", {std::string(32, 'x'), std::string(33, 'x')}}, kIncluded, kSubtree, kMask}},
      {"rouser", {kAny, kLevel, kSubtree, kAny}},
      {"rwuser  -s  usm", {kAny, kLevel, kSubtree}},
      {"rouser  bob  auth  -V", {kAny, kAny}},
      {"authcommunity", {kTypes, kAny, kSourceOfBoth, kSubtree}},
      {"authuser", {kTypes, kAny, kLevel, kSubtree}},
      {"authgroup", {kTypes, kAny, kLevel, kSubtree}},
      {"authaccess", {kTypes, kAny, kAny, kLevel}},
      {"createUser", {kAny, kAuth, kPassphrase, kPrivacy, kPassphrase}},
      {"createUser  -e", {{"0x80001f8880", {"zz", "0x8", "80"}}, kAny}},
      {"createUser  bob  SHA  -l", {{"0x" + std::string(40, 'a'), {"0x00", "zz", "0x" + std::string(42, 'a')}}, kPrivacy}},
      {"createUser  bob  SHA  -m", {{"0x" + std::string(40, 'a'), {"0x00", "zz", "0x" + std::string(42, 'a')}}}},
      {"authtrapenable", {{"1", {"2", "0", "3", "yes", "\"1\"", "1x"}}}},
      {"storageUseNFS", {{"1", {"2", "0", "yes"}}}},
      {"strictDisman", {{"yes", {"no", "YES", "true", "0", "1", "2", "on", "y", "\"yes\"", "yes # why"}}}},
      {"maxGetbulkRepeats", {{"10", {"-1", "0x10", "10x", "\"10\"", "ten", "10 # why"}}}},
      {"agentXTimeout", {{"6", {"6s", "x", "6 # why", "6 7"}}}},
      {"trap2sink", {{"127.0.0.1", {"127.0.0.1:10162", "[::1]:10162", "127.0.0.1:70000", "-name one 127.0.0.1"}}}},
  };
  return kForms;
}

void PrintTo(const Form& form, std::ostream* out) {
  *out << form.directive;
}

// The good line, each of its beginnings, and the line with one operand replaced by each of the others.
Words LinesOf(const Form& form) {
  Words lines;
  const std::size_t count = form.operands.size();
  for (std::size_t length = 0; length <= count; ++length) {
    std::string line = form.directive;
    for (std::size_t at = 0; at != length; ++at) {
      line += "  " + form.operands[at].good;
    }
    lines.push_back(line);
  }
  for (std::size_t changed = 0; changed != count; ++changed) {
    for (const std::string& other : form.operands[changed].others) {
      std::string line = form.directive;
      for (std::size_t at = 0; at != count; ++at) {
        line += "  " + (at == changed ? other : form.operands[at].good);
      }
      lines.push_back(line);
    }
  }
  return lines;
}

// Whether a rule about this line alone finds something.
bool IsFound(const std::string& line) {
  static const std::set<std::string> kAboutOtherThings = {"no-access", "name-not-defined", "no-rights", "plain-passphrase",
                                                          "will-override-section"};
  const std::vector<Finding> findings = Judged(line);
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return kAboutOtherThings.count(finding.rule) == 0; });
}

// It says nothing, and nobody is in the group.
bool IsSilent(const std::string& line) {
  return line == "group  name  v2c";
}

bool IsCrash(const std::string& line) {
  return line == "createUser  name  SHA";
}

class ALineOfTheGrid : public testing::TestWithParam<Form> {};

TEST_P(ALineOfTheGrid, IsFoundWhenTheDaemonRejectsItAndOnlyThen) {
  const Words lines = LinesOf(GetParam());
  std::string text;
  for (const std::string& line : lines) {
    text += (IsCrash(line) ? "" : line) + "\n";
  }
  const RawDaemon daemon(text);
  ASSERT_FALSE(daemon.crashes);
  for (std::size_t at = 0; at != lines.size(); ++at) {
    const bool isRejected = daemon.complaints.count(at + 1) != 0 || IsSilent(lines[at]) || IsCrash(lines[at]);
    EXPECT_EQ(IsFound(lines[at]), isRejected) << lines[at];
  }
}

INSTANTIATE_TEST_SUITE_P(Each, ALineOfTheGrid, testing::ValuesIn(Forms()), [](const testing::TestParamInfo<Form>& form) {
  std::string name = std::to_string(form.index) + "_";
  for (const char c : form.param.directive) {
    name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : "";
  }
  return name;
});

TEST(TheDaemon, RejectsEachDirectiveWithoutAValue) {
  std::string text;
  Words names;
  for (const std::string& name : UsualDirectiveNames().daemon) {
    if (name.compare(0, 4, "smux") != 0) {  // it is asked without smux
      names.push_back(name);
      text += name + "\n";
    }
  }
  RawDaemon daemon(text);
  for (std::size_t at = 0; at != names.size(); ++at) {
    EXPECT_FALSE(daemon.complaints[at + 1].empty()) << names[at];
    EXPECT_TRUE(IsFound(names[at])) << names[at];
  }
}

TEST(TheDaemon, CrashesOnTheseLines) {
  for (const std::string line :
       {"createUser  bob  SHA", "createUser  bob  \"\"", "trap2sink  -name  one", "trapsink  -v", "informsink  -profile"}) {
    EXPECT_TRUE(RawDaemon(line + "\n").crashes) << line;
    EXPECT_TRUE(IsFound(line)) << line;
  }
}

TEST(TheDaemon, LetsNobodySeeAnythingThroughAViewThatIsNotDefined) {
  const std::string text =
      "rocommunity  one  default  -V  missing\nrocommunity  two  default  -V  _all_\nrocommunity  three  default  -V  part\n"
      "view  part  included  .1\n";
  EXPECT_EQ(LinesFound("name-not-defined", text), std::vector<std::size_t>{1});
  const ServedFile daemon(text);
  EXPECT_EQ(daemon.As("one").Get(e2e::kSysName).error.rfind("noSuch", 0), 0U);
  EXPECT_TRUE(daemon.LetsIn("two"));
  EXPECT_TRUE(daemon.LetsIn("three"));
}

TEST(TheDaemon, LetsNobodyInByANameThatHasNoRights) {
  const std::string text =
      "com2sec  alone  default  one\ncom2sec  member  default  two\ngroup  weak  v2c  member\n"
      "com2sec  strong  default  three\naccess  able  \"\"  any  noauth  exact  _all_  none  none\ngroup  able  v2c  "
      "strong\n";
  EXPECT_EQ(LinesFound("no-rights", text), (std::vector<std::size_t>{1, 2}));
  const ServedFile daemon(text);
  EXPECT_TRUE(daemon.ShutsOut("one"));
  EXPECT_TRUE(daemon.ShutsOut("two"));
  EXPECT_TRUE(daemon.LetsIn("three"));
}

TEST(TheDaemon, TakesASignForTheValue) {
  const ServedFile daemon("sysLocation = Attic\n");
  EXPECT_EQ(daemon.Value(e2e::kSysLocation), "= Attic");
}

// Files as people have them. What is found in them is looked at by a person and kept in the golden.
Words RealFiles() {
  Words names;
  for (const auto& entry : std::filesystem::directory_iterator(REAL_DATA_FOLDER)) {
    if (entry.path().extension() == ".conf") {
      names.push_back(entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string TextOf(const std::string& name) {
  return testsupport::ScratchFolder::ReadFile(std::string(REAL_DATA_FOLDER "/") + name);
}

TEST(AFileAsPeopleHaveIt, IsFoundFaultyWhereTheDaemonSaysSo) {
  for (const std::string& name : RealFiles()) {
    std::set<std::size_t> found;
    for (const Finding& finding : Judged(TextOf(name), name)) {
      found.insert(finding.line);
    }
    for (const auto& [line, said] : RawDaemon(TextOf(name)).complaints) {
      // Without MIB files, the daemon finds the objects of its own monitors no more.
      const bool isOfMib = said.front().find("payload OID") != std::string::npos;
      EXPECT_TRUE(isOfMib || found.count(line) != 0) << name << ":" << line << ": " << said.front();
    }
  }
}

TEST(AFileAsPeopleHaveIt, GivesTheFindingsThatAPersonHasApproved) {
  constexpr char kGolden[] = REAL_DATA_FOLDER "/findings.golden";
  std::string found;
  for (const std::string& name : RealFiles()) {
    found += name + "\n";
    for (const Finding& finding : Judged(TextOf(name), name)) {
      found += FindingText(finding);
    }
  }
  if (std::getenv("UPDATE_GOLDENS") != nullptr) {
    std::ofstream(kGolden, std::ios::binary) << found;
  }
  EXPECT_EQ(found, testsupport::ScratchFolder::ReadFile(kGolden)) << "see " << kGolden;
}

}  // namespace
}  // namespace devhost
