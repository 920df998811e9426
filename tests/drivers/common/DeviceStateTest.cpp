#include "drivers/common/DeviceState.h"

#include <gtest/gtest.h>

#include <string>

#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "tests/drivers/support/FakeHost.h"

namespace {

using drivers::DeviceState;

const char kKind[] = "LocalSnmpd";

std::string AllBytes() {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    all.push_back(static_cast<char>(byte));
  }
  return all;
}

DeviceState FullState() {
  DeviceState state;
  state.settings.managed = true;
  state.settings.useRoomDevice = true;
  state.settings.communityRead.Set("pub lic%20");
  state.settings.communityWrite.Erase();
  state.settings.sysContact.Set(" \n" + AllBytes() + "\n");
  state.settings.trapTargets.Add(TrapTarget("10.0.0.5", "a \"b\"", "162"));
  state.settings.trapTargets.Add(TrapTarget("10.0.0.6", "", ""));
  state.online = false;
  state.known = "\n" + AllBytes() + " ";
  state.pending = drivers::PendingText{"", "base\n"};
  return state;
}

// The element of a new device, with `from` replaced by `to`.
std::string Changed(const std::string& from, const std::string& to) {
  std::string xml = "<LocalSnmpd version='1' online='true'>";
  for (const char* const name :
       {"managed", "configDirty", "enabled", "usePrimaryContact", "useProjectOwnerAddress", "useRoomDevice"}) {
    xml += "<setting name='" + std::string(name) + "' value='false'/>";
  }
  for (const char* const name : {"communityRead", "communityWrite", "sysContact", "sysLocation", "sysName", "trapTargets"}) {
    xml += "<setting name='" + std::string(name) + "' value='' erased='false'/>";
  }
  xml += "</LocalSnmpd>";
  const std::size_t at = xml.find(from);
  EXPECT_NE(std::string::npos, at) << from;
  return xml.replace(at, from.size(), to);
}

std::string WrongWith(const std::string& from, const std::string& to) {
  DeviceState state;
  return drivers::ReadDeviceState(kKind, *ToNode(Changed(from, to)), state);
}

TEST(ADeviceState, ComesBackByteForByte) {
  const DeviceState state = FullState();
  // By way of text, as a host keeps it.
  const auto node = ToNode(devhost::XmlText(*drivers::WriteDeviceState(kKind, state), devhost::XmlStyle::Indented));
  DeviceState read;
  ASSERT_EQ("", drivers::ReadDeviceState(kKind, *node, read));
  EXPECT_EQ(ToText(*drivers::WriteDeviceState(kKind, state)), ToText(*drivers::WriteDeviceState(kKind, read)));
  EXPECT_TRUE(read.settings.managed);
  EXPECT_FALSE(read.settings.enabled);
  EXPECT_TRUE(read.settings.useRoomDevice);
  EXPECT_EQ("pub lic%20", read.settings.communityRead.Get());
  EXPECT_FALSE(read.settings.communityRead.WasErased());
  EXPECT_TRUE(read.settings.communityWrite.WasErased());
  EXPECT_EQ(state.settings.sysContact.Get(), read.settings.sysContact.Get());
  ASSERT_EQ(2U, read.settings.trapTargets.Get().size());
  EXPECT_EQ("a \"b\"", read.settings.trapTargets.Get()[0].community);
  EXPECT_EQ("10.0.0.6", read.settings.trapTargets.Get()[1].target);
  EXPECT_FALSE(read.settings.trapTargets.WasErased());
  EXPECT_FALSE(read.online);
  EXPECT_EQ(state.known, read.known);
  ASSERT_TRUE(read.pending.has_value());
  EXPECT_EQ("", read.pending->text);
  EXPECT_EQ("base\n", read.pending->base);
}

TEST(ADeviceState, ShowsEachLineOfTheFileAsALine) {
  DeviceState state;
  state.known = "\n rocommunity\tpublic\n";
  const std::string xml = devhost::XmlText(*drivers::WriteDeviceState(kKind, state), devhost::XmlStyle::Indented);
  EXPECT_NE(std::string::npos, xml.find(">-\n\n rocommunity\tpublic\n\n-</known>")) << xml;
}

