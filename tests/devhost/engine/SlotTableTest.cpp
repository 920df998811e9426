#include "devhost/engine/SlotTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace devhost {
namespace {

class Speaker {
 public:
  virtual std::string Speak(std::string word) = 0;
  virtual int Count() = 0;

 protected:
  ~Speaker() = default;
};

class Other {
 public:
  virtual ~Other() = default;
  virtual int Number() { return 3; }
  long padding = 1;
};

class Both : public Other, public Speaker {
 public:
  std::string Speak(std::string word) override { return m_name + " says " + word; }
  int Count() override { return ++m_count; }
  virtual int Own() { return 7; }

 private:
  std::string m_name = "Both";
  int m_count = 0;
};

class SpeakerFirst : public Speaker {
 public:
  virtual ~SpeakerFirst() = default;
  std::string Speak(std::string word) override { return word; }
  int Count() override { return 1; }
  virtual int Own() { return 7; }
};

int s_calls = 0;

template <class Function>
Function* Behind(Speaker* speaker, std::size_t slot) {
  const void* const address = FunctionBehind(speaker, slot);
  Function* function = nullptr;
  std::memcpy(&function, &address, sizeof address);
  return function;
}

__attribute__((no_sanitize("undefined"))) std::string SpeakInFront(Speaker* speaker, std::string word) {
  ++s_calls;
  return Behind<std::string(Speaker*, std::string)>(speaker, 0)(speaker, std::move(word));
}

__attribute__((no_sanitize("undefined"))) int CountInFront(Speaker* speaker) {
  ++s_calls;
  return Behind<int(Speaker*)>(speaker, 1)(speaker);
}

bool PutInFrontOf(Speaker& speaker) {
  const void* const fronts[] = {reinterpret_cast<const void*>(&SpeakInFront), reinterpret_cast<const void*>(&CountInFront)};
  return PutInFront(&speaker, typeid(Speaker), fronts, 2);
}

TEST(AFunctionInFront, IsCalledAndReachesTheObject) {
  const std::unique_ptr<Both> both = std::make_unique<Both>();
  Speaker* volatile speaker = both.get();
  s_calls = 0;
  ASSERT_TRUE(PutInFrontOf(*both));
  EXPECT_EQ(speaker->Speak("hello, and so long that it is on the heap"),
            "Both says hello, and so long that it is on the heap");
  EXPECT_EQ(speaker->Count(), 1);
  EXPECT_EQ(speaker->Count(), 2);
  EXPECT_EQ(s_calls, 3);
}

TEST(AFunctionInFront, LeavesTheObjectWhatItIs) {
  const std::unique_ptr<Both> both = std::make_unique<Both>();
  Speaker* volatile speaker = both.get();
  Other* volatile other = both.get();
  ASSERT_TRUE(PutInFrontOf(*both));
  EXPECT_EQ(dynamic_cast<Both*>(speaker), both.get());
  EXPECT_EQ(dynamic_cast<Other*>(speaker), other);
  EXPECT_EQ(dynamic_cast<Speaker*>(other), speaker);
  const Speaker& seen = *speaker;
  EXPECT_EQ(typeid(seen), typeid(Both));
  EXPECT_EQ(other->Number(), 3);
  EXPECT_EQ(both->Own(), 7);
}

TEST(AFunctionInFront, LeavesTheOtherSlotsOfTheSameTable) {
  const std::unique_ptr<SpeakerFirst> first = std::make_unique<SpeakerFirst>();
  SpeakerFirst* volatile object = first.get();
  s_calls = 0;
  ASSERT_TRUE(PutInFrontOf(*first));
  EXPECT_EQ(object->Own(), 7);
  EXPECT_EQ(object->Count(), 1);
  EXPECT_EQ(s_calls, 1);
}

TEST(AFunctionInFront, IsNotPutThereTwice) {
  const std::unique_ptr<Both> both = std::make_unique<Both>();
  Speaker* volatile speaker = both.get();
  s_calls = 0;
  EXPECT_TRUE(PutInFrontOf(*both));
  EXPECT_TRUE(PutInFrontOf(*both));
  speaker->Count();
  EXPECT_EQ(s_calls, 1);
}

TEST(AFunctionInFront, IsOfOneObject) {
  const std::unique_ptr<Both> watched = std::make_unique<Both>();
  const std::unique_ptr<Both> other = std::make_unique<Both>();
  Speaker* volatile speaker = other.get();
  s_calls = 0;
  ASSERT_TRUE(PutInFrontOf(*watched));
  speaker->Count();
  EXPECT_EQ(s_calls, 0);
}

TEST(AnObjectThatIsNotTheInterface, KeepsItsTable) {
  Both both;
  const void* const front = reinterpret_cast<const void*>(&CountInFront);
  Other* volatile other = &both;
  EXPECT_FALSE(PutInFront(other, typeid(Speaker), &front, 1));
  EXPECT_EQ(other->Number(), 3);
}

class SpeakerInConstantData final : public Speaker {
 public:
  constexpr SpeakerInConstantData() = default;
  std::string Speak(std::string word) override { return word; }
  int Count() override { return 1; }
};
constexpr SpeakerInConstantData kSpeaker;

TEST(AnObjectInConstantData, IsLeftAlone) {
  Speaker& speaker = const_cast<SpeakerInConstantData&>(kSpeaker);
  EXPECT_FALSE(PutInFrontOf(speaker));
  EXPECT_EQ(speaker.Count(), 1);
}

TEST(AnObjectThatIsNotTheInterface, HasNothingInFront) {
  SpeakerFirst speaker;
  EXPECT_EQ(FunctionBehind(static_cast<Speaker*>(&speaker), 0), nullptr);
}

TEST(AnObjectWithoutATable, IsLeftAlone) {
  void* words[4] = {words, nullptr, nullptr, nullptr};
  const void* const front = reinterpret_cast<const void*>(&CountInFront);
  EXPECT_FALSE(PutInFront(words, typeid(Speaker), &front, 1));
  EXPECT_EQ(words[0], words);
}

}  // namespace
}  // namespace devhost
