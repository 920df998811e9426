#include "devhost/driver/CommandTable.h"

#include <gmock/gmock.h>

#include "devhost/driver/CommandMessage.h"
#include "host/H7XML.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ACommandTable : public testing::Test, private ServiceCheck {
 protected:
  void NotePublished(const std::string&, void*) override {}
  void NoteWithdrawn(const std::string&, void*) override {}
  void* Shown(const std::string&, void* instance) override { return instance; }
  void Report(const std::string& what) override { reports.push_back(what); }

  bool Enter(const char* operation, From from) override {
    EXPECT_STREQ(operation, "RegisterUICmd");
    EXPECT_EQ(from, From::Initialize);
    inside += allowed ? 1 : 0;
    return allowed;
  }
  void Leave() noexcept override { --inside; }

  static CommandTable::Handler Replying(const std::string& name) {
    return [name](ICmdMessage const&) { return H7XML::CreateXmlNode(name, ""); };
  }
  std::string Call(const std::string& name) { return (*table.Find(name))(message)->GetName(); }

  std::vector<std::string> reports;
  bool allowed = true;
  int inside = 0;
  CommandTable table{*this};
  const Parameters none{};
  const CommandMessage message{none};
};

TEST_F(ACommandTable, FindsHandlersByExactName) {
  table.RegisterUICmd("A", Replying("first"));
  table.RegisterUICmd("B", Replying("second"));
  EXPECT_EQ(Call("A"), "first");
  EXPECT_EQ(Call("B"), "second");
  EXPECT_EQ(table.Find("a"), nullptr);
  EXPECT_THAT(table.Names(), ElementsAre("A", "B"));
  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(ACommandTable, ReplacesAHandlerAndReportsIt) {
  table.RegisterUICmd("A", Replying("first"));
  table.RegisterUICmd("A", Replying("second"));
  EXPECT_EQ(Call("A"), "second");
  EXPECT_THAT(table.Names(), ElementsAre("A"));
  EXPECT_THAT(reports, ElementsAre(HasSubstr("command \"A\" was registered twice")));
}

TEST_F(ACommandTable, KeepsAHandlerThatReplacesItselfAliveWhileItRuns) {
  const std::string text(100, 'x');
  table.RegisterUICmd("A", [this, text](ICmdMessage const&) {
    table.RegisterUICmd("A", Replying("second"));
    return H7XML::CreateXmlNode(text, "");
  });
  EXPECT_EQ(Call("A"), text);
  EXPECT_EQ(Call("A"), "second");
}

TEST_F(ACommandTable, TakesNothingThatItsCheckRefuses) {
  allowed = false;
  table.RegisterUICmd("A", Replying("first"));
  EXPECT_THAT(table.Names(), IsEmpty());
  allowed = true;
  table.RegisterUICmd("A", Replying("first"));
  EXPECT_THAT(table.Names(), ElementsAre("A"));
  EXPECT_EQ(inside, 0);
}

TEST_F(ACommandTable, DropsItsHandlers) {
  const auto witness = std::make_shared<int>();
  table.RegisterUICmd("A", [witness](ICmdMessage const&) { return h7::auto_com<H7XML::INode>(); });
  EXPECT_EQ(witness.use_count(), 2);
  table.Clear();
  EXPECT_EQ(witness.use_count(), 1);
  EXPECT_THAT(table.Names(), IsEmpty());
}

}  // namespace
}  // namespace devhost
