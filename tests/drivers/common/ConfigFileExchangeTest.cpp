// What becomes of the edits of writers that take no lock, at each moment of a replacement.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/ScriptedFileCalls.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::ConfigFile;
using drivers::FileStatusOfErrno;
using drivers::kFileIsSymbolicLink;
using drivers::kFileWasChanged;

const std::set<std::string> kOnlyTheFile = {"snmpd.conf"};
const std::set<std::string> kWithLock = {".snmpd.conf.lock", "snmpd.conf"};
// The lock is removed and closed, and the folder closed.
const std::size_t kStepsAtTheEnd = 3;
const std::set<std::string> kWithTemporaryFile = {".snmpd.conf.new", "snmpd.conf"};

// Replaces the file as most editors do.
void RenameOver(const TemporaryFolder& folder, const std::string& text) {
  folder.Write("snmpd.conf.editor", text);
  std::filesystem::rename(folder.Path("snmpd.conf.editor"), folder.Path("snmpd.conf"));
}

void AppendInPlace(const TemporaryFolder& folder, const std::string& text) {
  const int file = ::open(folder.Path("snmpd.conf").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  ASSERT_GE(file, 0);
  EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(file, text.data(), text.size()));
  ::close(file);
}

// Does `edit` right before the call `name` is made for the `time`th time, counted from 1; all else is let through.
std::shared_ptr<ScriptedFileCalls> Before(const std::string& name, int time, std::function<void()> edit) {
  auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [name, time, edit = std::move(edit), seen = 0](const std::string& called, std::size_t) mutable {
    if (called == name && ++seen == time) {
      edit();
    }
    return 0;
  };
  return calls;
}

// A file system that cannot exchange names or refuse existing ones, with `error`.
std::shared_ptr<ScriptedFileCalls> WithoutExchange(
    int error, std::function<void()> beforeRename = [] {}) {
  auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [=](const std::string& name, std::size_t) {
    if (name == "Exchange" || name == "RenameNew") {
      beforeRename();
      return error;
    }
    return 0;
  };
  return calls;
}

class AnEdit : public ::testing::Test {
 protected:
  AnEdit() { m_folder.Write("snmpd.conf", "old"); }

  int Replace(const std::shared_ptr<ScriptedFileCalls>& calls) const {
    return ConfigFile(m_folder.Path(), calls).ReplaceExpected("old", "new");
  }
  std::string File() const { return m_folder.Read("snmpd.conf"); }

  TemporaryFolder m_folder;
};

TEST_F(AnEdit, WhileTheNewTextIsFlushedIsKept) {
  EXPECT_EQ(kFileWasChanged, Replace(Before("Sync", 1, [&] { RenameOver(m_folder, "edited"); })));
  EXPECT_EQ("edited", File());
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, InTheLastMomentIsPutBackWithItsMode) {
  const auto calls = Before("Exchange", 1, [&] {
    RenameOver(m_folder, "edited");
    ::chmod(m_folder.Path("snmpd.conf").c_str(), 0640);
  });
  EXPECT_EQ(kFileWasChanged, Replace(calls));
  EXPECT_EQ("edited", File());
  struct stat attributes = {};
  EXPECT_EQ(0, ::stat(m_folder.Path("snmpd.conf").c_str(), &attributes));
  EXPECT_EQ(mode_t{0640}, attributes.st_mode & 07777);
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, InPlaceInTheLastMomentIsPutBack) {
  EXPECT_EQ(kFileWasChanged, Replace(Before("Exchange", 1, [&] { AppendInPlace(m_folder, " edited"); })));
  EXPECT_EQ("old edited", File());
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, ByWhoeverHasTheFileOpenArrivesInTheFile) {
  const int open = ::open(m_folder.Path("snmpd.conf").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  ASSERT_GE(open, 0);
  EXPECT_EQ(FileStatusOfErrno(EWOULDBLOCK), Replace(std::make_shared<ScriptedFileCalls>()));
  EXPECT_EQ(7, ::write(open, " edited", 7));
  ::close(open);
  EXPECT_EQ("old edited", File());
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, WithTheSameTextIsNotInTheWay) {
  EXPECT_EQ(0, Replace(Before("Exchange", 1, [&] { RenameOver(m_folder, "old"); })));
  EXPECT_EQ("new", File());
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, AfterTheExchangeStays) {
  EXPECT_EQ(0, Replace(Before("LockOutWriters", 1, [&] { RenameOver(m_folder, "edited"); })));
  EXPECT_EQ("edited", File());
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, ThatFollowsAnotherBeforeThatIsPutBackIsTheOneThatStays) {
  for (const bool inPlace : {false, true}) {
    m_folder.Write("snmpd.conf", "old");
    const auto calls = std::make_shared<ScriptedFileCalls>();
    calls->script = [&, exchanges = 0](const std::string& name, std::size_t) mutable {
      exchanges += name == "Exchange" ? 1 : 0;
      if (name == "Exchange" && exchanges == 1) {
        RenameOver(m_folder, "edited");
      } else if (name == "Exchange" && exchanges == 2) {
        inPlace ? AppendInPlace(m_folder, " edited") : RenameOver(m_folder, "edited again");
      }
      return 0;
    };
    EXPECT_EQ(kFileWasChanged, Replace(calls));
    EXPECT_EQ(inPlace ? "new edited" : "edited again", File());
    EXPECT_EQ(kOnlyTheFile, m_folder.Names());
  }
}

TEST_F(AnEdit, ThatRemovesTheFileInTheLastMomentIsKept) {
  EXPECT_EQ(kFileWasChanged, Replace(Before("Exchange", 1, [&] { std::filesystem::remove(m_folder.Path("snmpd.conf")); })));
  EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(AnEdit, ThatPutsALinkInItsPlaceIsKept) {
  m_folder.Write("elsewhere", "old");
  const auto calls = Before("Exchange", 1, [&] {
    std::filesystem::remove(m_folder.Path("snmpd.conf"));
    std::filesystem::create_symlink("elsewhere", m_folder.Path("snmpd.conf"));
  });
  EXPECT_EQ(kFileIsSymbolicLink, Replace(calls));
  EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path("snmpd.conf")));
  EXPECT_EQ((std::set<std::string>{"elsewhere", "snmpd.conf"}), m_folder.Names());
}

