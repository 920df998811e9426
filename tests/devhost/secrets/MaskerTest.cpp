#include "devhost/secrets/Masker.h"

#include <gmock/gmock.h>

#include "devhost/text/Words.h"

namespace devhost {
namespace {

TEST(AMasker, HidesALearntSecretInAMessage) {
  Masker masker(false);
  EXPECT_EQ(masker.Text("they say hidden one"), "they say hidden one");
  masker.LearnFromXml("<snmpCommunityReadSetting>hidden one</snmpCommunityReadSetting>");
  masker.LearnFromCommandLine({"snmpget", "-v2c", "-c", "hidden2", "host"});
  masker.Learn({{"name", "communityWrite"}, {"value", "hidden3"}});
  masker.Learn({{"target", "10.0.0.5"}, {"community", "hidden4"}, {"port", "162"}});
  masker.Learn({{"xml", "<community>hidden5</community>"}});
  EXPECT_EQ(masker.Text("hidden one, hidden2, hidden3, hidden4 and hidden5 at 10.0.0.5"),
            "*****, *****, *****, ***** and ***** at 10.0.0.5");
}

TEST(AMasker, HidesTheBeginningOfALongSecretThatAMessageQuotes) {
  Masker masker(false);
  const std::string secret = "a\tb" + std::string(300, 's');
  masker.Learn({{"name", "communityWrite"}, {"value", secret}});
  EXPECT_EQ(masker.Text(Quoted(secret)), "\"*****...\" (303 bytes)");
  EXPECT_EQ(masker.Text(OneLine(secret)), "*****");
}

TEST(AMasker, HidesACommandsSecretsAndNothingElse) {
  const Masker masker(false);
  const Parameters setting = {{"name", "communityRead"}, {"value", "hidden"}};
  EXPECT_EQ(masker.CommandParameters(setting), (Parameters{{"name", "communityRead"}, {"value", "*****"}}));
  const Parameters trap = {{"target", "10.0.0.5"}, {"community", "hidden"}, {"port", "162"}};
  EXPECT_EQ(masker.CommandParameters(trap), (Parameters{{"target", "10.0.0.5"}, {"community", "*****"}, {"port", "162"}}));
  const Parameters name = {{"name", "sysName"}, {"value", "kitchen"}};
  EXPECT_EQ(masker.CommandParameters(name), name);
  const Parameters inlined = {{"xml", "<a><community>hidden</community></a>"}};
  EXPECT_EQ(masker.CommandParameters(inlined), (Parameters{{"xml", "<a><community>*****</community></a>"}}));
  const Parameters at = {{"community", "@hidden"}};
  EXPECT_EQ(masker.CommandParameters(at), (Parameters{{"community", "*****"}}));
}

TEST(AMasker, HidesTheSecretsOfAConfiguration) {
  EXPECT_EQ(Masker(false).ConfigText("# rocommunity hidden\n\nrwcommunity hidden default\nsysName a"),
            "# rocommunity *****\n\nrwcommunity ***** default\nsysName a");
}

TEST(AMasker, HidesASecretAndShowsWhenItIsEmpty) {
  const Masker masker(false);
  EXPECT_EQ(masker.Secret("hidden"), "*****");
  EXPECT_EQ(masker.Secret(""), "");
}

TEST(AMasker, HidesALearntSecretInTheReasonOfAFailure) {
  Masker masker(false);
  masker.LearnFromXml("<community>hidden</community>");
  EXPECT_EQ(masker.Xml("<Fail>the community hidden is wrong</Fail>"), "<Fail>the community ***** is wrong</Fail>");
  EXPECT_EQ(masker.Xml("<sysName>hidden</sysName>"), "<sysName>hidden</sysName>");
}

TEST(AMasker, HidesASecretThatIsSeveralWordsOfACommandLine) {
  Masker masker(false);
  masker.Learn({{"community", "our house"}});
  EXPECT_EQ(masker.CommandLine({"echo", "in our house", "in", "our", "house", "rocommunity x"}),
            "echo 'in *****' in ***** 'rocommunity *****'");
}

TEST(AMasker, ThatWasAskedToShowSecretsHidesNothing) {
  Masker masker(true);
  masker.Learn({{"community", "hidden"}});
  EXPECT_EQ(masker.Text("rocommunity hidden"), "rocommunity hidden");
  EXPECT_EQ(masker.Secret("hidden"), "hidden");
  EXPECT_EQ(masker.Xml("<community>hidden</community>"), "<community>hidden</community>");
  EXPECT_EQ(masker.ConfigText("rocommunity hidden"), "rocommunity hidden");
  EXPECT_EQ(masker.CommandParameters({{"community", "hidden"}}), (Parameters{{"community", "hidden"}}));
  EXPECT_EQ(masker.CommandLine({"snmpget", "-c", "hidden"}), "snmpget -c hidden");
}

}  // namespace
}  // namespace devhost