TEST(ADeviceState, HasTheMarkOfARestartOnlyWhileOneIsDue) {
  DeviceState state;
  EXPECT_EQ(std::string::npos, ToText(*drivers::WriteDeviceState(kKind, state)).find("restartDue"));
  state.isRestartDue = true;
  const auto node = drivers::WriteDeviceState(kKind, state);
  EXPECT_EQ("true", node->GetNamedString("restartDue"));
  DeviceState read;
  ASSERT_EQ("", drivers::ReadDeviceState(kKind, *node, read));
  EXPECT_TRUE(read.isRestartDue);
}

TEST(ADeviceState, OfANewDeviceComesBackToo) {
  DeviceState state;
  state.settings.trapTargets.Erase();
  DeviceState read;
  ASSERT_EQ("", drivers::ReadDeviceState(kKind, *drivers::WriteDeviceState(kKind, state), read));
  EXPECT_TRUE(read.online);
  EXPECT_FALSE(read.isRestartDue);
  EXPECT_FALSE(read.known.has_value());
  EXPECT_FALSE(read.pending.has_value());
  EXPECT_TRUE(read.settings.trapTargets.WasErased());
  EXPECT_FALSE(read.settings.sysName.WasErased());
}

TEST(ADeviceState, ThatIsDamagedSaysWhere) {
  EXPECT_EQ("", WrongWith("online='true'", "online='true'"));
  EXPECT_EQ("it is an element SNMPState of version \"\", not LocalSnmpd of version 1", [] {
    DeviceState state;
    return drivers::ReadDeviceState(kKind, *ToNode("<SNMPState/>"), state);
  }());
  EXPECT_EQ("it is an element LocalSnmpd of version \"2\", not LocalSnmpd of version 1",
            WrongWith("version='1'", "version='2'"));
  EXPECT_EQ("the attribute online of an element LocalSnmpd is damaged", WrongWith("online='true'", ""));
  EXPECT_EQ("the attribute restartDue of an element LocalSnmpd is damaged",
            WrongWith("online='true'", "online='true' restartDue='soon'"));
  EXPECT_EQ("the setting sysName is missing", WrongWith("<setting name='sysName' value='' erased='false'/>", ""));
  EXPECT_EQ("the setting managed stands twice", WrongWith("name='enabled'", "name='managed'"));
  EXPECT_EQ("the attribute value of an element setting is damaged", WrongWith("value=''", "value='%4'"));
  EXPECT_EQ("the attribute value of an element setting is damaged", WrongWith("value=''", "value='%zz'"));
  EXPECT_EQ("the attribute erased of an element setting is damaged", WrongWith("erased='false'", "erased='maybe'"));
  EXPECT_NE("", WrongWith("name='managed'", "name='hue'"));
  EXPECT_NE("", WrongWith("name='managed' value='false'", "name='managed' value=''"));
  EXPECT_EQ("the element hue is unknown", WrongWith("</L", "<hue/></L"));
  EXPECT_EQ("the element refused stands twice", WrongWith("</L", "<refused/><refused/></L"));
  EXPECT_EQ("a trap target is damaged", WrongWith("</L", "<trapTarget target='%'/></L"));
  EXPECT_EQ("the element known stands twice", WrongWith("</L", "<known>-\n\n-</known><known>-\n\n-</known></L"));
  EXPECT_EQ("the text of the element known is damaged", WrongWith("</L", "<known>-\n%\n-</known></L"));
  EXPECT_EQ("the text of the element known is damaged", WrongWith("</L", "<known>text</known></L"));
  EXPECT_EQ("the text of the element known is damaged", WrongWith("</L", "<known>-\n-</known></L"));
  const std::string pending = "a pending text stands without its base, or in a device that is on line";
  EXPECT_EQ(pending, WrongWith("</L", "<pending>-\n\n-</pending></L"));
  EXPECT_EQ(pending, WrongWith("</L", "<base>-\n\n-</base></L"));
  EXPECT_EQ(pending, WrongWith("</L", "<pending>-\n\n-</pending><base>-\n\n-</base></L"));
}

TEST(ADeviceState, LeavesNoNodeBehind) {
  EXPECT_EQ(0U, devhost::LiveXmlObjects());
}

}  // namespace
