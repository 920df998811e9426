// What a failing system, a full disk and a killed process leave behind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/ScriptedFileCalls.h"
#include "tests/drivers/support/SmallDisk.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::ConfigFile;
using drivers::FileStatusOfErrno;

const std::set<std::string> kOnlyTheFile = {"snmpd.conf"};
const std::set<std::string> kWithLock = {".snmpd.conf.lock", "snmpd.conf"};
const std::set<std::string> kWithTemporaryFile = {".snmpd.conf.lock", ".snmpd.conf.new", "snmpd.conf"};
// The lock is removed and closed, and the folder closed.
const std::size_t kStepsAtTheEnd = 3;

using Script = std::function<int(const std::string&, std::size_t)>;

std::shared_ptr<ScriptedFileCalls> Scripted(Script script) {
  auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = std::move(script);
  return calls;
}

// The names of the calls that make up one undisturbed replacement of an existing file.
std::vector<std::string> CallsOfReplace() {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  const auto calls = std::make_shared<ScriptedFileCalls>();
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Replace("new"));
  return calls->names;
}

std::size_t OpenDescriptors() {
  std::size_t count = 0;
  for (int descriptor = 0; descriptor < 256; ++descriptor) {
    count += ::fcntl(descriptor, F_GETFD) != -1 ? 1U : 0U;
  }
  return count;
}

TEST(AReplacement, TakesItsStepsInTheOrderThatKeepsAWholeFileInPlace) {
  const std::vector<std::string> expected = {
      "OpenFolder", "OpenLock", "Lock",      "StatOpened",     "Stat",        "Stat",  "OpenForReading", "AccessListSize",
      "Close",      "Stat",     "CreateNew", "AccessListSize", "ChangeOwner", "Write", "ChangeMode",     "Sync",
      "Close",      "Rename",   "Sync",      "Remove",         "Close",       "Close"};
  EXPECT_EQ(expected, CallsOfReplace());
}

TEST(AReplacement, AnswersEachFailureOfEachStepAndLeavesTheOldFileAlone) {
  const std::vector<std::string> steps = CallsOfReplace();
  const std::size_t rename = static_cast<std::size_t>(std::find(steps.begin(), steps.end(), "Rename") - steps.begin());
  const std::size_t firstClose = static_cast<std::size_t>(std::find(steps.begin(), steps.end(), "Close") - steps.begin());
  const std::size_t descriptors = OpenDescriptors();
  for (const int error : {ENOSPC, EACCES, EDQUOT, EROFS, EIO, EPERM, ENOLCK}) {
    // All steps but the last ones: nobody waits for what giving up the lock and closing a folder say.
    for (std::size_t step = 0; step + kStepsAtTheEnd < steps.size(); ++step) {
      if (step == firstClose) {
        continue;  // nobody waits for what closing a file that was looked at says
      }
      SCOPED_TRACE(steps[step] + " as step " + std::to_string(step) + " fails with errno " + std::to_string(error));
      const TemporaryFolder folder;
      folder.Write("snmpd.conf", "old");
      const auto calls =
          Scripted([step, error](const std::string&, std::size_t number) { return number == step ? error : 0; });
      EXPECT_EQ(FileStatusOfErrno(error), ConfigFile(folder.Path(), calls).Replace("new"));
      EXPECT_EQ(step <= rename ? "old" : "new", folder.Read("snmpd.conf"));
      // A lock that was not taken may be that of another writer.
      EXPECT_EQ(step == 2 || step == 3 || step == 4 ? kWithLock : kOnlyTheFile, folder.Names());
    }
  }
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(AReplacement, GoesOnAfterInterruptionsAndShortWrites) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  bool interrupt = false;
  const auto calls = Scripted([&interrupt](const std::string& name, std::size_t) {
    interrupt = !interrupt && (name == "Write" || name == "Sync" || name == "Close");
    return interrupt ? EINTR : 0;
  });
  calls->most = 7;
  const std::string text(1000, 'x');
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Replace(text + "end"));
  EXPECT_EQ(text + "end", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AReplacement, FailsWhereWritingGetsNowhere) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  const auto calls = std::make_shared<ScriptedFileCalls>();
  calls->most = 0;
  EXPECT_EQ(FileStatusOfErrno(EIO), ConfigFile(folder.Path(), calls).Replace("new"));
  EXPECT_EQ("old", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AReading, AnswersEachFailureOfEachStepAndKeepsTheText) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "content");
  const std::vector<std::string> steps = {"OpenFolder", "OpenForReading", "StatOpened", "Read"};
  const std::size_t descriptors = OpenDescriptors();
  for (const int error : {EACCES, EIO, EMFILE, ENOMEM}) {
    for (const std::string& step : steps) {
      SCOPED_TRACE(step + " fails with errno " + std::to_string(error));
      const auto calls = Scripted([&](const std::string& name, std::size_t) { return name == step ? error : 0; });
      std::string text = "kept";
      EXPECT_EQ(FileStatusOfErrno(error), ConfigFile(folder.Path(), calls).Read(text));
      EXPECT_EQ("kept", text);
    }
  }
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(AReading, GoesOnAfterInterruptionsAndShortReadsAndFollowsAGrowingFile) {
  const TemporaryFolder folder;
  const std::string content(1000, 'y');
  folder.Write("snmpd.conf", content);
  bool interrupt = false;
  bool grown = false;
  const auto calls = Scripted([&](const std::string& name, std::size_t) {
    if (name == "Read" && !grown) {
      grown = true;
      folder.Write("snmpd.conf", content + content + content + "end");
    }
    interrupt = !interrupt && name == "Read";
    return interrupt ? EINTR : 0;
  });
  calls->most = 7;
  std::string text;
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Read(text));
  EXPECT_EQ(content + content + content + "end", text);
}