TEST_F(AnEdit, ThatMakesTheFileWhichWasMissingIsKept) {
  std::filesystem::remove(m_folder.Path("snmpd.conf"));
  const auto calls = Before("RenameNew", 1, [&] { m_folder.Write("snmpd.conf", "made"); });
  EXPECT_EQ(kFileWasChanged, ConfigFile(m_folder.Path(), calls).ReplaceExpected("", "new"));
  EXPECT_EQ("made", File());
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnEdit, IsNoticedWhereTheFileSystemCannotExchange) {
  for (const int error : {EINVAL, ENOSYS, EOPNOTSUPP}) {
    m_folder.Write("snmpd.conf", "old");
    EXPECT_EQ(0, Replace(WithoutExchange(error)));
    EXPECT_EQ("new", File());
    m_folder.Write("snmpd.conf", "old");
    EXPECT_EQ(kFileWasChanged, Replace(WithoutExchange(error, [&] { RenameOver(m_folder, "edited"); })));
    EXPECT_EQ("edited", File());
    std::filesystem::remove(m_folder.Path("snmpd.conf"));
    EXPECT_EQ(0, ConfigFile(m_folder.Path(), WithoutExchange(error)).ReplaceExpected("", "new"));
    EXPECT_EQ("new", File());
    std::filesystem::remove(m_folder.Path("snmpd.conf"));
    const auto calls = WithoutExchange(error, [&] { m_folder.Write("snmpd.conf", "made"); });
    EXPECT_EQ(kFileWasChanged, ConfigFile(m_folder.Path(), calls).ReplaceExpected("", "new"));
    EXPECT_EQ("made", File());
    EXPECT_EQ(kOnlyTheFile, m_folder.Names());
  }
}

TEST_F(AnEdit, IsNoticedWhereTheSystemDoesNotSayWhoWrites) {
  for (const int error : {EACCES, EINVAL}) {
    for (const bool isEdited : {false, true}) {
      m_folder.Write("snmpd.conf", "old");
      const auto calls = std::make_shared<ScriptedFileCalls>();
      calls->script = [&](const std::string& name, std::size_t) {
        if (name == "Exchange" && isEdited && File() == "old") {
          RenameOver(m_folder, "edited");
        }
        return name == "LockOutWriters" ? error : 0;
      };
      EXPECT_EQ(isEdited ? kFileWasChanged : 0, Replace(calls));
      EXPECT_EQ(isEdited ? "edited" : "new", File());
      EXPECT_EQ(kOnlyTheFile, m_folder.Names());
    }
  }
}

// The names of the calls of one replacement by comparison. With `isEdited`, somebody edits the file in the last moment.
std::shared_ptr<ScriptedFileCalls> CallsOf(const TemporaryFolder& folder, bool isEdited,
                                           std::function<int(std::size_t)> atStep) {
  folder.Write("snmpd.conf", "old");
  auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [&folder, isEdited, atStep = std::move(atStep), seen = false](const std::string& name,
                                                                                std::size_t number) mutable {
    if (name == "Exchange" && !std::exchange(seen, true) && isEdited) {
      RenameOver(folder, "edited");
    }
    return atStep(number);
  };
  return calls;
}

std::vector<std::string> StepsOf(bool isEdited) {
  const TemporaryFolder folder;
  const auto calls = CallsOf(folder, isEdited, [](std::size_t) { return 0; });
  EXPECT_EQ(isEdited ? kFileWasChanged : 0, ConfigFile(folder.Path(), calls).ReplaceExpected("old", "new"));
  return calls->names;
}

std::size_t FirstOf(const std::vector<std::string>& steps, const std::string& name) {
  return static_cast<std::size_t>(std::find(steps.begin(), steps.end(), name) - steps.begin());
}

