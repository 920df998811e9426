#include "devhost/console/HostLink.h"

#include <gmock/gmock.h>
#include <poll.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <vector>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using State = HostLink::State;
using testing::HasSubstr;
using testing::Not;

class ALink : public testing::Test, protected HostLink::Observer {
 protected:
  explicit ALink(const std::string& mode = "") : link(SCRIPTED_HOST, {"ScriptedHost", folder.Path("kept"), mode}, *this) {}

  // Works until the condition holds; whether it did.
  template <class Condition>
  bool Until(const Condition& holds) {
    const auto deadline = HostLink::Clock::now() + std::chrono::seconds(60);
    while (!holds() && HostLink::Clock::now() < deadline) {
      struct pollfd ready = {link.Descriptor(), POLLIN, 0};
      ::poll(&ready, 1, 50);
      link.Work();
      link.Tick(HostLink::Clock::now());
    }
    return holds();
  }
  bool Until(State state) {
    return Until([this, state] { return link.GetState() == state; });
  }
  // Asks, and keeps the answer behind the others.
  std::uint64_t Ask(const std::string& path) {
    return link.Ask({"GET", path, R"("query":{},"ifMatch":"","body":null)"},
                    [this](HttpAnswer answer) { answers.push_back(std::move(answer)); });
  }
  // Works until the process can be asked where it hangs; whether it can.
  bool UntilItHangs() {
    return Until([this] { return std::filesystem::exists(folder.Path("kept.hangs")); });
  }
  // Asks for what ends the process, and says why it has ended.
  std::string ReasonAfter(const std::string& path) {
    link.Start();
    Ask(path);
    EXPECT_TRUE(Until(State::Ended));
    return link.Reason();
  }

  void OnEvent(nlohmann::ordered_json& event) override { events.push_back(event["kind"]); }
  void OnState() override { states.push_back(link.GetState()); }
  void OnErrors(std::string_view text) override { errors += text; }

  const testsupport::ScratchFolder folder;
  std::vector<HttpAnswer> answers;
  std::vector<std::string> events;
  std::vector<State> states;
  std::string errors;
  HostLink link;
};

TEST_F(ALink, PassesQuestionsAndAnswersInOrder) {
  link.Start();
  EXPECT_EQ(link.GetState(), State::Starting);
  Ask("/a");
  Ask("/b");
  ASSERT_TRUE(Until([this] { return answers.size() == 2; }));
  EXPECT_EQ(answers[0].status, 200U);
  const nlohmann::json body = nlohmann::json::parse(answers[0].body);
  EXPECT_EQ(body["path"], "/a");
  EXPECT_EQ(body["method"], "GET");
  EXPECT_EQ(body["ifMatch"], "");
  EXPECT_EQ(nlohmann::json::parse(answers[1].body)["path"], "/b");
  EXPECT_EQ(link.GetState(), State::Up);
  EXPECT_THAT(events, testing::ElementsAre("load"));
  EXPECT_THAT(states, testing::ElementsAre(State::Starting, State::Up));
}

TEST_F(ALink, AdvisesARestartOnlyWhereThatHelps) {
  link.Start();
  Ask("/devices/2");
  ASSERT_TRUE(Until(State::Busy));
  link.Restart(HostLink::Clock::now());
  EXPECT_THAT(answers.at(0).body, HasSubstr("does not answer any more: it is being started again\""));
  link.Stop(HostLink::Clock::now());
  Ask("/a");
  EXPECT_THAT(answers.at(1).body, HasSubstr("does not answer any more: the console is being ended\""));
  link.Kill();
  ASSERT_TRUE(Until(State::Ended));
  Ask("/a");
  EXPECT_THAT(answers.at(2).body, HasSubstr("has ended"));
}

TEST_F(ALink, NamesTheCallThatHasTakenLong) {
  link.Start();
  Ask("/devices/2");
  ASSERT_TRUE(Until(State::Busy));
  ASSERT_TRUE(UntilItHangs());
  states.clear();
  link.Tick(HostLink::Clock::now() + HostLink::kLong / 2);
  EXPECT_EQ(link.LongCall(), "");
  link.Tick(HostLink::Clock::now() + HostLink::kLong);
  ASSERT_TRUE(Until([this] { return !link.LongCall().empty(); }));
  EXPECT_EQ(link.LongCall(), "CopyFrom of driver 2 \"attic\"");
  EXPECT_THAT(states, testing::ElementsAre(State::Busy)) << "and says so";
  link.Restart(HostLink::Clock::now());
  link.Tick(HostLink::Clock::now() + HostLink::kGrace);
  EXPECT_EQ(link.Reason(), "it did not stop and was killed; CopyFrom of driver 2 \"attic\" had not returned");
  ASSERT_TRUE(Until(State::Up));
  EXPECT_EQ(link.LongCall(), "");
}

