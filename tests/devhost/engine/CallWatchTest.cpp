// What passes between the real agent and devices, each a module of its own.
#include "devhost/engine/CallWatch.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/engine/HostCore.h"
#include "devhost/engine/LoadedDriver.h"
#include "devhost/system/RunProgram.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "tests/devhost/modules/Faulty.h"
#include "tests/devhost/support/HostFixture.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kAgentModule[] = MODULE_FOLDER "/snmp_configuration_agent.so";

class ADeviceOfTheAgent : public HostFixture {
 protected:
  void LoadAgent() { host.Load({1, "agent", kAgentModule, "<config/>"}); }
  void LoadDevice(const std::string& fault, unsigned long id = 12) {
    Load(id, "faulty_device", "<config fault='" + fault + "'/>");
  }
  void LoadBoth(const std::string& fault) {
    LoadAgent();
    LoadDevice(fault);
    observer.all.clear();
  }

  std::string SetDeviceState() {
    return host.Command(1, "SetDeviceState", {{"xml", "<managedDevice><deviceId>12</deviceId></managedDevice>"}});
  }

  Faulty& Where() {
    const std::string reply = host.Command(12, "Where", {});
    return *reinterpret_cast<Faulty*>(static_cast<std::uintptr_t>(std::stoull(reply.substr(reply.find('>') + 1))));
  }
};

using ADeviceThatIsNotPublished = ADeviceOfTheAgent;

TEST_F(ADeviceOfTheAgent, IsNamedWithItsOperationWhenItThrows) {
  LoadBoth("throw");
  try {
    SetDeviceState();
    FAIL() << "no exception";
  } catch (const HostError& error) {
    EXPECT_STREQ(error.what(),
                 "an exception came out of CopyFrom of driver 12 \"faulty_device12\" during command \"SetDeviceState\" of "
                 "driver 1 \"agent\": no file today");
    EXPECT_EQ(error.driverId, 12U);
    EXPECT_EQ(error.driverName, "faulty_device12");
    EXPECT_EQ(error.call, "command \"SetDeviceState\" of driver 1 \"agent\"");
    EXPECT_EQ(error.text, "an exception came out of CopyFrom: no file today");
  }
}

TEST_F(ADeviceOfTheAgent, IsNamedWhenItThrowsSomethingElse) {
  LoadBoth("throwOddly");
  EXPECT_EQ(
      ErrorOf([&] { SetDeviceState(); }),
      "an exception came out of CopyFrom of driver 12 \"faulty_device12\" during command \"SetDeviceState\" of driver 1 "
      "\"agent\": something that is not a std::exception");
}

TEST_F(ADeviceOfTheAgent, IsNamedWhenItsOwnCommandLeadsThroughTheAgent) {
  LoadBoth("throw");
  EXPECT_EQ(ErrorOf([&] { host.Command(12, "CallAgent", {}); }),
            "an exception came out of CopyFrom of driver 12 \"faulty_device12\" during command \"CallAgent\" of driver 12 "
            "\"faulty_device12\": no file today");
}

TEST_F(ADeviceOfTheAgent, IsNotNamedForALaterExceptionOfAnother) {
  LoadBoth("throw");
  Load(5, "rude");
  ErrorOf([&] { SetDeviceState(); });
  EXPECT_EQ(ErrorOf([&] { host.Command(5, "Throw", {}); }),
            "an exception came out of command \"Throw\" of driver 5 \"rude5\": no <answer> today");
}

TEST_F(ADeviceOfTheAgent, HasItsStatusShown) {
  LoadBoth("status");
  EXPECT_EQ(SetDeviceState(), "<ReadFail/>");
  EXPECT_THAT(observer.Texts(Kind::Status),
              ElementsAre("CopyFrom returned 5, during command \"SetDeviceState\" of driver 1 \"agent\""));
  for (const Occurrence& occurrence : observer.all) {
    if (occurrence.kind == Kind::Status) {
      EXPECT_EQ(occurrence.driverName, "faulty_device12");
      EXPECT_EQ(occurrence.name, "CopyFrom");
    }
  }
}

TEST_F(ADeviceOfTheAgent, StaysItsDriversWhenAnotherDriverPublishesIt) {
  LoadBoth("status");
  LoadDevice("takes", 13);
  SetDeviceState();
  for (const Occurrence& occurrence : observer.all) {
    EXPECT_TRUE(occurrence.kind != Kind::Status || occurrence.driverName == "faulty_device12");
  }
  EXPECT_THAT(observer.Texts(Kind::Status), Not(IsEmpty()));
}

