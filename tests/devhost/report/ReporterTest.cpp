#include "devhost/report/Reporter.h"

#include <gmock/gmock.h>

#include "devhost/secrets/Masker.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;

Occurrence Make(Kind kind, const std::string& text) {
  return {kind, 12, "kitchen", "name", text};
}

TEST(AMaskedOccurrence, HidesSecretsInXml) {
  Masker secrets(false);
  for (const Kind kind : {Kind::Reply, Kind::Notification}) {
    EXPECT_EQ(Masked(Make(kind, "<a><community>hidden</community></a>"), secrets).text,
              "<a><community>*****</community></a>");
  }
}

TEST(AMaskedOccurrence, HidesSecretsInMessages) {
  Masker secrets(false);
  for (const Kind kind : {Kind::Log, Kind::Manners, Kind::Failure, Kind::StateProblem}) {
    Occurrence occurrence = Make(kind, "rocommunity hidden");
    occurrence.call = "command \"rocommunity hidden\"";
    EXPECT_EQ(Masked(occurrence, secrets).text, "rocommunity *****");
    EXPECT_THAT(Masked(occurrence, secrets).call, testing::Not(testing::HasSubstr("hidden")));
  }
}

// It may log what it has read itself, before anybody has asked it.
TEST(AMaskedOccurrence, HidesWhatADriverCallsACommunity) {
  Masker secrets(false);
  for (const Kind kind : {Kind::Log, Kind::Manners, Kind::Failure, Kind::StateProblem}) {
    EXPECT_EQ(Masked(Make(kind, "read the community hidden"), secrets).text, "read the community *****");
    EXPECT_EQ(Masked(Make(kind, "rocomunty hidden"), secrets).text, "*****");
  }
}

TEST(AMaskedOccurrence, HidesSecretsInParameters) {
  Masker secrets(false);
  for (const Kind kind : {Kind::Command, Kind::Event}) {
    Occurrence occurrence = Make(kind, "");
    occurrence.parameters = {{"community", "@hidden"}, {"xml", "<community>hidden</community>"}, {"name", "sysName"}};
    EXPECT_EQ(Masked(occurrence, secrets).parameters,
              (Parameters{{"community", "*****"}, {"xml", "<community>*****</community>"}, {"name", "sysName"}}));
  }
}

TEST(AMaskedOccurrence, TeachesTheSecretsOfAReply) {
  Masker secrets(false);
  EXPECT_EQ(Masked(Make(Kind::Log, "they say hidden"), secrets).text, "they say hidden");
  Masked(Make(Kind::Reply, "<community>hidden</community>"), secrets);
  EXPECT_EQ(Masked(Make(Kind::Log, "they say hidden"), secrets).text, "they say *****");
}

TEST(AMaskedOccurrence, KeepsAllElse) {
  Masker secrets(false);
  Occurrence occurrence = Make(Kind::Log, "text");
  occurrence.level = 3;
  occurrence.candidates = {"a", "b"};
  const Occurrence masked = Masked(occurrence, secrets);
  EXPECT_EQ(masked.kind, Kind::Log);
  EXPECT_EQ(masked.driverId, 12ul);
  EXPECT_EQ(masked.driverName, "kitchen");
  EXPECT_EQ(masked.name, "name");
  EXPECT_EQ(masked.text, "text");
  EXPECT_EQ(masked.level, 3u);
  EXPECT_EQ(masked.candidates, occurrence.candidates);
}

TEST(AMaskedOccurrence, ShowsSecretsOnRequest) {
  Masker secrets(true);
  EXPECT_EQ(Masked(Make(Kind::Reply, "<community>hidden</community>"), secrets).text, "<community>hidden</community>");
  EXPECT_EQ(Masked(Make(Kind::Log, "rocommunity hidden"), secrets).text, "rocommunity hidden");
}

}  // namespace
}  // namespace devhost
