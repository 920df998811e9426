// Tests that time grows with the input, not with its square. The sizes are so large that the square would take seconds.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/robustness/Kitchen.h"
#include "tests/robustness/Measure.h"

namespace testsupport {
namespace {

using Words = std::vector<std::string>;

// A text of `head`, then `times` times `unit`, then `tail`.
struct Shape {
  const char* name;
  std::string head;
  std::string unit;
  std::string tail;
  std::size_t times;
};

void PrintTo(const Shape& shape, std::ostream* out) {
  *out << shape.name;
}

template <class Case>
std::string NameOf(const testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

double Growth(const Kitchen& kitchen, const std::string& file, const Shape& shape, const Words& words) {
  const std::string path = kitchen.Path(file);
  return GrowthOfTime([&](std::size_t times) { WriteRepeated(path, shape.head, shape.unit, times, shape.tail); },
                      shape.times, words, kitchen.Path());
}

class AnSnmpdConf : public testing::TestWithParam<Shape> {};

TEST_P(AnSnmpdConf, IsCheckedInTimeThatGrowsWithIt) {
  const Kitchen kitchen;
  EXPECT_LE(Growth(kitchen, "snmpd.conf", GetParam(), {"check", "snmpd.conf"}), kMostGrowth);
}

constexpr char kStart[] = "# Halvoren Section Start\n";

INSTANTIATE_TEST_SUITE_P(OfManyLines, AnSnmpdConf,
                         testing::Values(Shape{"Blank", "", "\n", "", 200000},
                                         Shape{"Communities", "", "rocommunity \"a\\\"b' c\" default -V x\n", "", 20000},
                                         Shape{"CommunitiesInASection", kStart, "rwcommunity two words\n", "", 20000},
                                         Shape{"Traps", "", "trap2sink 192.0.2.1 public 162\n", "", 20000},
                                         Shape{"Sections", "", "# Halvoren Section Start\n# Halvoren Section End\n", "",
                                               20000},
                                         Shape{"NulBytes", "", std::string("rocommunity \0a\n", 15), "", 20000}),
                         NameOf<Shape>);
INSTANTIATE_TEST_SUITE_P(OfOneLine, AnSnmpdConf,
                         testing::Values(Shape{"Letters", "", "x", "", 2000000},
                                         Shape{"Communities", kStart, "rocommunity ", "", 100000},
                                         Shape{"Quotes", std::string(kStart) + "trap2sink x ", "\"", "", 500000}),
                         NameOf<Shape>);

class SecretsInOneLine : public testing::TestWithParam<Shape> {};

TEST_P(SecretsInOneLine, AreMaskedInTimeThatGrowsWithIt) {
  const Kitchen kitchen;
  EXPECT_LE(
      Growth(kitchen, "kitchen/snmpd.conf", GetParam(), {"preview", "--project", "project.xml", "kitchen", "settings.xml"}),
      kMostGrowth);
}

INSTANTIATE_TEST_SUITE_P(Masking, SecretsInOneLine,
                         testing::Values(Shape{"AsReceiversTellThem", "", "v1, community X ", Kitchen::kSection, 100000},
                                         Shape{"AsParameters", "", "community=", Kitchen::kSection, 8000},
                                         Shape{"AsNamesOfSettings", "", "name=", Kitchen::kSection, 40000},
                                         Shape{"BehindOptions", "trapsess ", "-a x ", Kitchen::kSection, 100000},
                                         Shape{"BehindContexts", "", "com2sec -Cn ", Kitchen::kSection, 8000},
                                         Shape{"BehindOptionsOfSinks", "", "trapsink -name ", Kitchen::kSection, 8000},
                                         Shape{"OfUsers", "", "createUser ", Kitchen::kSection, 5000},
                                         Shape{"BehindEscapedBlanks", "", "createUser\\ ", Kitchen::kSection, 8000},
                                         Shape{"BehindQuotes", "", "authcommunity \"", Kitchen::kSection, 20000}),
                         NameOf<Shape>);

class SettingsXml : public testing::TestWithParam<Shape> {};

TEST_P(SettingsXml, IsJudgedInTimeThatGrowsWithIt) {
  const Kitchen kitchen;
  EXPECT_LE(Growth(kitchen, "settings.xml", GetParam(), {"advise", "settings.xml"}), kMostGrowth);
}

INSTANTIATE_TEST_SUITE_P(Xml, SettingsXml,
                         testing::Values(Shape{"OfTinyElements", "<a>", "<b/>", "</a>", 50000},
                                         Shape{"Nested", "", "<a>", "", 200000},
                                         Shape{"OfReferences", "<a>", "&lt;", "</a>", 500000},
                                         Shape{"OfOneReference", "<a>", "&", "</a>", 2000000},
                                         Shape{"OfComments", "<a>", "<!---->", "</a>", 200000},
                                         Shape{"OfOpenTags", "", "<", "", 1000000},
                                         Shape{"OfADocumentType", "<!DOCTYPE ", "<!ENTITY a \"b\">", "><a/>", 100000},
                                         Shape{"OfLineFeeds", std::string(Kitchen::kSettingsHead) + "<snmpSysNameSetting>",
                                               "\n", std::string("</snmpSysNameSetting>") + Kitchen::kSettingsTail, 100000}),
                         NameOf<Shape>);

TEST(SettingsXmlOfOneElement, IsJudgedInTimeThatGrowsWithItsAttributes) {
  const Kitchen kitchen;
  const auto write = [&](std::size_t times) {
    WriteNumbered(
        kitchen.Path("settings.xml"), "<a", [](std::size_t i) { return " a" + std::to_string(i) + "=\"\""; }, times, "/>");
  };
  EXPECT_LE(GrowthOfTime(write, 40000, {"advise", "settings.xml"}, kitchen.Path()), kMostGrowth);
}

// A session of a given size: a script and the files that it needs.
struct Session {
  const char* name;
  std::size_t size;
  std::function<void(const Kitchen& kitchen, std::size_t size)> write;
};

void PrintTo(const Session& session, std::ostream* out) {
  *out << session.name;
}

std::string Blanks(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i != count; ++i) {
    text += "a ";
  }
  return text;
}

void Script(const Kitchen& kitchen, const std::function<std::string(std::size_t)>& line, std::size_t times) {
  WriteNumbered(kitchen.Path("script"), "", line, times, "");
}

void BlankLines(const Kitchen& kitchen, std::size_t size) {
  Script(
      kitchen, [](std::size_t) { return "\n"; }, size);
}

void Variables(const Kitchen& kitchen, std::size_t size) {
  Script(
      kitchen, [](std::size_t i) { return "variable add 5 " + std::to_string(i) + " same trap\n"; }, size);
}

void Secrets(const Kitchen& kitchen, std::size_t size) {
  Script(
      kitchen, [](std::size_t i) { return "device kitchen set communityRead secret" + std::to_string(i) + "\n"; }, size);
}

// Each secret begins like the next one, and the text begins like all of them.
void SecretsInSecrets(const Kitchen& kitchen, std::size_t size) {
  WriteNumbered(
      kitchen.Path("script"), "",
      [](std::size_t i) { return "device kitchen set communityRead '" + Blanks(i % 500) + "b'\n"; }, size,
      "event OnVariableAdded x='" + Blanks(50 * size) + "'\n");
}

void QuotesInQuotes(const Kitchen& kitchen, std::size_t size) {
  WriteRepeated(kitchen.Path("script"), "device kitchen set communityRead '", "\"", size, "'\n");
}

void SecretsInOneLineOfXml(const Kitchen& kitchen, std::size_t size) {
  kitchen.Write("script", "command SetDeviceState xml=@traps.xml\n");
  WriteRepeated(kitchen.Path("traps.xml"), std::string(Kitchen::kSettingsHead) + "<snmpTrapTargets>",
                "<trapTarget><target>192.0.2.1</target><community>secret</community><port>162</port></trapTarget>", size,
                std::string("</snmpTrapTargets>") + Kitchen::kSettingsTail);
}

void SecretsInOneLineOfAFile(const Kitchen& kitchen, std::size_t size) {
  kitchen.Write("script", "device kitchen show file\n");
  WriteRepeated(kitchen.Conf(), "", "community=a ", size, "");
}

void VariablesOfAProject(const Kitchen& kitchen, std::size_t size) {
  kitchen.Write("script", "load-project\n");
  const auto variable = [](std::size_t i) { return "<variable device=\"5\" id=\"" + std::to_string(i) + "\" name=\"v\"/>"; };
  WriteNumbered(kitchen.Path("project.xml"), Kitchen::kProjectHead, variable, size, Kitchen::kProjectTail);
}

void Devices(const Kitchen& kitchen, std::size_t size) {
  Script(
      kitchen, [](std::size_t i) { return "device k" + std::to_string(i) + " set sysName a\n"; }, size);
  const auto device = [](std::size_t i) {
    return "<driver id=\"" + std::to_string(i + 100) + "\" name=\"k" + std::to_string(i) +
           "\" module=\"simulated_device.so\"><config folder=\"{project}/kitchen\"/></driver>";
  };
  WriteNumbered(kitchen.Path("project.xml"), Kitchen::kProjectHead, device, size, Kitchen::kProjectTail);
}

void References(const Kitchen& kitchen, std::size_t size) {
  kitchen.Write("script", "");
  WriteRepeated(
      kitchen.Path("project.xml"),
      std::string(Kitchen::kProjectHead) + "<driver id=\"13\" name=\"b\" module=\"simulated_device.so\"><config folder=\"",
      "{project}", size, std::string("\"/></driver>") + Kitchen::kProjectTail);
}

void EntriesOfAState(const Kitchen& kitchen, std::size_t size) {
  kitchen.Write("script", "load-project\n");
  kitchen.Write("states/lock", "");
  const auto entry = [](std::size_t i) { return "<variable deviceid=\"5\" variableid=\"" + std::to_string(i) + "\"/>\n"; };
  WriteNumbered(kitchen.Path("states/driver-1.xml"), "<SNMPState><variables>", entry, size, "</variables></SNMPState>");
}

void ALevelInALevelOfAState(const Kitchen& kitchen, std::size_t size) {
  kitchen.Write("script", "");
  kitchen.Write("states/lock", "");
  std::string end;
  for (std::size_t i = 0; i != size; ++i) {
    end += "</a>";
  }
  WriteRepeated(kitchen.Path("states/driver-1.xml"), "", "<a>", size, end);
}

class ASessionOfMany : public testing::TestWithParam<Session> {};

TEST_P(ASessionOfMany, TakesTimeThatGrowsWithThem) {
  const Kitchen kitchen;
  const auto write = [&](std::size_t size) {
    kitchen.WriteConf("#\n");
    std::filesystem::remove_all(kitchen.Path("states"));
    GetParam().write(kitchen, size);
  };
  const Words words = {"run", "--project", "project.xml", "--state", "states", "script"};
  EXPECT_LE(GrowthOfTime(write, GetParam().size, words, kitchen.Path()), kMostGrowth);
}

INSTANTIATE_TEST_SUITE_P(Run, ASessionOfMany,
                         testing::Values(Session{"BlankLines", 1000000, BlankLines}, Session{"Variables", 2000, Variables},
                                         Session{"Secrets", 1000, Secrets},
                                         Session{"SecretsInSecrets", 500, SecretsInSecrets},
                                         Session{"QuotesInQuotes", 20000, QuotesInQuotes},
                                         Session{"SecretsInOneLineOfXml", 5000, SecretsInOneLineOfXml},
                                         Session{"SecretsInOneLineOfAFile", 20000, SecretsInOneLineOfAFile},
                                         Session{"VariablesOfAProject", 10000, VariablesOfAProject},
                                         Session{"Devices", 1000, Devices}, Session{"References", 100000, References},
                                         Session{"EntriesOfAState", 10000, EntriesOfAState},
                                         Session{"ALevelInALevelOfAState", 20000, ALevelInALevelOfAState}),
                         NameOf<Session>);

}  // namespace
}  // namespace testsupport
