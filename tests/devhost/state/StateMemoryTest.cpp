#include <gmock/gmock.h>

#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {
namespace {

TEST(AStateInMemory, IsKeptForItsDriverUntilItIsReplaced) {
  StateMemory states;
  states.Save(1, "<A/>");
  states.Save(2, "<B/>");
  states.Save(1, "<C/>");
  EXPECT_EQ(XmlText(*states.Load(1), XmlStyle::Compact), "<C/>");
  EXPECT_EQ(XmlText(*states.Load(2), XmlStyle::Compact), "<B/>");
  EXPECT_FALSE(states.Load(3));
}

TEST(AStateInMemory, IsAnotherNodeEachTimeItIsLoaded) {
  StateMemory states;
  states.Save(1, "<A/>");
  states.Load(1)->SetValue("changed");
  EXPECT_EQ(XmlText(*states.Load(1), XmlStyle::Compact), "<A/>");
}

TEST(AStateInMemory, IsForgottenWhenNothingIsKept) {
  StateMemory states;
  states.Save(1, "<A/>");
  states.Save(1, "");
  EXPECT_FALSE(states.Load(1));
}

}  // namespace
}  // namespace devhost
