#include "devhost/project/Project.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

// A project file in a folder of its own, with two modules to name.
class AProject : public testing::Test {
 protected:
  AProject() {
    m_folder.Write("lib/agent.so", "");
    m_folder.Write("own/kitchen.so", "");
  }

  Project Read(const std::string& text) { return ReadProject(m_folder.Write("project.xml", text), m_folder.Path("lib")); }

  // The message about a wrong project, without the folder in front of the file's name.
  std::string ErrorOf(const std::string& text) {
    try {
      Read(text);
    } catch (const ProjectError& error) {
      const std::string message = error.what();
      EXPECT_EQ(message.find('\n'), std::string::npos);
      return message.compare(0, m_folder.Path().size(), m_folder.Path()) == 0 ? message.substr(m_folder.Path().size() + 1)
                                                                              : message;
    }
    return "";
  }

  // The message about a project with this line among good ones.
  std::string ErrorOfLine(const std::string& line) {
    return ErrorOf("<project>\n<driver id=\"1\" name=\"agent\" module=\"agent.so\"/>\n" + line + "\n</project>\n");
  }

  testsupport::ScratchFolder m_folder;
};

TEST_F(AProject, GivesItsDriversInTheOrderOfTheFile) {
  const Project project = Read(
      "<?xml version=\"1.0\"?>\n<project><!-- x -->\n"
      "  <driver id=\"4294967295\" name=\"a.b-c_1\" module=\"agent.so\"/>\n"
      "  <driver id=\"0\" name=\"kitchen\" module=\"own/kitchen.so\"><config a=\"b\">text</config></driver>\n"
      "</project>");
  ASSERT_THAT(project.drivers, SizeIs(2));
  EXPECT_EQ(project.drivers[0].id, 4294967295ul);
  EXPECT_EQ(project.drivers[0].name, "a.b-c_1");
  EXPECT_EQ(project.drivers[0].module, m_folder.Path("lib/agent.so"));
  EXPECT_EQ(project.drivers[0].configXml, "<config/>");
  EXPECT_EQ(project.drivers[1].id, 0ul);
  EXPECT_EQ(project.drivers[1].module, m_folder.Path("own/kitchen.so"));
  EXPECT_EQ(project.drivers[1].configXml, "<config a=\"b\">text</config>");
}

TEST_F(AProject, ReplacesItsFolderInTextsAndAttributesOfAConfiguration) {
  const Project project = Read(
      "<project><driver id=\"1\" name=\"a\" module=\"agent.so\"><config folder=\"{project}/x\">"
      "<b c=\"{project}{project}\">in {project}, {project}!</b></config></driver></project>");
  const std::string& folder = m_folder.Path();
  EXPECT_EQ(project.drivers.at(0).configXml, "<config folder=\"" + folder + "/x\"><b c=\"" + folder + folder + "\">in " +
                                                 folder + ", " + folder + "!</b></config>");
}

TEST_F(AProject, MayLieInAFolderWithCharactersThatXmlEscapes) {
  m_folder.Write(
      "a & <b>/project.xml",
      "<project><driver id=\"1\" name=\"a\" module=\"agent.so\"><config folder=\"{project}\"/></driver></project>");
  const Project project = ReadProject(m_folder.Path("a & <b>/project.xml"), m_folder.Path("lib"));
  EXPECT_EQ(project.drivers.at(0).configXml, "<config folder=\"" + m_folder.Path() + "/a &amp; &lt;b&gt;\"/>");
}

TEST_F(AProject, GivesAbsolutePathsWhenItIsNamedByARelativeOne) {
  Read("<project><driver id=\"1\" name=\"a\" module=\"./own/kitchen.so\"><config f=\"{project}\"/></driver></project>");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(m_folder.Path());
  const Project project = ReadProject("project.xml", "lib");
  std::filesystem::current_path(before);
  EXPECT_EQ(project.drivers.at(0).module, m_folder.Path("own/kitchen.so"));
  EXPECT_EQ(project.drivers.at(0).configXml, "<config f=\"" + m_folder.Path() + "\"/>");
}

TEST_F(AProject, ThatIsMissingIsNamed) {
  try {
    ReadProject(m_folder.Path("none.xml"), "lib");
    FAIL() << "no exception";
  } catch (const ProjectError& error) {
    EXPECT_EQ(error.what(), "cannot read \"" + m_folder.Path("none.xml") + "\": No such file or directory");
  }
}

TEST_F(AProject, ThatIsNoXmlIsRefusedWithItsPlace) {
  EXPECT_THAT(ErrorOf("<project>\n<driver\n</project>"),
              testing::MatchesRegex("project.xml:[23]:[0-9]+: the project is not well-formed XML: .+"));
  EXPECT_THAT(ErrorOf(""), HasSubstr("the project is not well-formed XML"));
}

