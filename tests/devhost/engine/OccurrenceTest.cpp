#include "devhost/engine/Occurrence.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(AnOccurrence, IsNamedAfterItsDriver) {
  EXPECT_EQ(DriverOf(Occurrence{Occurrence::Kind::Invalidate, 5, "kitchen", "", ""}), "kitchen");
}

TEST(AnOccurrence, OfOneOfSeveralDriversNamesAllOfThem) {
  Occurrence occurrence{Occurrence::Kind::Log, 0, "", "", "a line"};
  EXPECT_EQ(DriverOf(occurrence), "");
  occurrence.candidates = {"kitchen", "cellar"};
  EXPECT_EQ(DriverOf(occurrence), "kitchen|cellar");
}

TEST(ACommandOrEvent, ReadsAsAScriptWritesIt) {
  for (const Occurrence::Kind kind : {Occurrence::Kind::Command, Occurrence::Kind::Event}) {
    Occurrence occurrence{kind, 0, "", "OnItemRemoved", "not this"};
    occurrence.parameters = {{"iditem", "5"}, {"name", "a b"}};
    EXPECT_EQ(TextOf(occurrence), "OnItemRemoved iditem=5 name='a b'");
  }
}

TEST(BadManners, ReadWithTheCallThatWasUnderWay) {
  Occurrence occurrence{Occurrence::Kind::Manners, 5, "kitchen", "", "left a listener behind"};
  EXPECT_EQ(TextOf(occurrence), "left a listener behind");
  occurrence.call = "destruction";
  EXPECT_EQ(TextOf(occurrence), "left a listener behind, during destruction");
}

TEST(AFailure, SaysItselfWhatWasUnderWay) {
  Occurrence occurrence{Occurrence::Kind::Failure, 5, "kitchen", "", "its Initialize returned 5"};
  occurrence.call = "Initialize";
  EXPECT_EQ(TextOf(occurrence), "its Initialize returned 5");
}

}  // namespace
}  // namespace devhost
