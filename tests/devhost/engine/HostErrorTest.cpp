// What a program reads from an error of the host, beside the line for people.
#include "devhost/engine/HostError.h"

#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using testing::StartsWith;

class AHostError : public HostFixture {
 protected:
  // What the host throws for that.
  template <class Action>
  HostError Thrown(Action action) {
    try {
      action();
    } catch (const HostError& error) {
      return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return HostError("");
  }

  static void ExpectDriver(const HostError& error, unsigned long id, const std::string& name) {
    EXPECT_EQ(error.driverId, id);
    EXPECT_EQ(error.driverName, name);
  }
};

TEST_F(AHostError, OfADriversExceptionNamesDriverCallAndExceptionText) {
  Load(5, "rude");
  const HostError error = Thrown([&] { host.Command(5, "Throw", {}); });
  EXPECT_STREQ(error.what(), "an exception came out of command \"Throw\" of driver 5 \"rude5\": no <answer> today");
  ExpectDriver(error, 5, "rude5");
  EXPECT_EQ(error.call, "command \"Throw\"");
  EXPECT_EQ(error.text, "an exception came out: no <answer> today");
}

TEST_F(AHostError, OfAnEventNamesTheFirstListenerThatFailed) {
  Load(5, "rude");
  host.Command(5, "Listen", {});
  const HostError error = Thrown([&] { host.LoadProject(); });
  ExpectDriver(error, 5, "rude5");
  EXPECT_EQ(error.call, "event \"OnProjectLoaded\"");
  EXPECT_EQ(error.text, "an exception came out: not listening");
}

TEST_F(AHostError, OfADriverThatIsNotMadeNamesItsCreation) {
  const HostError error = Thrown([&] { Load(5, "no_driver"); });
  ExpectDriver(error, 5, "no_driver5");
  EXPECT_EQ(error.call, "creation");
  EXPECT_THAT(error.text, StartsWith("was not made: its module"));
}

TEST_F(AHostError, OfAModuleThatCannotBeLoadedNamesDriverAndModule) {
  const HostError error = Thrown([&] { Load(5, "missing"); });
  ExpectDriver(error, 5, "missing5");
  EXPECT_EQ(error.call, "loading");
  EXPECT_THAT(error.text, StartsWith("module \"" + TestModule("missing") + "\" cannot be loaded"));
}

TEST_F(AHostError, OfAConfigurationThatIsNoXmlNamesTheDriver) {
  const HostError error = Thrown([&] { Load(5, "well_behaved", "<config>"); });
  ExpectDriver(error, 5, "well_behaved5");
  EXPECT_EQ(error.call, "loading");
  EXPECT_THAT(error.text, StartsWith("line 1 of its configuration element is not XML"));
}

TEST_F(AHostError, OfAnIdThatIsTakenNamesTheDriverThatIsNotLoaded) {
  Load(5, "well_behaved");
  const HostError error = Thrown([&] { Load(5, "rude"); });
  ExpectDriver(error, 5, "rude5");
  EXPECT_EQ(error.call, "loading");
  EXPECT_EQ(error.text, "has the id of driver 5 \"well_behaved5\"");
}

TEST_F(AHostError, OfACommandThatItsDriverLacksNamesBoth) {
  Load(5, "well_behaved");
  const HostError error = Thrown([&] { host.Command(5, "Unheard", {}); });
  ExpectDriver(error, 5, "well_behaved5");
  EXPECT_EQ(error.call, "command \"Unheard\"");
  EXPECT_THAT(error.text, StartsWith("has no command \"Unheard\"; it has: Echo, "));
}

TEST_F(AHostError, OfADriverThatIsMissingNamesTheCallAlone) {
  for (const auto& [call, error] :
       {std::pair{"command \"Echo\"", Thrown([&] { host.Command(5, "Echo", {}); })},
        std::pair{"GetPersistState", Thrown([&] { host.GetPersistState(5, XmlStyle::Compact); })}}) {
    ExpectDriver(error, 0, "");
    EXPECT_EQ(error.call, call);
    EXPECT_EQ(error.text, "there is no driver 5; none is loaded");
  }
}

TEST_F(AHostError, OfWhatTheHostDoesNotKnowNamesTheCallAlone) {
  for (const auto& [call, error] : {std::pair{"command \"Echo\"", Thrown([&] { host.Command("Echo", {}); })},
                                    std::pair{"event \"OnFire\"", Thrown([&] { host.SendEvent("OnFire", {}); })},
                                    std::pair{"removal of a variable", Thrown([&] { host.RemoveVariable(5, 7, false); })}}) {
    ExpectDriver(error, 0, "");
    EXPECT_EQ(error.call, call);
    EXPECT_EQ(error.text, error.what());
  }
}

TEST_F(AHostError, OfAVariableThatIsThereAlreadyNamesTheCall) {
  host.DefineVariable({5, 7, "lamp"});
  EXPECT_EQ(Thrown([&] { host.AddVariable({5, 7, "lamp"}); }).call, "adding of a variable");
}

}  // namespace
}  // namespace devhost
