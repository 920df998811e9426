#include "agent/AutoQueryInstanceRegisterer.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "host/IInstanceManager.h"
#include "tests/support/RecordingHost.h"

struct AutoQueryInstanceRegistererTestAccess {
  static const std::vector<std::string>& Names(const AutoQueryInstanceRegisterer& registerer) { return registerer.m_names; }
};

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ARegisterer : public testing::Test {
 protected:
  std::vector<std::string> Names() const { return AutoQueryInstanceRegistererTestAccess::Names(*registerer); }

  Journal journal;
  RecordingHost host{journal};
  std::unique_ptr<AutoQueryInstanceRegisterer> registerer{new AutoQueryInstanceRegisterer(host.Instances())};
  int instance = 0;
};

TEST_F(ARegisterer, AsksNothingOfTheManagerByItself) {
  EXPECT_THAT(Names(), IsEmpty());
  registerer.reset();
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ARegisterer, PublishesAndReturnsTheManagersAnswer) {
  EXPECT_TRUE(registerer->RegisterQuery("A", &instance));
  EXPECT_EQ(host.Published("A"), &instance);
  EXPECT_THAT(Names(), ElementsAre("A"));
  EXPECT_THAT(journal.Calls(), ElementsAre("RegisterQuery A"));
}

TEST_F(ARegisterer, WithdrawsInTheOrderOfPublication) {
  registerer->RegisterQuery("C", &instance);
  registerer->RegisterQuery("A", &instance);
  registerer->RegisterQuery("B", &instance);
  journal.Take();
  registerer.reset();
  EXPECT_THAT(journal.Calls(), ElementsAre("UnregisterQuery C", "UnregisterQuery A", "UnregisterQuery B"));
  EXPECT_FALSE(host.AnythingPublished());
}

TEST_F(ARegisterer, WithdrawsANameAsOftenAsTheManagerTookIt) {
  struct Manager final : IInstanceManager {
    bool RegisterQuery(const char*, void*) override { return true; }
    void UnregisterQuery(const char* iid) override { withdrawn.push_back(iid); }
    void* Query(const char*) override { return nullptr; }
    std::vector<std::string> withdrawn;
  } manager;
  {
    AutoQueryInstanceRegisterer generous(manager);
    for (const char* name : {"A", "B", "A"}) {
      EXPECT_TRUE(generous.RegisterQuery(name, &instance));
    }
  }
  EXPECT_THAT(manager.withdrawn, ElementsAre("A", "B", "A"));
}

TEST_F(ARegisterer, DoesNotWithdrawWhatTheManagerRefused) {
  registerer->RegisterQuery("A", &instance);
  host.refusesRegistrations = true;
  EXPECT_FALSE(registerer->RegisterQuery("B", &instance));
  EXPECT_THAT(Names(), ElementsAre("A"));
  host.refusesRegistrations = false;
  EXPECT_FALSE(registerer->RegisterQuery("A", &instance)) << "the name is taken";
  EXPECT_THAT(Names(), ElementsAre("A"));
  journal.Take();
  registerer.reset();
  EXPECT_THAT(journal.Calls(), ElementsAre("UnregisterQuery A"));
}

TEST_F(ARegisterer, RecordsNothingWhenTheManagerThrows) {
  journal.SetHook([](const std::string&) { throw std::runtime_error("manager"); });
  EXPECT_THROW(registerer->RegisterQuery("A", &instance), std::runtime_error);
  journal.SetHook(nullptr);
  EXPECT_THAT(Names(), IsEmpty());
  journal.Take();
  registerer.reset();
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ARegisterer, WithdrawsTheOthersWhenTheManagerThrowsForOne) {
  registerer->RegisterQuery("A", &instance);
  registerer->RegisterQuery("B", &instance);
  journal.Take();
  journal.SetHook([](const std::string&) { throw std::runtime_error("manager"); });
  registerer.reset();
  EXPECT_THAT(journal.Calls(), ElementsAre("UnregisterQuery A", "UnregisterQuery B"));
}

TEST_F(ARegisterer, LetsTheManagerRefuseAMissingIdentifier) {
  struct Manager final : IInstanceManager {
    bool RegisterQuery(const char* iid, void*) override {
      ++asked;
      return iid != nullptr;
    }
    void UnregisterQuery(const char*) override { ADD_FAILURE() << "nothing was published"; }
    void* Query(const char*) override { return nullptr; }
    int asked = 0;
  } manager;
  {
    AutoQueryInstanceRegisterer other(manager);
    EXPECT_FALSE(other.RegisterQuery(nullptr, &instance));
  }
  EXPECT_EQ(manager.asked, 1);
}

TEST_F(ARegisterer, CopiesTheIdentifierForTheTimeOfTheWithdrawal) {
  {
    const std::string name = "an identifier that is too long to be kept in place";
    registerer->RegisterQuery(name.c_str(), &instance);
  }
  registerer.reset();
  EXPECT_EQ(journal.Calls().back(), "UnregisterQuery an identifier that is too long to be kept in place");
}

}  // namespace