TEST(AReading, OfAFileThatWasEmptyTakesNoMoreCallsThanOfALargeOne) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "");
  const std::string content(1000000, 'y');
  bool grown = false;
  const auto calls = Scripted([&](const std::string& name, std::size_t) {
    if (name == "Read" && !grown) {
      grown = true;
      folder.Write("snmpd.conf", content);
    }
    return 0;
  });
  std::string text;
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Read(text));
  EXPECT_EQ(content, text);
  EXPECT_LT(std::count(calls->names.begin(), calls->names.end(), "Read"), 100);
}

TEST(AFileSizeLimit, KeepsTheOldFile) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  Child child([&folder] {
    const rlimit limit = {4096, 4096};
    ::signal(SIGXFSZ, SIG_IGN);
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
      return 1;
    }
    return ConfigFile(folder.Path()).Replace(std::string(10000, 'x'));
  });
  EXPECT_EQ(FileStatusOfErrno(EFBIG), child.Result());
  EXPECT_EQ("old", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AFullDisk, KeepsTheOldFile) {
  const TemporaryFolder folder;
  const int cannotMount = 1;
  const int notWhole = 2;
  Child child([&folder]() -> int {
    if (!MountSmallDisk(folder.Path())) {
      return cannotMount;
    }
    folder.Write("snmpd.conf", "old");
    const int status = ConfigFile(folder.Path()).Replace(std::string(100000, 'x'));
    return folder.Read("snmpd.conf") == "old" && folder.Names() == kOnlyTheFile ? status : notWhole;
  });
  const std::optional<int> result = child.Result();
  if (result == cannotMount) {
    GTEST_SKIP() << "no disk can be mounted here; AFileSizeLimit stands for it";
  }
  EXPECT_EQ(FileStatusOfErrno(ENOSPC), result);
}

TEST(AKilledWriter, LeavesTheOldOrTheNewFileAfterEachStep) {
  const std::vector<std::string> steps = CallsOfReplace();
  const std::size_t rename = static_cast<std::size_t>(std::find(steps.begin(), steps.end(), "Rename") - steps.begin());
  for (std::size_t step = 0; step < steps.size(); ++step) {
    SCOPED_TRACE("killed before " + steps[step] + ", step " + std::to_string(step));
    const TemporaryFolder folder;
    folder.Write("snmpd.conf", "old");
    Child child([&folder, step] {
      const auto calls = Scripted([step](const std::string&, std::size_t number) {
        if (number == step) {
          ::raise(SIGKILL);
        }
        return 0;
      });
      return ConfigFile(folder.Path(), calls).Replace("new");
    });
    EXPECT_EQ(std::nullopt, child.Result());
    EXPECT_EQ(step <= rename ? "old" : "new", folder.Read("snmpd.conf"));
    const bool hasTemporary = folder.Names() == kWithTemporaryFile;
    EXPECT_TRUE(hasTemporary || folder.Names() == kWithLock || folder.Names() == kOnlyTheFile);
    // The next write is not in the way of what was left, neither file nor lock, and clears it up.
    EXPECT_EQ(0, ConfigFile(folder.Path()).Replace("next"));
    EXPECT_EQ("next", folder.Read("snmpd.conf"));
    EXPECT_EQ(kOnlyTheFile, folder.Names());
  }
}

TEST(AKilledWriter, NeverLeavesATornFileWheneverItDies) {
  const TemporaryFolder folder;
  const std::string first(200000, 'a');
  const std::string second(300000, 'b');
  const ConfigFile file(folder.Path());
  ASSERT_EQ(0, file.Replace(first));
  for (int round = 0; round < 60; ++round) {
    Child child([&] {
      while (file.Replace(first) == 0 && file.Replace(second) == 0) {
      }
      return 0;
    });
    // Spread over some writes: the point is to hit every moment, so time is what varies.
    std::this_thread::sleep_for(std::chrono::microseconds(500 + 337 * round));
    child.Kill();
    EXPECT_EQ(std::nullopt, child.Result());
    std::string text;
    ASSERT_EQ(0, file.Read(text));
    ASSERT_TRUE(text == first || text == second) << "torn in round " << round << ": " << text.size() << " bytes";
  }
  EXPECT_EQ(0, file.Replace(first));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

}  // namespace
