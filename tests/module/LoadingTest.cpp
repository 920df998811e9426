// Tests what loading and unloading the built module does to the process.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <link.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/xml/XmlObserver.h"
#include "host/H7XML.h"
#include "tests/module/Shell.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TESTS_UNDER_ADDRESS_SANITIZER
#endif
#endif
#ifdef TESTS_UNDER_ADDRESS_SANITIZER
#include <sanitizer/allocator_interface.h>
#endif

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Entries(const char* folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::size_t Mappings() {
  std::ifstream maps("/proc/self/maps");
  return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>(), '\n'));
}

// Returns how many bytes are allocated now.
std::size_t AllocatedBytes() {
#ifdef TESTS_UNDER_ADDRESS_SANITIZER
  return __sanitizer_get_current_allocated_bytes();
#else
  const struct mallinfo2 info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
#endif
}

// Returns the names of the functions that run when the module is loaded, in order.
std::vector<std::string> Initialisers(void* module) {
  link_map* map = nullptr;
  EXPECT_EQ(::dlinfo(module, RTLD_DI_LINKMAP, &map), 0);
  const ElfW(Addr)* functions = nullptr;
  std::size_t count = 0;
  for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag == DT_INIT_ARRAY) {
      functions = reinterpret_cast<const ElfW(Addr)*>(map->l_addr + entry->d_un.d_ptr);
    } else if (entry->d_tag == DT_INIT_ARRAYSZ) {
      count = entry->d_un.d_val / sizeof(ElfW(Addr));
    }
  }
  std::vector<std::string> names;
  for (std::size_t i = 0; i != count; ++i) {
    std::ostringstream address;
    // In the short instruction set of ARM, the address of a function is odd, but that of its symbol is not.
    address << std::hex << (functions[i] - map->l_addr);
    const ShellResult line = RunInShell("nm --format=posix '" AGENT_MODULE "' | grep -iE ' t 0*" + address.str() +
                                        " ' | cut -d ' ' -f 1 | head -n 1");
    names.push_back(line.output.substr(0, line.output.find('\n')));
  }
  return names;
}

// Initialisers of the toolchain, the sanitizers and coverage do not count.
bool IsFromTheBuild(const std::string& name) {
  return name == "frame_dummy" || name.find("asan.module_ctor") != std::string::npos ||
         name.find("sancov.module_ctor") != std::string::npos || name.find("_sub_I_00") != std::string::npos ||
         name.find("__llvm_profile") != std::string::npos;
}

// The one initialiser makes the path that the agent passes to devices.
TEST(LoadingTheModule, RunsOneInitialiser) {
  void* const module = ::dlopen(AGENT_MODULE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << ::dlerror();
  std::vector<std::string> names = Initialisers(module);
  names.erase(std::remove_if(names.begin(), names.end(), IsFromTheBuild), names.end());
  EXPECT_THAT(names, ElementsAre("_GLOBAL__sub_I_ManagedSection.cpp"));
  ::dlclose(module);
}

TEST(LoadingTheModule, CallsNobodyAndOpensNothing) {
  Journal journal;
  RecordingHost host(journal);
  const std::vector<std::string> files = Entries("/proc/self/fd");
  const std::vector<std::string> threads = Entries("/proc/self/task");
  const std::string folder = std::filesystem::current_path();
  {
    const devhost::DriverModule module(AGENT_MODULE);
    EXPECT_EQ(Entries("/proc/self/fd"), files);
    EXPECT_EQ(Entries("/proc/self/task"), threads);
    EXPECT_EQ(std::filesystem::current_path(), folder);
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }
  EXPECT_THAT(journal.Calls(), IsEmpty());
  EXPECT_FALSE(host.AnythingPublished());
}

// Loads and initialises the agent, writes a device's file, sends a command and an event, asks for the state, and destroys
// everything.
void LiveOnce() {
  Journal journal;
  testsupport::RecordingDevice device(7, journal);
  device.file = "# by hand\n";
  const devhost::DriverModule module(AGENT_MODULE);
  RecordingHost host(journal);
  const std::unique_ptr<IDriver> driver(module.CreateDriver(host.Instances()));
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
  ASSERT_EQ(driver->Initialize(3, *config, nullptr), 0);
  driver->RegisterCommands();
  ISNMPConfigurationAgent* const agent = static_cast<ISNMPConfigurationAgent*>(host.Published(ISNMPConfigurationAgent_IID));
  ASSERT_NE(agent, nullptr);
  agent->AddSNMPDevice(7, &device);
  ASSERT_TRUE(agent->SetDeviceState(7));
  ASSERT_EQ(host.CommandText("AddManagedDevice", {{"deviceId", "7"}}), "<deviceId>7</deviceId>");
  host.SendEvent("OnProjectLoaded");
  ASSERT_TRUE(driver->GetPersistState(0));
  host.DropHandlers();
}

// How many lives it takes to fill the development host's quarantine of released nodes.
constexpr int kWarmUp = 500;

// Returns by how many bytes the allocated memory grows when the action runs a thousand times.
template <class Action>
std::size_t GrowthInAThousand(Action action) {
  const std::size_t bytes = AllocatedBytes();
  for (int i = 0; i != 1000; ++i) {
    action();
  }
  const std::size_t bytesAfter = AllocatedBytes();
  return bytesAfter > bytes ? bytesAfter - bytes : 0;
}

// Memory that an allocator keeps in reserve counts as allocated, and varies. A leak has at least 16 bytes in each of the
// thousand runs.
constexpr std::size_t kKeptAtHand = 4000;

TEST(TheModule, IsLoadedUsedAndUnloadedAThousandTimesWithoutGrowth) {
  for (int i = 0; i != kWarmUp; ++i) {
    ASSERT_NO_FATAL_FAILURE(LiveOnce());
  }
  // The sanitizers keep some 65 bytes each time a module that is built with them is loaded; without them nothing is kept.
  const std::size_t forLoading = GrowthInAThousand([] { ::dlclose(::dlopen(AGENT_MODULE, RTLD_NOW | RTLD_LOCAL)); });
  const std::vector<std::string> files = Entries("/proc/self/fd");
  const std::size_t mappings = Mappings();
  EXPECT_LE(GrowthInAThousand(LiveOnce), forLoading + kKeptAtHand) << "bytes are allocated more than before";
#ifndef TESTS_UNDER_ADDRESS_SANITIZER
  EXPECT_LE(forLoading, kKeptAtHand);
  EXPECT_LE(Mappings(), mappings + 1);
#else
  // The sanitizers' mappings grow by one for each page that they keep.
  EXPECT_LE(Mappings(), mappings + 20);
#endif
  EXPECT_EQ(Entries("/proc/self/fd"), files);
  EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  EXPECT_EQ(::dlopen(AGENT_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

}  // namespace
