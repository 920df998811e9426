#include "devhost/preview/ScratchDevice.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "devhost/preview/Preview.h"
#include "devhost/system/FileText.h"
#include "devhost/xml/XmlReader.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testsupport::ScratchFolder;

std::string FolderOfCopy(const ScratchDevice& scratch) {
  return *ReadXml(scratch.Driver().configXml).FindAttribute("folder");
}

class AScratchDevice : public testing::Test {
 protected:
  DriverEntry Device(const std::string& name) const {
    return {12, "kitchen", "m.so",
            "<config version='1' folder='" + folder.Path(name) + "'><setting name='a' value='b'/></config>", "p.xml:3"};
  }
  ScratchFolder folder;
};

TEST_F(AScratchDevice, IsTheDeviceWithItsFileInAPrivateFolder) {
  folder.Write("kitchen/snmpd.conf", "text\n");
  std::string copy;
  {
    const ScratchDevice scratch(Device("kitchen"));
    copy = FolderOfCopy(scratch);
    EXPECT_NE(copy, folder.Path("kitchen"));
    EXPECT_EQ(scratch.Driver().configXml,
              "<config version=\"1\" folder=\"" + copy + "\"><setting name=\"a\" value=\"b\"/></config>");
    EXPECT_EQ(scratch.Driver().id, 12U);
    EXPECT_EQ(scratch.RealPath(), folder.Path("kitchen/snmpd.conf"));
    EXPECT_EQ(scratch.RealText(), "text\n");
    EXPECT_EQ(scratch.Text(), "text\n");
    EXPECT_EQ(fs::status(copy).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(copy + "/snmpd.conf").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  }
  EXPECT_FALSE(fs::exists(copy));
}

TEST_F(AScratchDevice, OfADeviceWithoutAFileHasNone) {
  fs::create_directory(folder.Path("kitchen"));
  const ScratchDevice scratch(Device("kitchen"));
  EXPECT_TRUE(fs::is_empty(FolderOfCopy(scratch)));
  EXPECT_EQ(scratch.RealText(), "");
  EXPECT_EQ(scratch.Text(), "");
}

TEST_F(AScratchDevice, HasALinkWhereTheDeviceHasOne) {
  folder.Write("elsewhere.conf", "text\n");
  fs::create_directory(folder.Path("kitchen"));
  fs::create_symlink("../elsewhere.conf", folder.Path("kitchen/snmpd.conf"));
  const ScratchDevice scratch(Device("kitchen"));
  EXPECT_TRUE(fs::is_symlink(FolderOfCopy(scratch) + "/snmpd.conf"));
  EXPECT_EQ(scratch.Text(), "text\n");
}

TEST_F(AScratchDevice, NeedsAFolderThatIsNamedAndThere) {
  try {
    const ScratchDevice scratch({12, "kitchen", "m.so", "<config/>", "p.xml:3"});
    FAIL();
  } catch (const PreviewError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("p.xml:3: the <config> of kitchen names no folder"));
  }
  try {
    const ScratchDevice scratch(Device("nowhere"));
    FAIL();
  } catch (const PreviewError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("p.xml:3: there is no folder \"" + folder.Path("nowhere") + "\""));
  }
}

TEST_F(AScratchDevice, IsNotMadeOfAFileThatCannotBeRead) {
  fs::create_directories(folder.Path("kitchen/snmpd.conf"));
  EXPECT_THROW(const ScratchDevice scratch(Device("kitchen")), FileError);
}

}  // namespace
}  // namespace devhost
