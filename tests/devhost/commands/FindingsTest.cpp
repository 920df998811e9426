#include "devhost/commands/Findings.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(AFinding, IsTwoLinesOfText) {
  const Finding finding{"a/snmpd.conf", 12, Severity::Error, "some-rule", "it is wrong", "fix it"};
  EXPECT_EQ(FindingText(finding), "a/snmpd.conf:12: error: it is wrong [some-rule]\n    fix it\n");
}

TEST(AFinding, StaysTwoLinesWhateverItsTextsHold) {
  const Finding finding{"a\nb", 0, Severity::Warning, "some-rule", "it\r\nis \x1b[31mred", "fix\tit"};
  EXPECT_EQ(FindingText(finding), "a\\nb: warning: it\\r\\nis \\x1b[31mred [some-rule]\n    fix\\tit\n");
}

TEST(AFinding, AboutTheWholeFileNamesNoLineButInJson) {
  const Finding finding{"a/snmpd.conf", 0, Severity::Note, "some-rule", "it is odd", "wait"};
  EXPECT_EQ(FindingText(finding), "a/snmpd.conf: note: it is odd [some-rule]\n    wait\n");
  EXPECT_EQ(FindingJson(finding),
            "{\"file\":\"a/snmpd.conf\",\"line\":0,\"severity\":\"note\",\"rule\":\"some-rule\",\"reason\":\"it is odd\","
            "\"remedy\":\"wait\"}\n");
}

TEST(AFinding, IsOneJsonObjectInALine) {
  const Finding finding{"a/snmpd.conf", 12, Severity::Error, "some-rule", "it is wrong", "fix it"};
  EXPECT_EQ(
      FindingJson(finding),
      "{\"file\":\"a/snmpd.conf\",\"line\":12,\"severity\":\"error\",\"rule\":\"some-rule\",\"reason\":\"it is wrong\","
      "\"remedy\":\"fix it\"}\n");
}

// The reason alone, as it stands in the object.
std::string JsonReason(const std::string& reason) {
  const std::string json = FindingJson({"f", 1, Severity::Warning, "r", reason, "m"});
  const std::size_t from = json.find("\"reason\":") + 9;
  return json.substr(from, json.find(",\"remedy\"") - from);
}

TEST(Json, EscapesWhatItMust) {
  EXPECT_EQ(JsonReason("a \"b\" \\ c"), R"("a \"b\" \\ c")");
  EXPECT_EQ(JsonReason("a\nb\tc\x1b"), R"("a\nb\tc\u001b")");
  EXPECT_EQ(JsonReason(std::string("a\0b", 3)), R"("a\u0000b")");
}

TEST(Json, KeepsCharactersOfEachLength) {
  const std::string text = "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80";
  EXPECT_EQ(JsonReason(text), "\"" + text + "\"");
}

TEST(Json, ReplacesBytesThatAreNotText) {
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(JsonReason("a\xFFz"), "\"a" + mark + "z\"");
  EXPECT_EQ(JsonReason("a\xC3"), "\"a" + mark + "\"");
  EXPECT_EQ(JsonReason("\xC0\xAF"), "\"" + mark + mark + "\"");
  EXPECT_EQ(JsonReason("\xE0\x80\xAF"), "\"" + mark + mark + mark + "\"");
  EXPECT_EQ(JsonReason("\xED\xA0\x80"), "\"" + mark + mark + mark + "\"");
  EXPECT_EQ(JsonReason("\xF4\x90\x80\x80"), "\"" + mark + mark + mark + mark + "\"");
}

}  // namespace
}  // namespace devhost
