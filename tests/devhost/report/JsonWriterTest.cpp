#include "devhost/report/JsonWriter.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "tests/devhost/report/Written.h"

namespace devhost {
namespace {

using Kind = ScriptOccurrence::Kind;

// The line about one thing that happens in line 7, without its number and that of the line.
template <class Any>
std::string Line(const Any& occurrence) {
  const std::string line = Written([&](Output& output) { JsonWriter(output).Report(occurrence, {"a.devhost:7", 7}); });
  const std::string start = "{\"n\":1,\"line\":7,";
  EXPECT_EQ(line.substr(0, start.size()), start);
  EXPECT_EQ(line.substr(line.size() - 2), "}\n");
  return "{" + line.substr(start.size(), line.size() - start.size() - 1);
}

Occurrence Host(Occurrence::Kind kind, const std::string& text) {
  return {kind, 12, "kitchen", "", text};
}

ScriptOccurrence Script(Kind kind, const std::string& text) {
  return {kind, 12, "kitchen", text};
}

constexpr char kKitchen[] = "\"driver\":\"kitchen\",\"driverId\":12";

TEST(JsonLines, AreNumberedAndNameTheScriptsLine) {
  EXPECT_EQ(Written([](Output& output) {
              JsonWriter writer(output);
              writer.Report(Host(Occurrence::Kind::Invalidate, ""), {"at the start"});
              writer.Report(ScriptOccurrence{Kind::Restart}, {"a.devhost:3", 3});
            }),
            "{\"n\":1,\"kind\":\"invalidate\",\"driver\":\"kitchen\",\"driverId\":12}\n"
            "{\"n\":2,\"line\":3,\"kind\":\"restart\"}\n");
}

TEST(JsonLines, SayThatALineOfASessionIsDone) {
  ScriptOccurrence done{Kind::Done};
  EXPECT_EQ(Line(done), "{\"kind\":\"done\",\"good\":false}");
  done.good = true;
  EXPECT_EQ(Line(done), "{\"kind\":\"done\",\"good\":true}");
}

TEST(JsonLines, DescribeDriversThatComeAndGo) {
  EXPECT_EQ(Line(Host(Occurrence::Kind::Load, "/a.so")),
            std::string("{\"kind\":\"load\",") + kKitchen + ",\"module\":\"/a.so\"}");
  EXPECT_EQ(Line(Host(Occurrence::Kind::Unload, "/a.so")),
            std::string("{\"kind\":\"unload\",") + kKitchen + ",\"module\":\"/a.so\"}");
}

TEST(JsonLines, DescribeCommandsAndEvents) {
  Occurrence command = Host(Occurrence::Kind::Command, "");
  command.name = "SetX";
  command.parameters = {{"id", "12"}, {"xml", "<a/>"}};
  const std::string expected = std::string("{\"kind\":\"command\",") + kKitchen +
                               ",\"name\":\"SetX\",\"parameters\":{\"id\":\"12\",\"xml\":\"<a/>\"}}";
  EXPECT_EQ(Line(command), expected);
  ScriptOccurrence sent = Script(Kind::Command, "");
  sent.name = command.name;
  sent.parameters = command.parameters;
  sent.written = {{"id", "12"}, {"xml", "@a.xml"}};
  EXPECT_EQ(Line(sent), expected);
  Occurrence event{Occurrence::Kind::Event, 0, "", "OnX", ""};
  EXPECT_EQ(Line(event), "{\"kind\":\"event\",\"name\":\"OnX\",\"parameters\":{}}");
  event.parameters = {{"id", "1"}, {"room", "2"}, {"id", "3"}, {"id", "4"}};
  EXPECT_EQ(Line(event), "{\"kind\":\"event\",\"name\":\"OnX\",\"parameters\":{\"id\":[\"1\",\"3\",\"4\"],\"room\":\"2\"}}");
}

TEST(JsonLines, HoldXmlAsText) {
  const std::string xml = ",\"xml\":\"<a b=\\\"c\\\">d\\n</a>\"}";
  for (const auto& [kind, word] :
       {std::pair{Occurrence::Kind::Reply, "reply"}, std::pair{Occurrence::Kind::Notification, "notification"}}) {
    EXPECT_EQ(Line(Host(kind, "<a b=\"c\">d\n</a>")), std::string("{\"kind\":\"") + word + "\"," + kKitchen + xml);
  }
  EXPECT_EQ(Line(Script(Kind::State, "<a b=\"c\">d\n</a>")), std::string("{\"kind\":\"state\",") + kKitchen + xml);
}

TEST(JsonLines, HoldWhatADeviceAnswersAsValues) {
  ScriptOccurrence settings = Script(Kind::Settings, "");
  settings.settings.settings = {{"enabled", "true"}, {"sysContact", "", true}};
  settings.settings.trapTargets = {{"10.0.0.5", "*****", "162"}};
  EXPECT_EQ(Line(settings), std::string("{\"kind\":\"settings\",") + kKitchen +
                                ",\"settings\":[{\"name\":\"enabled\",\"value\":\"true\",\"erased\":false},"
                                "{\"name\":\"sysContact\",\"value\":\"\",\"erased\":true}],"
                                "\"trapTargets\":[{\"target\":\"10.0.0.5\",\"community\":\"*****\",\"port\":\"162\"}]}");
  EXPECT_EQ(Line(Script(Kind::Settings, "")),
            std::string("{\"kind\":\"settings\",") + kKitchen + ",\"settings\":[],\"trapTargets\":[]}");
  ScriptOccurrence counts = Script(Kind::Counts, "");
  counts.counts = {{"CopyTo", 2}, {"CopyFrom", 0}};
  EXPECT_EQ(Line(counts), std::string("{\"kind\":\"counts\",") + kKitchen + ",\"counts\":{\"CopyTo\":2,\"CopyFrom\":0}}");
  ScriptOccurrence daemon = Script(Kind::Daemon, "");
  daemon.daemon = {true, 4711, "udp:127.0.0.1:40161", true, false};
  EXPECT_EQ(Line(daemon),
            std::string("{\"kind\":\"daemon\",") + kKitchen +
                ",\"running\":true,\"pid\":4711,\"address\":\"udp:127.0.0.1:40161\",\"online\":true,\"pending\":false}");
  daemon.daemon = {false, 0, "udp:127.0.0.1:40161", false, true};
  EXPECT_EQ(Line(daemon), std::string("{\"kind\":\"daemon\",") + kKitchen +
                              ",\"running\":false,\"address\":\"udp:127.0.0.1:40161\",\"online\":false,\"pending\":true}");
}

TEST(JsonLines, DescribeWhatDriversLog) {
  Occurrence log = Host(Occurrence::Kind::Log, "a\tb");
  log.level = 3;
  EXPECT_EQ(Line(log), std::string("{\"kind\":\"log\",") + kKitchen + ",\"text\":\"a\\tb\",\"level\":3}");
}

TEST(JsonLines, DescribeBadManners) {
  Occurrence manners{Occurrence::Kind::Manners, 0, "", "", "too early"};
  manners.candidates = {"kitchen", "cellar"};
  manners.call = "stop";
  EXPECT_EQ(Line(manners),
            "{\"kind\":\"manners\",\"call\":\"stop\",\"text\":\"too early\",\"candidates\":[\"kitchen\",\"cellar\"]}");
}

TEST(JsonLines, DescribeAStatus) {
  Occurrence status{Occurrence::Kind::Status, 12, "kitchen", "CopyTo", "CopyTo returned 5"};
  status.call = "stop";
  EXPECT_EQ(Line(status), std::string("{\"kind\":\"status\",") + kKitchen +
                              ",\"call\":\"stop\",\"text\":\"CopyTo returned 5\",\"name\":\"CopyTo\"}");
}

TEST(JsonLines, DescribeWhatFails) {
  const std::string expected = std::string("{\"kind\":\"error\",") + kKitchen + ",\"text\":\"it broke\"}";
  EXPECT_EQ(Line(Host(Occurrence::Kind::Failure, "it broke")), expected);
  EXPECT_EQ(Line(Host(Occurrence::Kind::StateProblem, "it broke")), expected);
  EXPECT_EQ(Line(Script(Kind::Error, "it broke")), expected);
  ScriptOccurrence error{Kind::Error};
  error.text = "it broke";
  error.call = "command \"X\"";
  EXPECT_EQ(Line(error), "{\"kind\":\"error\",\"call\":\"command \\\"X\\\"\",\"text\":\"it broke\"}");
  ScriptOccurrence unmet{Kind::Expect};
  unmet.text = "not as expected";
  unmet.details = {"expected: a", "found:    b"};
  EXPECT_EQ(Line(unmet), "{\"kind\":\"expect\",\"text\":\"not as expected\",\"details\":[\"expected: a\",\"found:    b\"]}");
}

TEST(JsonLines, HoldWholeTexts) {
  EXPECT_EQ(Line(Script(Kind::File, "a\nb")), std::string("{\"kind\":\"file\",") + kKitchen + ",\"text\":\"a\\nb\"}");
  for (const auto& [kind, word] :
       {std::pair{Kind::Run, "run"}, std::pair{Kind::Output, "output"}, std::pair{Kind::Print, "print"}}) {
    EXPECT_EQ(Line(ScriptOccurrence{kind, 0, "", "a\nb"}), std::string("{\"kind\":\"") + word + "\",\"text\":\"a\\nb\"}");
  }
}

TEST(JsonLines, DescribeVariables) {
  ScriptOccurrence flag{Kind::Flag};
  flag.variables = {{5, 7, "", false, false, true}};
  EXPECT_EQ(Line(flag), "{\"kind\":\"flag\",\"deviceId\":5,\"variableId\":7,\"trapEnabled\":true}");
  ScriptOccurrence shown{Kind::Variables};
  EXPECT_EQ(Line(shown), "{\"kind\":\"variables\",\"variables\":[]}");
  shown.variables = {{5, 4294967295UL, "lamp", true, true, false}};
  EXPECT_EQ(
      Line(shown),
      "{\"kind\":\"variables\",\"variables\":[{\"deviceId\":5,\"variableId\":4294967295,\"name\":\"lamp\",\"user\":true,"
      "\"hidden\":true,\"trapEnabled\":false}]}");
}

TEST(JsonLines, AreUtf8WhateverTheTextIs) {
  EXPECT_EQ(Line(ScriptOccurrence{Kind::Print, 0, "", "a\xff\xc3\xa4" + std::string(1, '\0')}),
            "{\"kind\":\"print\",\"text\":\"a\xef\xbf\xbd\xc3\xa4\\u0000\"}");
}

TEST(JsonLines, TakeTimeThatGrowsWithTheNumberOfParameters) {
  const auto seconds = [](std::size_t count) {
    Occurrence event{Occurrence::Kind::Event, 0, "", "OnX", ""};
    for (std::size_t i = 0; i != count; ++i) {
      event.parameters.emplace_back("p" + std::to_string(i), "1");
    }
    const auto start = std::chrono::steady_clock::now();
    Line(event);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  const double few = seconds(5000);
  // Twenty times the parameters; time that grows with their square would be 400 times as long.
  EXPECT_LT(seconds(100000), 100 * few + 1);
}

TEST(AJsonWriter, HasFailedWhenItsOutputHas) {
  Output output(-1);
  JsonWriter writer(output);
  EXPECT_FALSE(writer.Failed());
  writer.Report(ScriptOccurrence{Kind::Restart}, {});
  EXPECT_TRUE(writer.Failed());
}

}  // namespace
}  // namespace devhost
