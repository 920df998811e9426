// Compares the complete examples of the format pages with the plug-in's results.
#include <gmock/gmock.h>

#include <string>

#include "config/ManagedSection.h"
#include "config/SectionMerge.h"
#include "config/SectionReader.h"
#include "config/SectionWriter.h"
#include "devhost/xml/XmlReader.h"
#include "device/DeviceSettingsElement.h"
#include "device/SNMPDevice.h"
#include "drivers/common/SettingsHolder.h"
#include "host/H7XML.h"
#include "tests/docs/DocumentBlocks.h"

namespace testsupport {
namespace {

using testing::StrEq;

const char kSectionPage[] = "docs/managed-section.md";
const char kSettingsPage[] = "docs/device-settings.md";

// The time in the page's example: 21 November 2026, 14:05:09.
const char kExampleTime[] = "Saturday, November, 21 2026 at 14:05:09";
// The page shows the number that is reserved for documentation.
const char kDocumentedNumber[] = "1.3.6.1.4.1.32473\n";

// A device that holds settings and nothing else.
class SettingsOnly final : public drivers::SettingsHolder {
 public:
  void AgentAvailable() override {}
  int CopyFrom(const std::string&, std::string&) override { return 1; }
  int CopyTo(const std::string&, const std::string&) override { return 1; }
  int RebootController() override { return 1; }
  int StopMasterAgent() override { return 1; }
  int StartMasterAgent() override { return 1; }
  std::string GetSNMPVersion() override { return ""; }
  bool IsSNMPVersionValid(const std::string&) override { return false; }
};

// A new device 12. ApplyExample applies the settings element of a page to it.
class TheDevice : public testing::Test {
 protected:
  void ApplyExample(const char* page, const char* example) {
    const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument(DocumentExample(page, example));
    ASSERT_TRUE(document);
    device_settings::Apply(*document->GetRootElement(), device);
  }

  managed_section::Settings Settings() {
    return {device.GetCommunityReadSetting(), device.GetCommunityWriteSetting(), device.GetAgentXTimeout(),
            device.GetAgentXRetries(),        device.GetSysContactSetting(),     device.GetSysLocationSetting(),
            device.GetSysNameSetting(),       device.GetTrapTargetsSetting()};
  }

  // Returns the file of the page's example, with the enterprise number of this build.
  static std::string NewFile() {
    std::string file = DocumentExample(kSectionPage, "new");
    const std::size_t at = file.find(kDocumentedNumber);
    return at == std::string::npos
               ? file
               : file.replace(at, sizeof kDocumentedNumber - 1, "1.3.6.1.4.1." SNMP_ENTERPRISE_NUMBER "\n");
  }

  SettingsOnly settings;
  SNMPDevice device{12, &settings};
};

TEST_F(TheDevice, HasTheFileOfTheManagedSectionPage) {
  ApplyExample(kSectionPage, "settings");
  const std::string section = managed_section::Write(managed_section::FixedTexts(), Settings(), kExampleTime);
  EXPECT_THAT(managed_section::Merge(section, DocumentExample(kSectionPage, "old")), StrEq(NewFile()));
  EXPECT_THAT(managed_section::Merge(section, NewFile()), StrEq(NewFile()));
}

TEST_F(TheDevice, ReadsThatFileWithTheQuotesOfTheCommunity) {
  managed_section::Fill(NewFile(), device);
  EXPECT_THAT(device.GetCommunityReadSetting(), StrEq("\"read placeholder\""));
  EXPECT_THAT(device.GetCommunityWriteSetting(), StrEq("write-placeholder"));
  EXPECT_THAT(device.GetSysContactSetting(), StrEq("Ada, ground floor"));
  EXPECT_THAT(device.GetSysLocationSetting(), StrEq("Kitchen, left of the door"));
  EXPECT_THAT(device.GetSysNameSetting(), StrEq("kitchen"));
  ASSERT_EQ(device.GetTrapTargetsSetting().size(), 2U);
  EXPECT_THAT(device.GetTrapTargetsSetting()[0].community, StrEq("trap placeholder"));
  EXPECT_THAT(device.GetTrapTargetsSetting()[0].port, StrEq("162"));
}

TEST_F(TheDevice, HasTheElementOfTheSettingsPage) {
  ApplyExample(kSettingsPage, "element");
  const std::string page = DocumentExample(kSettingsPage, "element");
  EXPECT_THAT(devhost::XmlText(*device.ToXml(), devhost::XmlStyle::Indented) + "\n", StrEq(page));
}

}  // namespace
}  // namespace testsupport