// As when a device is freed and one of another driver comes to lie at its address.
TEST_F(ADeviceOfTheAgent, BelongsToTheDriverThatHasAnnouncedItLast) {
  LoadBoth("");
  LoadDevice("", 13);
  host.Command(12, "Share", {});
  host.Command(12, "Unshare", {});
  host.Command(13, "Share", {});
  host.Stop();
  for (const Occurrence& occurrence : observer.all) {
    EXPECT_TRUE(occurrence.kind != Kind::Manners || occurrence.driverName == "faulty_device13") << occurrence.text;
  }
  EXPECT_THAT(Reports(), Contains(HasSubstr("left its device 900 with the agent behind")));
}

TEST_F(ADeviceOfTheAgent, HasNoStatusShownWhenAllGoesWell) {
  LoadBoth("");
  EXPECT_EQ(SetDeviceState(), "<Success/>");
  EXPECT_THAT(observer.Texts(Kind::Status), IsEmpty());
}

TEST_F(ADeviceOfTheAgent, ThatWasThereFirstIsNamedToo) {
  LoadDevice("throw");
  LoadAgent();
  EXPECT_THAT(ErrorOf([&] { SetDeviceState(); }), HasSubstr("out of CopyFrom of driver 12 \"faulty_device12\""));
}

TEST_F(ADeviceOfTheAgent, IsWithdrawnWhenItsDriverLeavesItBehind) {
  LoadBoth("stay");
  host.Command(1, "AddManagedDevice", {{"deviceId", "12"}});
  host.Stop();
  ExpectOneReport(
      TestDriver(12, "faulty_device"),
      "left its device 12 with the agent behind: it did not call DeleteSNMPDevice; the device was withdrawn for it");
  const std::vector<std::string> told = observer.Texts(Kind::Notification);
  EXPECT_THAT(told, Contains("<DeviceDeleted><id>12</id></DeviceDeleted>"));
  // Else the agent has called the device once more, when it was gone.
  EXPECT_THAT(told, Not(Contains(HasSubstr("ManagedDeviceDeleted"))));
}

TEST_F(ADeviceOfTheAgent, IsWithdrawnWhenItsInitializeFails) {
  LoadAgent();
  EXPECT_NE(ErrorOf([&] { LoadDevice("throwInInitialize"); }), "");
  EXPECT_THAT(Reports(), ElementsAre(HasSubstr("left its device 12 with the agent behind")));
  EXPECT_EQ(host.Command(1, "GetDeviceList", {}), "<managedDevices/>");
}

TEST_F(ADeviceOfTheAgent, StaysWhenAnotherOneOfItsModuleLeaves) {
  LoadBoth("");
  EXPECT_NE(ErrorOf([&] { LoadDevice("throwInInitialize", 13); }), "");
  EXPECT_THAT(Reports(), ElementsAre(HasSubstr("left its device 13 with the agent behind")));
  EXPECT_THAT(host.Command(1, "GetDeviceList", {}), HasSubstr("<deviceId>12</deviceId>"));
}

TEST_F(ADeviceOfTheAgent, IsBlamedWhenItCallsTheAgentFromASecondThread) {
  LoadBoth("thread");
  EXPECT_EQ(SetDeviceState(), "<Success/>");
  ExpectOneReport(TestDriver(12, "faulty_device"),
                  "SetDeviceState of driver 1 \"agent\" was called from a second thread; it was refused, during CopyFrom");
}

TEST_F(ADeviceOfTheAgent, IsBlamedWhenItCallsTheAgentFromASecondThreadWhileTheHostIsIdle) {
  LoadBoth("");
  Faulty& device = Where();
  bool answer = true;
  std::thread([&] { answer = device.CallAgent(); }).join();
  EXPECT_FALSE(answer);
  ExpectOneReport(TestDriver(12, "faulty_device"),
                  "SetDeviceState of driver 1 \"agent\" was called from a second thread; it was refused");
  EXPECT_TRUE(device.CallAgent());  // on the thread of the host
}

TEST_F(ADeviceOfTheAgent, IsBlamedWhenItCallsTheHostFromASecondThreadWhileTheHostIsIdle) {
  LoadBoth("");
  Faulty& device = Where();
  std::thread([&] { device.Notify(); }).join();
  ExpectOneReport(TestDriver(12, "faulty_device"), "ConSendDataToUI came from a second thread; it was refused");
  EXPECT_THAT(observer.Texts(Kind::Notification), IsEmpty());
  device.Notify();  // on the thread of the host
  EXPECT_EQ(observer.Texts(Kind::Notification).size(), 1U);
}