TEST(AnExchange, TakesItsStepsInTheOrderThatKeepsAWholeFileInPlace) {
  const std::vector<std::string> compare = {"OpenForReading", "StatOpened", "Read", "Read", "Close"};
  std::vector<std::string> expected = {"OpenFolder", "OpenLock", "Lock", "StatOpened", "Stat", "Stat"};
  expected.insert(expected.end(), compare.begin(), compare.end());
  for (const char* const step : {"OpenForReading", "AccessListSize", "Close", "Stat", "CreateNew", "AccessListSize",
                                 "ChangeOwner", "Write", "ChangeMode", "Sync", "Close"}) {
    expected.emplace_back(step);
  }
  expected.insert(expected.end(), compare.begin(), compare.end());
  for (const char* const step : {"Exchange", "OpenForReading", "LockOutWriters", "StatOpened", "Read", "Read", "Close",
                                 "Remove", "Sync", "Remove", "Close", "Close"}) {
    expected.emplace_back(step);
  }
  EXPECT_EQ(expected, StepsOf(false));
}

TEST(AnExchange, AnswersEachFailureOfEachStepAndLeavesAWholeFileAlone) {
  const std::vector<std::string> steps = StepsOf(false);
  for (const int error : {ENOSPC, EIO, EPERM}) {
    for (std::size_t step = 0; step + kStepsAtTheEnd < steps.size(); ++step) {
      if (steps[step] == "Close" && step != FirstOf(steps, "Exchange") - 6) {
        continue;  // nobody waits for what closing a folder or a file that was read says
      }
      SCOPED_TRACE(steps[step] + " as step " + std::to_string(step) + " fails with errno " + std::to_string(error));
      const TemporaryFolder folder;
      const auto calls = CallsOf(folder, false, [&](std::size_t number) { return number == step ? error : 0; });
      EXPECT_EQ(FileStatusOfErrno(error), ConfigFile(folder.Path(), calls).ReplaceExpected("old", "new"));
      EXPECT_EQ(step + kStepsAtTheEnd + 1 == steps.size() ? "new" : "old", folder.Read("snmpd.conf"));
      EXPECT_EQ(step == 2 || step == 3 || step == 4 ? kWithLock : kOnlyTheFile, folder.Names());
    }
  }
}

TEST(AnExchange, NeverLosesAnEditWhicheverStepFails) {
  const std::vector<std::string> steps = StepsOf(true);
  const std::size_t exchange = FirstOf(steps, "Exchange");
  // Behind it: the flush of the folder.
  const std::size_t lastRemove = steps.size() - kStepsAtTheEnd - 2;
  ASSERT_EQ("Remove", steps[lastRemove]);
  for (const int error : {EIO, EINVAL, ENOSYS}) {
    for (std::size_t step = exchange; step + kStepsAtTheEnd < steps.size(); ++step) {
      SCOPED_TRACE(steps[step] + " as step " + std::to_string(step) + " fails with errno " + std::to_string(error));
      const TemporaryFolder folder;
      const auto calls = CallsOf(folder, true, [&](std::size_t number) { return number == step ? error : 0; });
      EXPECT_NE(0, ConfigFile(folder.Path(), calls).ReplaceExpected("old", "new"));
      EXPECT_EQ("edited", folder.Read("snmpd.conf"));
      // What cannot be removed is the new text; the next write removes it.
      EXPECT_EQ(step == lastRemove ? kWithTemporaryFile : kOnlyTheFile, folder.Names());
    }
  }
}

TEST(AnExchange, KeepsAnEditThatCannotBePutBackBesideTheFile) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  const auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [&, exchanges = 0](const std::string& name, std::size_t) mutable {
    exchanges += name == "Exchange" ? 1 : 0;
    if (name == "Exchange" && exchanges == 1) {
      RenameOver(folder, "edited");
    }
    return exchanges == 2 && (name == "Exchange" || name == "Rename") ? EIO : 0;
  };
  EXPECT_EQ(kFileWasChanged, ConfigFile(folder.Path(), calls).ReplaceExpected("old", "new"));
  EXPECT_EQ("edited", folder.Read(".snmpd.conf.new"));
}

TEST(AnExchange, KilledBeforeAnyStepLeavesAWholeFile) {
  const std::vector<std::string> steps = StepsOf(false);
  const std::size_t exchange = FirstOf(steps, "Exchange");
  for (std::size_t step = 0; step < steps.size(); ++step) {
    SCOPED_TRACE("killed before " + steps[step] + ", step " + std::to_string(step));
    const TemporaryFolder folder;
    Child child([&] {
      const auto calls = CallsOf(folder, false, [&](std::size_t number) {
        if (number == step) {
          ::raise(SIGKILL);
        }
        return 0;
      });
      return ConfigFile(folder.Path(), calls).ReplaceExpected("old", "new");
    });
    EXPECT_EQ(std::nullopt, child.Result());
    EXPECT_EQ(step <= exchange ? "old" : "new", folder.Read("snmpd.conf"));
    EXPECT_EQ(0, ConfigFile(folder.Path()).ReplaceExpected(folder.Read("snmpd.conf"), "next"));
    EXPECT_EQ("next", folder.Read("snmpd.conf"));
    EXPECT_EQ(kOnlyTheFile, folder.Names());
  }
}

}  // namespace
