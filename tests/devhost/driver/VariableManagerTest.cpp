#include "devhost/driver/VariableManager.h"

#include <gmock/gmock.h>

#include <string>

namespace devhost {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

VariableEntry Entry(unsigned long device, unsigned long id, const std::string& name, bool user = false) {
  return {device, id, name, user, false, false};
}

std::string List(VariableManager& manager, bool user) {
  std::string xml = "old";
  manager.ListVariables(xml, user);
  return xml;
}

TEST(AVariable, IsFoundByItsPairOfIds) {
  VariableManager manager;
  ASSERT_TRUE(manager.Add({5, 7, "lamp", false, false, true}));
  ASSERT_TRUE(manager.Add(Entry(7, 5, "scene", true)));
  IVariable* const lamp = manager.FindVariable(5, 7);
  ASSERT_NE(lamp, nullptr);
  EXPECT_TRUE(lamp->GetIds() == VariableManager::Key(5, 7));
  EXPECT_STREQ(lamp->GetName(), "lamp");
  EXPECT_TRUE(lamp->TrapEnabled());
  ASSERT_NE(manager.FindVariable(7, 5), nullptr);
  EXPECT_STREQ(manager.FindVariable(7, 5)->GetName(), "scene");
  EXPECT_EQ(manager.FindVariable(5, 5), nullptr);
}

TEST(AVariable, KeepsWhatIsWrittenThroughItsFlagAndTheFlagThatItBeganWith) {
  VariableManager manager;
  manager.Add(Entry(5, 7, "lamp"));
  manager.FindVariable(5, 7)->TrapEnabled() = true;
  EXPECT_TRUE(manager.Find(5, 7)->Entry().trapEnabled);
  EXPECT_FALSE(manager.Find(5, 7)->InitialFlag());
}

TEST(AVariable, IsNotReplacedByAnotherOneOfItsPair) {
  VariableManager manager;
  EXPECT_TRUE(manager.Add(Entry(5, 7, "lamp")));
  EXPECT_FALSE(manager.Add(Entry(5, 7, "other")));
  EXPECT_FALSE(manager.Add(Entry(5, 7, "other", true)));
  EXPECT_STREQ(manager.FindVariable(5, 7)->GetName(), "lamp");
}

TEST(AVariable, StaysWhereItIsWhileItIsTakenOut) {
  VariableManager manager;
  manager.Add(Entry(5, 7, "lamp"));
  IVariable* const lamp = manager.FindVariable(5, 7);
  const VariableManager::Taken taken = manager.Take(5, 7);
  EXPECT_EQ(manager.FindVariable(5, 7), nullptr);
  EXPECT_EQ(List(manager, false), "<variables></variables>");
  EXPECT_STREQ(lamp->GetName(), "lamp");
  EXPECT_TRUE(manager.Take(5, 7).empty());
}

TEST(ADevice, IsTakenOutWithItsOrdinaryVariablesOnly) {
  VariableManager manager;
  for (const VariableEntry& entry :
       {Entry(4, 9, "a"), Entry(5, 0, "b"), Entry(5, 1, "c", true), Entry(5, 4294967295UL, "d"), Entry(6, 0, "e")}) {
    ASSERT_TRUE(manager.Add(entry));
  }
  EXPECT_THAT(manager.TakeDevice(5), SizeIs(2));
  EXPECT_THAT(manager.TakeDevice(5), IsEmpty());
  EXPECT_EQ(manager.FindVariable(5, 0), nullptr);
  EXPECT_EQ(manager.FindVariable(5, 4294967295UL), nullptr);
  EXPECT_NE(manager.FindVariable(5, 1), nullptr);
  EXPECT_NE(manager.FindVariable(4, 9), nullptr);
  EXPECT_NE(manager.FindVariable(6, 0), nullptr);
}

TEST(TheList, HoldsTheVariablesOfOneKindByTheirIds) {
  VariableManager manager;
  manager.Add(Entry(2, 10, "c"));
  manager.Add(Entry(1, 20, "b"));
  manager.Add({1, 3, "a <&> \"b\"\n", false, true, true});
  manager.Add(Entry(1, 4, "u", true));
  EXPECT_EQ(List(manager, false),
            "<variables><variable deviceid=\"1\" variableid=\"3\" name=\"a &lt;&amp;&gt; &quot;b&quot;&#10;\" hidden=\"1\"/>"
            "<variable deviceid=\"1\" variableid=\"20\" name=\"b\" hidden=\"0\"/>"
            "<variable deviceid=\"2\" variableid=\"10\" name=\"c\" hidden=\"0\"/></variables>");
  EXPECT_EQ(List(manager, true),
            "<userVariables><userVariable deviceid=\"1\" variableid=\"4\" name=\"u\" hidden=\"0\"/></userVariables>");
}

}  // namespace
}  // namespace devhost
