#include "devhost/secrets/SecretXml.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;

struct Example {
  const char* text;
  const char* masked;
};

class APieceOfXml : public testing::TestWithParam<Example> {};

TEST_P(APieceOfXml, IsShownWithoutItsSecrets) {
  EXPECT_EQ(Masked(GetParam().text, SecretPlacesInXml(GetParam().text)), GetParam().masked);
}

TEST_P(APieceOfXml, IsNotChangedByMaskingItOnceMore) {
  EXPECT_EQ(Masked(GetParam().masked, SecretPlacesInXml(GetParam().masked)), GetParam().masked);
}

constexpr Example kXml[] = {
    {"<a><snmpCommunityReadSetting>my house</snmpCommunityReadSetting><b>my house</b></a>",
     "<a><snmpCommunityReadSetting>*****</snmpCommunityReadSetting><b>my house</b></a>"},
    {"<snmpCommunityWriteSetting >x</snmpCommunityWriteSetting >",
     "<snmpCommunityWriteSetting >*****</snmpCommunityWriteSetting >"},
    {"<trapTarget><target>h</target><community>a&amp;b\n&lt;</community><port/></trapTarget>",
     "<trapTarget><target>h</target><community>*****</community><port/></trapTarget>"},
    {"<community/><community></community><snmpCommunityReadSetting />",
     "<community/><community></community><snmpCommunityReadSetting />"},
    {"<community><![CDATA[a<b]]><x>c</x><!-- d --></community>", "<community>*****</community>"},
    {"<communityCount>12</communityCount>", "<communityCount>12</communityCount>"},
    {"<setting name=\"communityRead\" value=\"my house\" erased=\"false\"/>",
     "<setting name=\"communityRead\" value=\"*****\" erased=\"false\"/>"},
    {"<setting value='x' name='communityWrite'/>", "<setting value='*****' name='communityWrite'/>"},
    {"<setting name=\"communityRead\" value=\"\"/>", "<setting name=\"communityRead\" value=\"\"/>"},
    {"<setting name=\"sysName\" value=\"kitchen\"/>", "<setting name=\"sysName\" value=\"kitchen\"/>"},
    {"<trapTarget target=\"h\" community = \"a>b\" port=\"162\"/>",
     "<trapTarget target=\"h\" community = \"*****\" port=\"162\"/>"},
    {"<file>a\nrocommunity  my\nb</file>", "<file>a\nrocommunity  *****\nb</file>"},
    {"<file>a&#10;rocommunity &quot;my house&quot;&#10;b</file>", "<file>a&#10;rocommunity *****&#10;b</file>"},
    {"<file text=\"rwcommunity my&#10;b\"/>", "<file text=\"rwcommunity *****&#10;b\"/>"},
    {"<log>&lt;community&gt;x&lt;/community&gt;</log>", "<log>&lt;community&gt;*****&lt;/community&gt;</log>"},
    {"<known>rocommunity x\nsysContact Ada &lt;ada@example.org&gt;\nrwcommunity y\n</known>",
     "<known>rocommunity *****\nsysContact Ada &lt;ada@example.org&gt;\nrwcommunity *****\n</known>"},
    {"<known>sysContact &lt;a\ntrap2sink    a&lt;b  162</known>",
     "<known>sysContact &lt;a\ntrap2sink    *****  *****</known>"},
    {"<known>rocommunity%0Bx\nrwcommunity%0Cy 10%25\n</known>",
     "<known>rocommunity%0B*****\nrwcommunity%0C***** 10%25\n</known>"},
    {"<!-- rocommunity x -->", "<!-- rocommunity ***** -->"},
    {"<a>1 < 2 & 3</a>", "<a>1 < 2 & 3</a>"},
    {"", ""},
    {"no XML at all", "no XML at all"}};
INSTANTIATE_TEST_SUITE_P(ThatIsWhole, APieceOfXml, testing::ValuesIn(kXml));

constexpr Example kCut[] = {{"<a><community>sec", "<a><community>*****"},
                            {"<a><community>sec</commu", "<a><community>*****"},
                            {"<a><community></commu", "<a><community></commu"},
                            {"<a><community>", "<a><community>"},
                            {"ret</community><b>x</b>", "*****</community><b>x</b>"},
                            {"<setting name=\"communityRead\" value=\"sec", "<setting name=\"communityRead\" value=\"*****"},
                            {"<setting value=\"sec\" na", "<setting value=\"*****\" na"},
                            {"<trapTarget community=\"sec", "<trapTarget community=\"*****"},
                            {"<", "<"},
                            {"</", "</"},
                            {"<a b", "<a b"}};
INSTANTIATE_TEST_SUITE_P(ThatIsCutOff, APieceOfXml, testing::ValuesIn(kCut));

TEST(TheSecretsOfXml, AreThoseOfElementsAndAttributesAndOfXmlInIt) {
  EXPECT_THAT(
      SecretsInXml("<a><community>x &lt;</community><t community='y'/><b>&lt;community&gt;z&lt;/community&gt;</b></a>"),
      ElementsAre("x <", "y", "z"));
}

TEST(TheSecretsOfXml, DoNotComeFromACommentOfAConfiguration) {
  EXPECT_THAT(SecretsInXml("<known>-\n# createUser NAME MD5 passphrase\nrocommunity public\n-</known>"),
              ElementsAre("public"));
}

}  // namespace
}  // namespace devhost
