#include "devhost/fleet/Inventory.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "devhost/project/Project.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::StartsWith;

class AnInventory : public testing::Test {
 protected:
  AnInventory() {
    folder.Write("house/project.xml",
                 "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' name='kitchen' "
                 "module='simulated_device.so'/><driver id='13' name='attic' module='simulated_device.so'/></project>");
  }

  std::vector<FleetDevice> Read(const std::string& text) const {
    return ReadInventory(folder.Write("fleet.xml", text), MODULE_FOLDER);
  }
  // Without the path of the file.
  std::string Refusal(const std::string& text) const {
    try {
      Read(text);
    } catch (const InventoryError& error) {
      const std::string what = error.what();
      EXPECT_THAT(what, StartsWith(folder.Path("fleet.xml") + ":"));
      return what.substr(folder.Path("fleet.xml").size() + 1);
    }
    return "";
  }

  const testsupport::ScratchFolder folder;
};

TEST_F(AnInventory, ListsDevicesWithPathsBesideIt) {
  const std::vector<FleetDevice> devices = Read(
      "<fleet>\n<project file='house/project.xml' state='house/state'>\n"
      "<device name='kitchen' settings='kitchen.xml' file='house/kitchen/snmpd.conf'/>\n</project>\n</fleet>");
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].project, folder.Path("house/project.xml"));
  EXPECT_EQ(devices[0].name, "kitchen");
  EXPECT_EQ(devices[0].id, 12U);
  EXPECT_EQ(devices[0].settings, folder.Path("kitchen.xml"));
  EXPECT_EQ(devices[0].file, folder.Path("house/kitchen/snmpd.conf"));
  EXPECT_EQ(devices[0].state, folder.Path("house/state"));
  EXPECT_EQ(devices[0].line, 3U);
}

TEST_F(AnInventory, StandsForAllDevicesOfAProjectThatListsNone) {
  const std::vector<FleetDevice> devices = Read("<fleet><project file='house/project.xml'/></fleet>");
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0].name, "kitchen");
  EXPECT_EQ(devices[1].name, "attic");
}

TEST_F(AnInventory, TakesTheNearestSettings) {
  const std::vector<FleetDevice> devices = Read(
      "<fleet settings='all.xml'><project file='house/project.xml' settings='/house.xml'><device name='12'/><device "
      "name='attic' settings='attic.xml'/></project></fleet>");
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0].settings, "/house.xml");
  EXPECT_EQ(devices[1].settings, folder.Path("attic.xml"));
  EXPECT_EQ(Read("<fleet settings='all.xml'><project file='house/project.xml'/></fleet>").at(1).settings,
            folder.Path("all.xml"));
}

TEST_F(AnInventory, RefusesUnknownWordsWithTheirPlace) {
  EXPECT_EQ(Refusal("<flet/>"), "1: the root element is <flet>; allowed: <fleet>");
  EXPECT_EQ(Refusal("<fleet>\n<prject/></fleet>"), "2: unknown element <prject> in <fleet>; allowed: <project>");
  EXPECT_EQ(Refusal("<fleet>\n\n<project file='house/project.xml' fle='x'/></fleet>"),
            "3: unknown attribute \"fle\" of <project>; allowed: file, settings, state");
  EXPECT_EQ(Refusal("<fleet><project file='house/project.xml'>\n<device name='attic'><x/></device></project></fleet>"),
            "2: unknown element <x> in <device>; allowed: none");
  EXPECT_EQ(Refusal("<fleet><project file='house/project.xml'>attic</project></fleet>"),
            "1: <project> holds text; allowed: elements only");
}

TEST_F(AnInventory, RefusesWhatIsMissing) {
  EXPECT_EQ(Refusal("<fleet/>"), "1: the fleet has no devices; allowed: one <project file=\"..\"/> or more");
  EXPECT_EQ(Refusal("<fleet><project/></fleet>"), "1: <project> has no file; write file=\"project.xml\"");
  EXPECT_EQ(Refusal("<fleet settings=''/>"), "1: settings of <fleet> is empty; leave it out or write a value");
  EXPECT_EQ(Refusal("<fleet><project file='house/project.xml'><device/></project></fleet>"),
            "1: <device> has no name; write name=\"kitchen\"");
  EXPECT_THAT(Refusal("<fleet>"), StartsWith("1:7: the inventory is not well-formed XML"));
}

TEST_F(AnInventory, RefusesADeviceThatItsProjectDoesNotHave) {
  EXPECT_EQ(Refusal("<fleet><project file='house/project.xml'>\n<device name='cellar'/></project></fleet>"),
            "2: " + folder.Path("house/project.xml") +
                ": there is no driver of that name or id; the drivers of this project are: agent (1), kitchen (12), attic "
                "(13)");
}

TEST_F(AnInventory, RefusesADeviceThatStandsInItTwiceByASymbolicLink) {
  std::filesystem::create_directory_symlink("house", folder.Path("link"));
  EXPECT_EQ(Refusal("<fleet><project file='house/project.xml'/>\n<project file='link/project.xml'/></fleet>"),
            "2: kitchen of " + folder.Path("link/project.xml") + " stands in line 1 already; allowed: each device once");
}

TEST_F(AnInventory, RefusesADeviceThatStandsInItTwice) {
  EXPECT_EQ(Refusal("<fleet><project file='house/project.xml'/>\n<project file='house/../house/project.xml'>\n"
                    "<device name='attic'/></project></fleet>"),
            "3: attic of " + folder.Path("house/project.xml") + " stands in line 1 already; allowed: each device once");
}

TEST_F(AnInventory, RefusesAProjectThatIsWrong) {
  EXPECT_THROW(Read("<fleet><project file='nowhere.xml'/></fleet>"), ProjectError);
}

}  // namespace
}  // namespace devhost