TEST_F(ALink, SaysNoMoreThanOnceForAJobThatItTakesLong) {
  link.Start();
  Ask("/devices/16");
  ASSERT_TRUE(Until([this] { return answers.size() == 1 && errors.find("999 of driver 3") != std::string::npos; }));
  EXPECT_LE(states.size(), 3U) << "starting, up, and at most one more";
  Ask("/a");
  ASSERT_TRUE(Until([this] { return answers.size() == 2; }));
  EXPECT_EQ(link.LongCall(), "");
}

TEST_F(ALink, NamesTheCallThatTakesLongAtTheStart) {
  HostLink mute(SCRIPTED_HOST, {"ScriptedHost", folder.Path("kept"), "mute"}, *this);
  mute.Start();
  ASSERT_TRUE(UntilItHangs());
  mute.Tick(HostLink::Clock::now() + HostLink::kLong);
  for (int i = 0; i < 3000 && mute.LongCall().empty(); ++i) {
    ::usleep(10'000);
    mute.Work();
  }
  EXPECT_EQ(mute.LongCall(), "CopyFrom of driver 2 \"attic\"");
}

TEST_F(ALink, PassesOnTheStatusOfAnAnswer) {
  link.Start();
  Ask("/devices/404");
  ASSERT_TRUE(Until([this] { return answers.size() == 1; }));
  EXPECT_EQ(answers[0].status, 404U);
}

TEST_F(ALink, SendsOneQuestionAtATime) {
  link.Start();
  ASSERT_TRUE(Until(State::Up));
  Ask("/devices/9");
  Ask("/b");
  ASSERT_TRUE(link.CurrentJob());
  EXPECT_EQ(link.CurrentJob()->path, "/devices/9");
  EXPECT_EQ(link.GetState(), State::Busy);
  ASSERT_TRUE(Until([this] { return answers.size() == 2; }));
  EXPECT_FALSE(link.CurrentJob());
}

TEST_F(ALink, DoesNotSendWhatNobodyWaitsFor) {
  link.Start();
  Ask("/devices/9");
  const std::uint64_t dropped = Ask("/devices/11");
  const std::uint64_t running = Ask("/devices/9");
  Ask("/c");
  link.Drop(dropped);
  ASSERT_TRUE(Until([this] { return answers.size() == 1; }));
  link.Drop(running);
  ASSERT_TRUE(Until([this] { return answers.size() == 2; }));
  EXPECT_THAT(answers[1].body, HasSubstr("\"/c\""));
  EXPECT_THAT(events, Not(testing::Contains("mark"))) << "of /devices/11";
}

TEST_F(ALink, StopsItsProcessInOrder) {
  link.Start();
  ASSERT_TRUE(Until(State::Up));
  link.Stop(HostLink::Clock::now());
  ASSERT_TRUE(Until(State::Ended));
  EXPECT_EQ(folder.Read("kept"), "kept");
  EXPECT_EQ(link.ExitStatus(), 0);
}

TEST_F(ALink, KillsAProcessThatDoesNotStop) {
  link.Start();
  ASSERT_TRUE(Until(State::Up));
  Ask("/devices/2");
  const auto now = HostLink::Clock::now();
  link.Stop(now);
  ASSERT_EQ(answers.size(), 1U);
  EXPECT_EQ(answers[0].status, 503U);
  link.Tick(now + HostLink::kGrace - std::chrono::seconds(1));
  EXPECT_NE(link.Reason(), "it did not stop and was killed");
  link.Tick(now + HostLink::kGrace);
  ASSERT_TRUE(Until(State::Ended));
  EXPECT_EQ(link.Reason(), "it did not stop and was killed");
  EXPECT_EQ(answers.size(), 1U);
}

TEST_F(ALink, StartsItsProcessAgain) {
  link.Start();
  ASSERT_TRUE(Until(State::Up));
  link.Restart(HostLink::Clock::now());
  EXPECT_EQ(link.GetState(), State::Starting);
  Ask("/a");  // waits for the new one
  ASSERT_TRUE(Until([this] { return answers.size() == 1; }));
  EXPECT_EQ(answers[0].status, 200U);
  EXPECT_EQ(folder.Read("kept"), "kept");
  EXPECT_THAT(events, testing::ElementsAre("load", "load"));
  EXPECT_EQ(link.Reason(), "");
}

TEST_F(ALink, StartsAProcessThatHasEndedAgain) {
  EXPECT_THAT(ReasonAfter("/devices/13"), HasSubstr("exit status 0"));
  EXPECT_EQ(answers.at(0).status, 503U);
  EXPECT_EQ(Ask("/a"), 0U);
  EXPECT_EQ(answers.at(1).status, 409U);
  link.Restart(HostLink::Clock::now());
  EXPECT_TRUE(Until(State::Up));
}

TEST_F(ALink, SaysWhichDriverHasEndedTheProcess) {
  EXPECT_EQ(ReasonAfter("/devices/3"), "the process was ended by SIGABRT during Initialize of driver 3");
  EXPECT_THAT(answers.at(0).body, HasSubstr("during Initialize of driver 3"));
  EXPECT_THAT(answers.at(0).body, Not(HasSubstr("secret"))) << "what others write there was masked by nobody";
  EXPECT_THAT(errors, HasSubstr("secret"));
}

TEST_F(ALink, EndsAProcessThatWritesRubbish) {
  constexpr char kReason[] = "it wrote a line that is not a JSON object, or nests too deep, and was killed";
  EXPECT_EQ(ReasonAfter("/devices/4"), kReason);
  EXPECT_EQ(ReasonAfter("/devices/12"), kReason);
}

TEST_F(ALink, EndsAProcessWhoseEventNestsWithoutEnd) {
  EXPECT_EQ(ReasonAfter("/devices/15"), "it wrote a line that is not a JSON object, or nests too deep, and was killed");
  EXPECT_TRUE(std::find(events.begin(), events.end(), "log") == events.end());
}

TEST_F(ALink, EndsAProcessThatAnswersWhatNobodyHasAsked) {
  EXPECT_EQ(ReasonAfter("/devices/7"), "it answered what nobody had asked, and was killed");
}

TEST_F(ALink, EndsAProcessWhoseLineHasNoEnd) {
  EXPECT_EQ(ReasonAfter("/devices/6"), "it wrote a line of more than 16 MiB, and was killed");
}

TEST_F(ALink, EndsAProcessThatClosesItsOutput) {
  link.Start();
  Ask("/devices/14");
  ASSERT_TRUE(Until([this] {
    link.Tick(HostLink::Clock::now() + HostLink::kGrace);
    return link.GetState() == State::Ended;
  }));
  EXPECT_EQ(answers.at(0).status, 503U);
}

TEST_F(ALink, ReadsAFloodInBlocks) {
  link.Start();
  Ask("/devices/5");
  ASSERT_TRUE(Until([this] { return answers.size() == 1; }));
  EXPECT_EQ(events.size(), 20'001U);
}

TEST_F(ALink, WithAProgramThatIsMissingHasEnded) {
  HostLink missing("/no/such/program", {"x"}, *this);
  missing.Start();
  EXPECT_EQ(missing.GetState(), State::Ended);
  EXPECT_THAT(missing.Reason(), HasSubstr("No such file"));
}

class ALinkToAProjectThatCannotStart : public ALink {
 protected:
  ALinkToAProjectThatCannotStart() : ALink("fail") {}
};

TEST_F(ALinkToAProjectThatCannotStart, HasTheReason) {
  EXPECT_EQ(ReasonAfter("/a"), "the project file is missing");
  EXPECT_TRUE(link.HasFailed());
  EXPECT_EQ(link.ExitStatus(), 2);
}

class ALinkToAMuteProcess : public ALink {
 protected:
  ALinkToAMuteProcess() : ALink("mute") {}
};

TEST_F(ALinkToAMuteProcess, IsStartingUntilItIsStopped) {
  link.Start();
  Ask("/a");
  link.Work();
  EXPECT_EQ(link.GetState(), State::Starting);
  EXPECT_FALSE(link.CurrentJob());
  link.Kill();
  EXPECT_TRUE(Until(State::Ended));
  EXPECT_EQ(answers.at(0).status, 503U);
}

}  // namespace
}  // namespace devhost
