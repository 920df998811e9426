// Masks random texts that contain a secret. The secret never comes out, and nothing else changes.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "devhost/secrets/Secrets.h"
#include "devhost/snmpd/Directive.h"

namespace devhost {
namespace {

// The text before and after a secret.
struct Frame {
  std::string before;
  std::string after;
};

class Random {
 public:
  explicit Random(unsigned int seed) : m_engine(seed) {}

  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(m_engine); }

  std::string Text(const std::string& letters, std::size_t longest) {
    std::string text;
    for (std::size_t i = Below(longest + 1); i != 0; --i) {
      text += letters[Below(letters.size())];
    }
    return text;
  }

  // Returns a secret that no other text of these tests contains by chance. Directives, elements and noise do not use its
  // letters.
  std::string Secret(const std::string& letters) { return "Q" + Text(letters, 8) + "Z" + Text(letters, 8) + "Q"; }

 private:
  std::minstd_rand m_engine;
};

const std::string kNoise = std::string("ab \t\r#<>&;\"'\\\x80\xff\x01=|-/") + '\0';

// Returns whole lines without a secret of their own. They may contain invalid UTF-8.
std::string NoiseLines(Random& random) {
  std::string lines;
  for (std::size_t i = random.Below(4); i != 0; --i) {
    lines += random.Text(kNoise, 30) + "\n";
  }
  return lines;
}

const std::vector<Frame> kLines = {{"rocommunity ", ""},
                                   {"  rwcommunity   ", "  default .1.3"},
                                   {"# rocommunity6 ", " 10.0.0.0/8 -V view"},
                                   {"RWcommunity6 ", "\r"},
                                   {"[snmpd] trapcommunity ", ""},
                                   {"trap2sink  10.0.0.5  ", "  162"},
                                   {"#trapsink h ", ""},
                                   {"informsink h:1 ", ""},
                                   {"com2sec me default ", ""},
                                   {"com2sec6 -Cn c me default ", "  "},
                                   {"com2secunix me /s ", ""},
                                   {"authcommunity log,net ", " default"},
                                   {"trapsess -v 2c -c ", " host"},
                                   {"proxy -v1 -Cn c -c ", " host .1 .2"},
                                   {"trapsess -v3 -u u -a MD5 -A ", " -x DES -X y h"},
                                   {"createUser me SHA ", " AES"},
                                   {"createUser me SHA *****  AES ", ""},
                                   {"extend x /usr/bin/snmpget -Oqv -v2c -c ", " h .1"},
                                   {"[snmp] defCommunity ", ""},
                                   {"defAuthPassphrase ", ""}};

TEST(ASecretInAConfiguration, NeverComesOutAndNothingElseChanges) {
  Random random(20261121);
  for (int i = 0; i != 4000; ++i) {
    const Frame& frame = kLines[random.Below(kLines.size())];
    std::string secret = random.Secret("KVWX.:$%*_");
    const std::string bare = secret;
    if (random.Below(2) == 0) {
      secret = "\"" + secret + " " + bare + "\"";  // quoted, with a blank
    }
    const std::string before = NoiseLines(random) + frame.before;
    const std::string after = frame.after + "\n" + NoiseLines(random);
    // The noise is masked separately, if there is anything to mask in it.
    const std::size_t start = before.size() - frame.before.size();
    const std::string expected = MaskConfigText(before.substr(0, start)) + frame.before + kMask +
                                 (frame.after.find(" -X y") == std::string::npos ? frame.after : " -x DES -X ***** h") +
                                 "\n" + MaskConfigText(after.substr(frame.after.size() + 1));
    const std::string masked = MaskConfigText(before + secret + after);
    ASSERT_EQ(masked, expected) << before << secret << after;
    ASSERT_EQ(masked.find(bare), std::string::npos);
    ASSERT_EQ(MaskConfigText(masked), masked);
  }
}

TEST(ASecretOfAnyCharacters, NeverComesOutOfItsLine) {
  Random random(4711);
  for (int i = 0; i != 4000; ++i) {
    const std::string part = random.Secret("KV");
    // The agent writes a community in quotes when it has a blank, and otherwise as it is.
    const std::string community = random.Text("\"'\\\t #a", 4) + part + random.Text("\"'\\\t #a", 4) + part;
    const bool quoted = community.find(' ') != std::string::npos;
    const std::string written = quoted ? "\"" + community + "\"" : community;
    for (const char* const start : {"rocommunity  ", "rwcommunity  ", "trap2sink  10.0.0.5  ", "trap2sink    "}) {
      for (const char* const end : {"", "  162"}) {
        const std::string masked = MaskConfigLine(start + written + end);
        ASSERT_EQ(masked.find(part), std::string::npos) << start << written << end << "\n" << masked;
      }
    }
  }
}

const std::vector<Frame> kElements = {
    {"<a><snmpCommunityReadSetting>", "</snmpCommunityReadSetting></a>"},
    {"<snmpCommunityWriteSetting>", "</snmpCommunityWriteSetting>"},
    {"<trapTarget><target>h</target><community>", "</community><port>162</port></trapTarget>"},
    {"<settings><setting name=\"communityRead\" value=\"",
     "\" erased=\"false\"/><setting name=\"a\" value=\"b\"/></settings>"},
    {"<setting value='", "' name='communityWrite'/>"},
    {"<config folder=\"f\"><trapTarget target=\"h\" community=\"", "\"/></config>"},
    {"<file>sysName x&#10;rocommunity ", "&#10;sysContact y</file>"},
    {"<file>\ntrap2sink h ", "\n</file>"}};

TEST(ASecretInXml, NeverComesOutAndNothingElseChanges) {
  Random random(99);
  for (int i = 0; i != 4000; ++i) {
    const Frame& frame = kElements[random.Below(kElements.size())];
    const std::string secret = random.Secret("KVWX.:$%*_");
    const std::string noise = "<x>" + random.Text("ab \n\x80\xff", 20) + "</x>";
    const std::string masked = MaskXml(noise + frame.before + secret + frame.after + noise);
    ASSERT_EQ(masked, noise + frame.before + kMask + frame.after + noise);
    ASSERT_EQ(MaskXml(masked), masked);
  }
}

TEST(ASecretInXml, NeverComesOutWhereverTheXmlIsCutOff) {
  Random random(7);
  for (const Frame& frame : kElements) {
    const std::string secret = random.Secret("KVWX&;\"'> ") + "Q";
    // The value of an attribute has no quotes, because a quote would end it.
    const bool attribute = !frame.after.empty() && (frame.after.front() == '"' || frame.after.front() == '\'');
    const std::string inside = attribute ? "QKVQZQ" : secret;
    const std::string xml = frame.before + inside + frame.after;
    for (std::size_t size = frame.before.size() + 2; size <= xml.size(); ++size) {
      const std::string shown = inside.substr(0, size - frame.before.size());
      ASSERT_EQ(MaskXml(xml.substr(0, size)).find(shown), std::string::npos) << xml.substr(0, size);
    }
  }
}

TEST(AnyText, IsMaskedTheSameWayTwice) {
  Random random(5);
  const std::vector<std::string> pieces = {
      "rocommunity ", "trap2sink ", "\"",       "'",      "\\", " ",     "\t", "#",     "\n", "-c", "<",    ">",
      "</",           "community",  "snmpget ", "proxy ", "=",  "name=", "a",  "value", "/>", "&",  "&lt;", "createUser ",
      "*****",        "162",        "com2sec "};
  for (int i = 0; i != 20000; ++i) {
    std::string text;
    for (std::size_t n = random.Below(12); n != 0; --n) {
      text += pieces[random.Below(pieces.size())];
    }
    const std::string once = MaskConfigText(text);
    ASSERT_EQ(MaskConfigText(once), once) << text;
    const std::string xml = MaskXml(text);
    ASSERT_EQ(MaskXml(xml), xml) << text;
    ReadDirective(text);
  }
}

}  // namespace
}  // namespace devhost
