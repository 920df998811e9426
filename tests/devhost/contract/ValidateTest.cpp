#include "devhost/contract/Validate.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Kind = Mismatch::Kind;

std::string Example(const std::string& name) {
  return testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/contract/examples/" + name);
}

auto Is(Kind kind, std::size_t line, const std::string& reason, const std::string& remedy) {
  return AllOf(Field(&Mismatch::kind, kind), Field(&Mismatch::line, line), Field(&Mismatch::reason, HasSubstr(reason)),
               Field(&Mismatch::remedy, HasSubstr(remedy)));
}

TEST(AMisspeltElement, IsNamedWithTheOneThatWasMeantAndWithWhatBecomesOfTheDevice) {
  EXPECT_THAT(
      ValidateDocument(Example("settings-misspelt-invalid.xml"), false),
      ElementsAre(Is(Kind::MissingElement, 1, "no <snmpEnabledSetting>: SNMP is switched off", "add <snmpEnabledSetting>"),
                  Is(Kind::UnknownElement, 4, "<snmpEnabledSeting>", "write snmpEnabledSetting")));
}

TEST(AnUnknownElement, IsNamedWithThoseThatAreAllowed) {
  EXPECT_THAT(
      ValidateDocument("<DeviceAdded>\n<colour/><id>1</id></DeviceAdded>", false),
      ElementsAre(Is(Kind::UnknownElement, 2, "<DeviceAdded> has a child that is not allowed", "remove it; allowed: id")));
}

TEST(AnElementThatStandsTwice, IsFound) {
  EXPECT_THAT(
      ValidateDocument(Example("settings-twice-invalid.xml"), false),
      ElementsAre(Is(Kind::ElementTwice, 25, "<snmpSysNameSetting> stands in <managedDevice> more than once", "remove")));
}

TEST(AWrongValue, IsNotQuoted) {
  EXPECT_THAT(ValidateDocument(Example("settings-capitals-invalid.xml"), false),
              ElementsAre(AllOf(Is(Kind::WrongValue, 4, "<snmpEnabledSetting> has a value", "allowed: true or false"),
                                Field(&Mismatch::reason, Not(HasSubstr("TRUE"))))));
}

TEST(ARequest, MayHaveAnyOrderAndAReplyOnlyOne) {
  const std::string moved = Example("list-order-invalid.xml");
  const std::size_t begin = moved.find("<managedDevice>");
  const std::string settings = moved.substr(begin, moved.find("</managedDevices>") - begin);
  EXPECT_THAT(ValidateDocument(settings, false), IsEmpty());
  EXPECT_THAT(ValidateDocument(settings, true),
              testing::Contains(Is(Kind::WrongOrder, 3, "stands behind <deviceId>", "keep this order: snmpIs")));
}

TEST(AReply, TakesTextsThatARequestMayNotHave) {
  const std::string settings = Example("settings-line-feed-invalid.xml");
  EXPECT_THAT(ValidateDocument(settings, false),
              ElementsAre(Is(Kind::WrongValue, 7, "<snmpSysContactSetting>", "one line")));
  EXPECT_THAT(ValidateDocument(settings, true), IsEmpty());
}

TEST(Attributes, AreFoundWhenTheyAreUnknownMissingOrWrong) {
  EXPECT_THAT(
      ValidateDocument("<SNMPState versoin='1'><variables><variable deviceid='5' variableid='x' name='' "
                       "snmpTrapEnabled='true'/></variables></SNMPState>",
                       false),
      ElementsAre(
          Is(Kind::UnknownAttribute, 1, "the attribute \"versoin\" of <SNMPState> is not known", "write version"),
          Is(Kind::MissingAttribute, 1, "<SNMPState> has no attribute \"version\"", "write version=\"..\": any text"),
          Is(Kind::WrongValue, 1, "the attribute \"variableid\" of <variable>", "allowed: a number from 0")));
}