TEST_F(ADeviceThatIsNotPublished, IsWithdrawnWhenDriversShareItsModuleAndItHasAnIdOfItsOwn) {
  LoadAgent();
  LoadDevice("second", 12);
  LoadDevice("second", 13);
  host.Stop();
  EXPECT_THAT(Reports(), ElementsAre(HasSubstr("left its device 1301 with the agent"),
                                     HasSubstr("left its device 1201 with the agent")));
}

TEST_F(ADeviceThatIsNotPublished, IsWatchedWhenItsClassIsOfNoModuleOfADriver) {
  LoadAgent();
  Journal journal;
  testsupport::RecordingDevice device(1201, journal);
  device.copyFrom.always = 5;
  LoadDevice("");
  ASSERT_TRUE(Where().Announce(1201, device));
  EXPECT_EQ(host.Command(1, "SetDeviceState", {{"xml", "<managedDevice><deviceId>1201</deviceId></managedDevice>"}}),
            "<ReadFail/>");
  EXPECT_THAT(observer.Texts(Kind::Status), ElementsAre(HasSubstr("CopyFrom returned 5")));
  host.Stop();
  ExpectOneReport(TestDriver(12, "faulty_device"), "left its device 1201 with the agent behind");
}

class IdleAgent final : public ISNMPConfigurationAgent {
 public:
  void AddSNMPDevice(unsigned long, ISupportSNMP*) override {}
  void DeleteSNMPDevice(unsigned long) override {}
  bool SetDeviceState(unsigned long) override { return true; }
};

struct SilentObserver : HostObserver {
  void OnOccurrence(const Occurrence&) override {}
};

struct IdleDriver : H7BaseAgentDriver {
  explicit IdleDriver(IInstanceManager& manager) : H7BaseAgentDriver(manager, DriverMultiplicity_PerDevice) {}
};

// An agent, the driver of a device, and one that is neither, each with its own view of what is published.
class APublishedPointer : public testing::Test {
 protected:
  struct View {
    View(HostCore& core, unsigned long id)
        : driver(std::make_shared<LoadedDriver>(core, DriverEntry{id, "driver", "", "<config/>"},
                                                [this](IInstanceManager& given) {
                                                  manager = &given;
                                                  return new IdleDriver(given);
                                                })) {
      core.Add(driver);
      driver->Create();
      driver->Initialize(*config, nullptr);
    }
    ~View() { driver->Destroy(); }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    IDriverManager& Drivers() const { return driver->GetDriverManager(); }

    const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
    IInstanceManager* manager = nullptr;
    const std::shared_ptr<LoadedDriver> driver;
  };

  APublishedPointer() {
    agents.manager->RegisterQuery(ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(&agent));
    devices.manager->RegisterQuery(ISupportSNMP_IID, static_cast<ISupportSNMP*>(&device));
  }

  SilentObserver observer;
  HostCore core{observer};
  IdleAgent agent;
  Journal journal;
  testsupport::RecordingDevice device{12, journal};
  View agents{core, 1};
  View devices{core, 12};
  View others{core, 5};
};

TEST_F(APublishedPointer, IsTheSameForTheDriverThatHasPublishedIt) {
  EXPECT_EQ(agents.manager->Query(ISNMPConfigurationAgent_IID), &agent);
  EXPECT_THAT(devices.Drivers().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID), ElementsAre(&device));
}

TEST_F(APublishedPointer, OfADeviceIsTheSameForAllButTheAgent) {
  EXPECT_THAT(others.Drivers().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID), ElementsAre(&device));
  EXPECT_THAT(agents.Drivers().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID), Not(Contains(&device)));
}

TEST_F(APublishedPointer, IsTheSameEachTime) {
  EXPECT_EQ(devices.manager->Query(ISNMPConfigurationAgent_IID), others.manager->Query(ISNMPConfigurationAgent_IID));
  EXPECT_EQ(agents.Drivers().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID),
            agents.Drivers().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID));
}

TEST_F(APublishedPointer, OfAnotherInterfaceIsLeftAlone) {
  int instance = 0;
  devices.manager->RegisterQuery("another", &instance);
  EXPECT_EQ(agents.manager->Query("another"), &instance);
}

