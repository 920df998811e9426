#include "devhost/project/ChosenDevice.h"

#include <gmock/gmock.h>

#include "devhost/project/Project.h"

namespace devhost {
namespace {

Project ProjectOf(const std::vector<DriverEntry>& drivers) {
  Project project;
  project.drivers = drivers;
  return project;
}

std::string ErrorOf(const Project& project, const std::string& word) {
  try {
    ChooseDevice("p.xml", project, word);
  } catch (const ProjectError& error) {
    return error.what();
  }
  return "";
}

const DriverEntry kAgent{1, "agent", "/m/snmp_configuration_agent.so", ""};
const DriverEntry kOtherAgent{2, "other", "/n/snmp_configuration_agent.so", ""};
const DriverEntry kKitchen{12, "kitchen", "/m/simulated_device.so", ""};

TEST(AChosenDevice, IsFoundByNameOrIdWithTheFirstAgentOfTheProject) {
  for (const char* const word : {"kitchen", "12"}) {
    const ChosenDevice chosen = ChooseDevice("p.xml", ProjectOf({kKitchen, kAgent, kOtherAgent}), word);
    EXPECT_EQ(chosen.device.id, 12U);
    EXPECT_EQ(chosen.agent.id, 1U);
  }
}

TEST(AChosenDevice, IsMissingWithTheFileInTheMessage) {
  EXPECT_THAT(ErrorOf(ProjectOf({kAgent}), "kitchen"), testing::StartsWith("p.xml: there is no driver of that name"));
}

TEST(AChosenDevice, NeedsAnAgent) {
  EXPECT_THAT(ErrorOf(ProjectOf({kKitchen}), "kitchen"),
              testing::StartsWith("p.xml: no driver of the project has the module snmp_configuration_agent.so; allowed: "));
}

}  // namespace
}  // namespace devhost