TEST_F(AProject, WithAnotherRootIsRefused) {
  EXPECT_EQ(ErrorOf("<projekt/>"), "project.xml:1: the root element is <projekt>; allowed: <project>");
  EXPECT_EQ(ErrorOf("<project a=\"1\"/>"), "project.xml:1: unknown attribute \"a\" of <project>; allowed: none");
}

TEST_F(AProject, WithoutDriversIsRefused) {
  EXPECT_THAT(ErrorOf("<project/>"), HasSubstr("the project has no drivers"));
}

struct Wrong {
  const char* line;
  const char* message;
};

class AWrongDriver : public AProject, public testing::WithParamInterface<Wrong> {};

TEST_P(AWrongDriver, IsRefusedWithItsLine) {
  EXPECT_THAT(ErrorOfLine(GetParam().line),
              testing::AllOf(testing::StartsWith("project.xml:3: "), HasSubstr(GetParam().message)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, AWrongDriver,
    testing::Values(
        Wrong{"<device/>", "unknown element <device> in <project>; allowed: <driver>, <variable>, <userVariable>"},
        Wrong{"<driver id='2' name='b' module='agent.so' x='y'/>",
              "unknown attribute \"x\" of <driver>; allowed: id, name, module"},
        Wrong{"<driver name='b' module='agent.so'/>", "<driver> has no id; write id=\"12\""},
        Wrong{"<driver id='2' module='agent.so'/>", "<driver> has no name; write name=\"kitchen\""},
        Wrong{"<driver id='2' name='b'/>", "<driver> has no module; write module=\"snmp_configuration_agent.so\""},
        Wrong{"<driver id='' name='b' module='agent.so'/>", "<driver> has no id"},
        Wrong{"<driver id='4294967296' name='b' module='agent.so'/>",
              "the id is \"4294967296\"; allowed: a whole number from 0 to 4294967295"},
        Wrong{"<driver id='-1' name='b' module='agent.so'/>", "the id is \"-1\""},
        Wrong{"<driver id='0x2' name='b' module='agent.so'/>", "the id is \"0x2\""},
        Wrong{"<driver id='1' name='b' module='agent.so'/>", "the id 1 is taken by the driver in line 2"},
        Wrong{"<driver id='01' name='b' module='agent.so'/>", "is taken by the driver in line 2"},
        Wrong{"<driver id='2' name='agent' module='agent.so'/>", "the name \"agent\" is taken by the driver in line 2"},
        Wrong{"<driver id='2' name='12' module='agent.so'/>", "the name is \"12\"; allowed: letters, digits"},
        Wrong{"<driver id='2' name='a b' module='agent.so'/>", "the name is \"a b\"; allowed: letters, digits"},
        Wrong{"<driver id='2' name='b' module='none.so'/>", "/lib/none.so\": No such file or directory; allowed: "},
        Wrong{"<driver id='2' name='b' module='./agent.so'/>", "/agent.so\": No such file or directory"},
        Wrong{"<driver id='2' name='b' module='own/'/>", "own/\": Is a directory"},
        Wrong{"<driver id='2' name='b' module='/dev/null'/>", "/dev/null\": it is not a regular file"},
        Wrong{"<driver id='2' name='b' module='agent.so'>text</driver>", "<driver> holds text; allowed"},
        Wrong{"<driver id='2' name='b' module='agent.so'><x/></driver>",
              "unknown element <x> in <driver>; allowed: <config>"},
        Wrong{"<driver id='2' name='b' module='agent.so'><config/><config/></driver>", "a second <config> in <driver>"}));

TEST_F(AProject, WithTextBetweenItsDriversIsRefused) {
  EXPECT_EQ(ErrorOfLine("text"), "project.xml:1: <project> holds text; allowed: elements only");
}

TEST_F(AProject, GivesItsVariables) {
  const Project project = Read(
      "<project><variable device='5' id='7' name='lamp &amp; \"x\"' hidden='true' trapEnabled='false'/>"
      "<driver id='1' name='agent' module='agent.so'/>"
      "<userVariable trapEnabled='true' name='scene' id='4294967295' device='0'/></project>");
  ASSERT_THAT(project.variables, SizeIs(2));
  const VariableEntry& lamp = project.variables[0];
  EXPECT_EQ(lamp.deviceId, 5ul);
  EXPECT_EQ(lamp.variableId, 7ul);
  EXPECT_EQ(lamp.name, "lamp & \"x\"");
  EXPECT_TRUE(!lamp.user && lamp.hidden && !lamp.trapEnabled);
  const VariableEntry& scene = project.variables[1];
  EXPECT_EQ(scene.deviceId, 0ul);
  EXPECT_EQ(scene.variableId, 4294967295ul);
  EXPECT_TRUE(scene.user && !scene.hidden && scene.trapEnabled);
}

class AWrongVariable : public AProject, public testing::WithParamInterface<Wrong> {};

TEST_P(AWrongVariable, IsRefusedWithItsLine) {
  EXPECT_THAT(ErrorOf("<project>\n<variable device='5' id='7' name='lamp'/>\n" + std::string(GetParam().line) +
                      "\n<driver id='1' name='agent' module='agent.so'/></project>"),
              testing::AllOf(testing::StartsWith("project.xml:3: "), HasSubstr(GetParam().message)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, AWrongVariable,
    testing::Values(
        Wrong{"<variable id='1' name='a'/>", "<variable> has no device; write device=\"5\""},
        Wrong{"<variable device='1' name='a'/>", "<variable> has no id; write id=\"7\""},
        Wrong{"<userVariable device='1' id='1'/>", "<userVariable> has no name; write name=\"lamp\""},
        Wrong{"<variable device='1' id='1' name=''/>", "<variable> has no name"},
        Wrong{"<variable device='4294967296' id='1' name='a'/>",
              "the device is \"4294967296\"; allowed: a whole number from 0 to 4294967295"},
        Wrong{"<variable device='1' id='-1' name='a'/>", "the id is \"-1\"; allowed: a whole number"},
        Wrong{"<variable device='1' id='1 ' name='a'/>", "the id is \"1 \""},
        Wrong{"<variable device='1' id='1' name='a' hidden='1'/>", "hidden is \"1\"; allowed: true, false"},
        Wrong{"<variable device='1' id='1' name='a' trapEnabled='TRUE'/>", "trapEnabled is \"TRUE\"; allowed: true, false"},
        Wrong{"<variable device='1' id='1' name='a' trapEnabled=''/>", "trapEnabled is \"\"; allowed: true, false"},
        Wrong{"<variable device='1' id='1' name='a' flag='true'/>",
              "unknown attribute \"flag\" of <variable>; allowed: device, id, name, hidden, trapEnabled"},
        Wrong{"<variable device='1' id='1' name='a'>x</variable>", "<variable> holds text; allowed"},
        Wrong{"<variable device='1' id='1' name='a'><b/></variable>", "unknown element <b> in <variable>; allowed: none"},
        Wrong{"<variable device='5' id='7' name='a'/>", "device 5 has the variable in line 2 under the id 7; allowed: "},
        Wrong{"<userVariable device='05' id='7' name='a'/>", "device 5 has the variable in line 2 under the id 7"}));

TEST_F(AProject, MayHoldManyVariables) {
  std::string text = "<project><driver id='1' name='agent' module='agent.so'/>";
  for (int id = 0; id != 50000; ++id) {
    text += "<variable device='" + std::to_string(id / 100) + "' id='" + std::to_string(id % 100) + "' name='v'/>";
  }
  EXPECT_THAT(Read(text + "</project>").variables, SizeIs(50000));
}

TEST_F(AProject, MayHoldManyDrivers) {
  std::string text = "<project>";
  for (int id = 0; id != 20000; ++id) {
    text += "<driver id=\"" + std::to_string(id) + "\" name=\"d" + std::to_string(id) + "\" module=\"agent.so\"/>";
  }
  EXPECT_THAT(Read(text + "</project>").drivers, SizeIs(20000));
}

TEST(NoProject, IsTheAgentAlone) {
  const testsupport::ScratchFolder folder;
  folder.Write("snmp_configuration_agent.so", "");
  const Project project = AgentAlone(folder.Path());
  ASSERT_THAT(project.drivers, SizeIs(1));
  EXPECT_EQ(project.drivers[0].id, 1ul);
  EXPECT_EQ(project.drivers[0].name, "agent");
  EXPECT_EQ(project.drivers[0].module, folder.Path("snmp_configuration_agent.so"));
  EXPECT_EQ(project.drivers[0].configXml, "<config/>");
}

TEST(NoProject, NeedsTheAgentsModule) {
  const testsupport::ScratchFolder folder;
  try {
    AgentAlone(folder.Path());
    FAIL() << "no exception";
  } catch (const ProjectError& error) {
    EXPECT_THAT(error.what(), HasSubstr("snmp_configuration_agent.so\": No such file or directory; name the folder of the "
                                        "modules with --module-dir, or a project with --project"));
  }
}

}  // namespace
}  // namespace devhost