TEST(AnAgentThatIsGone, IsNotCalled) {
  RecordingObserver observer;
  HostCore core(observer);
  Journal journal;
  testsupport::RecordingDevice device(12, journal);
  const auto agents = std::make_shared<LoadedDriver>(core, DriverEntry{1, "agent", "", "<config/>"},
                                                     [](IInstanceManager&) { return nullptr; });
  const auto devices = std::make_shared<LoadedDriver>(core, DriverEntry{12, "kitchen", "", "<config/>"},
                                                      [](IInstanceManager&) { return nullptr; });
  core.Add(agents);
  core.Add(devices);
  auto agent = std::make_unique<IdleAgent>();
  core.calls.NotePublished(*agents, ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(agent.get()));
  auto& front = *static_cast<ISNMPConfigurationAgent*>(
      core.calls.Shown(*devices, ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(agent.get())));
  EXPECT_TRUE(front.SetDeviceState(12));
  core.calls.NoteUnpublished(*agents, ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(agent.get()));
  core.calls.NoteDestroyed(*agents);
  agent.reset();
  const CallScope scope(core, devices.get(), "destruction");
  EXPECT_FALSE(front.SetDeviceState(12));
  front.AddSNMPDevice(12, &device);
  front.DeleteSNMPDevice(12);
  EXPECT_THAT(observer.Texts(Kind::Manners),
              ElementsAre("SetDeviceState was called after the agent was gone; it was refused, during destruction",
                          HasSubstr("AddSNMPDevice was called after"), HasSubstr("DeleteSNMPDevice was called after")));
}

TEST(ADeviceThatNoCodeLeadsToADriver, IsThatOfTheDriverThatIsBeingCalled) {
  SilentObserver observer;
  HostCore core(observer);
  IdleAgent agent;
  Journal journal;
  testsupport::RecordingDevice device(1201, journal);
  const auto driver = std::make_shared<LoadedDriver>(core, DriverEntry{12, "kitchen", "", "<config/>"},
                                                     [](IInstanceManager&) { return nullptr; });
  core.Add(driver);
  core.directory.Publish(1, ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(&agent));
  {
    const CallScope scope(core, driver.get(), "Initialize");
    core.calls.NoteAnnounced(agent, 1201, &device, nullptr);
  }
  core.calls.NoteDestroyed(*driver);
  EXPECT_EQ(core.MannersCount(), 1U);
}

TEST(ACallFromASecondThread, IsRefusedWhileManyDevicesComeAndGo) {
  SilentObserver observer;
  HostCore core(observer);
  IdleAgent agent;
  Journal journal;
  testsupport::RecordingDevice device(1, journal);
  std::atomic<bool> done{false};
  std::atomic<std::size_t> refused{0};
  std::thread second([&] {
    while (!done || refused == 0) {
      refused += core.calls.Allows(agent, "SetDeviceState", 1, nullptr) ? 0U : 1U;
    }
  });
  constexpr unsigned long kDevices = 50000;
  for (unsigned long id = kDevices; id != 0; --id) {
    core.calls.NoteAnnounced(agent, id, &device, nullptr);
  }
  for (unsigned long id = kDevices; id != 0; --id) {
    core.calls.NoteWithdrawn(agent, id);
  }
  done = true;
  second.join();
  EXPECT_EQ(core.MannersCount(), refused.load());
}

// How the built program ends when the device that the agent changes has this fault.
ProgramResult EndByFault(const std::string& fault) {
  const testsupport::ScratchFolder folder;
  ProgramRun run;
  run.words = {"/bin/sh",
               "-c",
               "ulimit -c 0; exec \"$@\"",
               "sh",
               DEVHOST_PROGRAM,
               "run",
               "--project",
               folder.Write("project.xml", "<project><driver id='1' name='agent' module='" + std::string(kAgentModule) +
                                               "'/><driver id='12' name='kitchen' module='" + TestModule("faulty_device") +
                                               "'><config fault='" + fault + "'/></driver></project>"),
               folder.Write("script.devhost",
                            "command SetDeviceState xml='<managedDevice><deviceId>12</deviceId></managedDevice>'\n")};
  return RunProgram(run);
}

TEST(ADeviceThatCrashes, IsNamedWithItsOperation) {
  const ProgramResult result = EndByFault("crash");
  EXPECT_THAT(result.output,
              HasSubstr("devhost: the process was aborted (SIGABRT) during CopyFrom of driver 12 \"kitchen\"\n"));
  EXPECT_NE(result.exitStatus + result.signal, 0);
}

TEST(ADeviceThatEndsItsThread, IsNamedWithItsOperation) {
  const ProgramResult result = EndByFault("endThread");
  EXPECT_THAT(result.output, HasSubstr("devhost: the process lost its thread during CopyFrom of driver 12 \"kitchen\", by "
                                       "pthread_exit or the like; drivers return from every call\n"));
  EXPECT_EQ(result.exitStatus, 1);
}

}  // namespace
}  // namespace devhost
