#ifndef TESTS_DEVHOST_SUPPORT_HOST_FIXTURE_H
#define TESTS_DEVHOST_SUPPORT_HOST_FIXTURE_H

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/devhost/support/RecordingObserver.h"
#include "tests/devhost/support/TestModules.h"

// A host and what happens in it. At the end the host has counted all bad manners, and no XML is left but `leaked` objects.
class HostFixture : public testing::Test {
 protected:
  void Load(unsigned long id, const std::string& module, const std::string& config = "<config/>") {
    host.Load(TestDriver(id, module, config));
  }

  // The line of the HostError that `action` throws; "" for nothing.
  template <class Action>
  static std::string ErrorOf(Action action) {
    try {
      action();
    } catch (const devhost::HostError& error) {
      return error.what();
    }
    return "";
  }

  std::vector<std::string> Reports() const { return observer.Texts(devhost::Occurrence::Kind::Manners); }

  // That driver alone was reported, once, and is not named again in the text.
  void ExpectOneReport(const devhost::DriverEntry& driver, const std::string& what) {
    using testing::HasSubstr;
    EXPECT_THAT(Reports(), testing::ElementsAre(testing::AllOf(HasSubstr(what), testing::Not(HasSubstr(driver.name)))));
    for (const devhost::Occurrence& occurrence : observer.all) {
      if (occurrence.kind == devhost::Occurrence::Kind::Manners) {
        EXPECT_EQ(occurrence.driverId, driver.id);
        EXPECT_EQ(occurrence.driverName, driver.name);
      }
    }
  }

  void TearDown() override {
    host.Stop();
    EXPECT_EQ(host.MannersCount(), Reports().size());
    EXPECT_EQ(devhost::LiveXmlObjects() - liveAtStart, leaked);
  }

  const std::size_t liveAtStart = devhost::LiveXmlObjects();
  std::size_t leaked = 0;
  RecordingObserver observer;
  devhost::Host host{observer};
};

#endif