TEST(Text, IsFoundWhereElementsAreExpected) {
  EXPECT_THAT(ValidateDocument("<DeviceAdded>s3cret<id>1</id></DeviceAdded>", false),
              ElementsAre(AllOf(Is(Kind::MisplacedText, 1, "<DeviceAdded> holds text", "remove"),
                                Field(&Mismatch::reason, Not(HasSubstr("s3cret"))))));
  EXPECT_THAT(ValidateDocument("<Fail>no</Fail>", false),
              ElementsAre(Is(Kind::MisplacedText, 1, "<Fail> is not empty", "write <Fail/>")));
}

TEST(AnElementInAText, IsNotAllowed) {
  EXPECT_THAT(ValidateDocument("<DeviceAdded><id>1<b/></id></DeviceAdded>", false),
              ElementsAre(Is(Kind::UnknownElement, 1, "<id> has a child that is not allowed", "remove it; allowed: none")));
}

TEST(AnUnknownName, IsNotRepeatedBecauseItMayBeAPartOfAValue) {
  for (const char* const text :
       {"<managedDevice><snmpCommunityReadSetting>pa<ssw0rd9/>x</snmpCommunityReadSetting></managedDevice>",
        "<managedDevice ssw0rd9='1'/>", "<ssw0rd9/>"}) {
    const std::vector<Mismatch> found = ValidateDocument(text, false);
    EXPECT_FALSE(found.empty()) << text;
    for (const Mismatch& mismatch : found) {
      EXPECT_THAT(mismatch.reason + mismatch.remedy + mismatch.element, Not(HasSubstr("ssw0rd9"))) << text;
    }
  }
}

TEST(WhatHasToBeUnique, IsFoundWithTheFirstOne) {
  EXPECT_THAT(ValidateDocument(Example("project-same-id-invalid.xml"), false),
              ElementsAre(Is(Kind::NotUnique, 3, "<driver> has the same id as the element in line 2", "")));
  EXPECT_THAT(ValidateDocument(Example("project-same-variable-invalid.xml"), false),
              ElementsAre(Is(Kind::NotUnique, 9, "<userVariable> has the same device and id as the element in line 8", "")));
}

TEST(TheConfigOfADriver, MayHoldAnything) {
  EXPECT_THAT(
      ValidateDocument(
          "<project><driver id='1' name='a' module='m'><config a='b'>text<project/></config></driver></project>", false),
      IsEmpty());
}

TEST(ADocumentThatIsNotXml, IsAMismatch) {
  EXPECT_THAT(ValidateDocument("<a>\n<b>\n</a>", false),
              ElementsAre(Is(Kind::NotXml, 3, "column 3: expected the end tag of the element in line 2", "")));
  EXPECT_THAT(ValidateDocument("", false), ElementsAre(Is(Kind::NotXml, 1, "column 1: no root element", "")));
}

TEST(MarkupThatOthersRefuse, IsAMismatch) {
  EXPECT_THAT(ValidateDocument("<!DOCTYPE Fail><Fail/>", false),
              ElementsAre(Is(Kind::NotXml, 1, "a document type can change what the document says; remove it", "correct")));
}

TEST(AnUnknownRoot, IsAMismatchThatNamesTheKnownOnes) {
  EXPECT_THAT(ValidateDocument("<manageddevice/>", false),
              ElementsAre(Is(Kind::UnknownRoot, 1, "no document has this root element",
                             "allowed: managedDevice, managedDevices, deviceId, ")));
}

TEST(Mismatches, AreBounded) {
  std::string list = "<managedDevices>";
  for (int i = 0; i != 5000; ++i) {
    list += "<x/>";
  }
  EXPECT_EQ(ValidateDocument(list + "</managedDevices>", false).size(), kMostMismatches);
}

TEST(EachKindOfMismatch, HasANameOfItsOwn) {
  std::set<std::string> names;
  for (int kind = static_cast<int>(Kind::NotXml); kind <= static_cast<int>(Kind::NotUnique); ++kind) {
    names.insert(NameOf(static_cast<Kind>(kind)));
  }
  EXPECT_EQ(names.size(), 11U);
  EXPECT_EQ(names.count(""), 0U);
}

}  // namespace
}  // namespace devhost
