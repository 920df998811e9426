// Texts with secrets in all encodings and kinds of damage: no secret comes out, and what is shown stays so.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "devhost/secrets/Masker.h"
#include "devhost/text/Words.h"
#include "tests/support/HostileSecrets.h"

namespace devhost {
namespace {

constexpr int kTexts = 4000;

HostileSecrets RandomSecrets(std::minstd_rand& random) {
  return HostileSecrets(
      [&random](std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random); });
}

TEST(ASecretInAConfiguration, NeverComesOut) {
  std::minstd_rand random(20261121);
  for (int i = 0; i != kTexts; ++i) {
    HostileSecrets secrets = RandomSecrets(random);
    const std::string text = secrets.Config();
    Masker masker(false);
    const std::string shown = masker.Config(text);
    ASSERT_EQ(secrets.FindIn(shown), "") << OneLine(text) << "\n" << shown;
  }
}

TEST(ASecretInXml, NeverComesOut) {
  std::minstd_rand random(99);
  for (int i = 0; i != kTexts; ++i) {
    HostileSecrets secrets = RandomSecrets(random);
    const std::string xml = secrets.Xml();
    Masker masker(false);
    ASSERT_EQ(secrets.FindIn(masker.Xml(xml)), "") << OneLine(xml) << "\n" << masker.Xml(xml);
  }
}

TEST(ASecretThatHasComeBy, NeverComesOutOfAMessage) {
  std::minstd_rand random(4711);
  for (int i = 0; i != kTexts; ++i) {
    HostileSecrets secrets = RandomSecrets(random);
    const std::string value = secrets.Value();
    Masker masker(false);
    masker.SettingValue("communityRead", value);
    const std::string message = secrets.Message(value);
    ASSERT_EQ(secrets.FindIn(masker.Text(message)), "") << OneLine(value) << "\n" << OneLine(message);
    ASSERT_EQ(secrets.FindIn(masker.Text(Quoted(message))), "") << OneLine(value) << "\n" << OneLine(message);
    ASSERT_EQ(secrets.FindIn(masker.Config("sysContact of " + value)), "") << OneLine(value);
    ASSERT_EQ(secrets.FindIn(masker.SettingValue("sysContact", "of " + value)), "") << OneLine(value);
  }
}

TEST(AHarmlessConfiguration, IsShownAsItIs) {
  std::minstd_rand random(5);
  const std::vector<std::string> lines = {"sysName kitchen",
                                          "",
                                          "# an explanation",
                                          "view all included .1",
                                          "   ",
                                          "sysLocation \"Kitchen\" # 12",
                                          "# our caf\xC3\xA9",
                                          "agentAddress udp:161"};
  for (int i = 0; i != 1000; ++i) {
    std::string text;
    for (std::size_t n = random() % 8; n != 0; --n) {
      text += lines[random() % lines.size()] + "\n";
    }
    ASSERT_EQ(Masker(false).Config(text), text);
  }
}

}  // namespace
}  // namespace devhost
