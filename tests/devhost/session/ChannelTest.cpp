#include "devhost/session/Channel.h"

#include "devhost/engine/Occurrence.h"
#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;

class AChannel : public SessionFixture {
 protected:
  AChannel() {
    lines.emplace(::open(folder.Write("lines", "").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    output.emplace(lines->Get());
    secrets.emplace(false);
    channel.emplace(*output, *secrets);
  }
};

TEST_F(AChannel, WritesWhatHappensWithoutItsSecrets) {
  Occurrence reply{Occurrence::Kind::Reply, 12, "kitchen", "settings",
                   "<managedDevice><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting></managedDevice>"};
  channel->Event(reply);
  channel->Event(Occurrence{Occurrence::Kind::Log, 12, "kitchen", "", "it is hidden1", 3});
  EXPECT_EQ(Lines()[1].at("event"),
            Json::parse(R"({"kind":"log","driver":"kitchen","driverId":12,"text":"it is *****","level":3})"));
  EXPECT_THAT(Said(), Not(HasSubstr("hidden1")));
}

TEST_F(AChannel, CutsALongTextAndSaysHowLongItWas) {
  Occurrence log{Occurrence::Kind::Log, 12, "kitchen", "", std::string(100000, 'x')};
  channel->Event(log);
  const std::string text = Lines()[0].at("event").at("text");
  EXPECT_EQ(text, std::string(Channel::kLongestText, 'x') + " ... (100000 bytes)");
}

TEST_F(AChannel, WritesALineOfUtf8WhateverADriverSays) {
  channel->Event(Occurrence{Occurrence::Kind::Log, 12, "kitchen", "", "a\xff\nb"});
  EXPECT_EQ(Lines()[0].at("event").at("text"), "a\xEF\xBF\xBD\nb");
}

}  // namespace
}  // namespace devhost
