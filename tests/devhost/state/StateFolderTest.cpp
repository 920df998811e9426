#include "devhost/state/StateFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "devhost/xml/XmlReader.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// Lets the rights of files count, which they do not for the superuser.
class OrdinaryUser {
 public:
  OrdinaryUser() : m_was(::geteuid()) {
    if (m_was == 0 && ::seteuid(65534) != 0) {
      throw std::runtime_error("cannot become an ordinary user");
    }
  }
  ~OrdinaryUser() {
    if (::seteuid(m_was) != 0) {
      std::abort();
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  const uid_t m_was;
};

class AStateFolder : public testing::Test {
 protected:
  // What the store throws, without the folder in front; "" for nothing.
  template <class Action>
  std::string ErrorOf(Action action) {
    try {
      action();
    } catch (const StateError& error) {
      const std::string text = error.what();
      EXPECT_EQ(text.find('\n'), std::string::npos);
      EXPECT_EQ(text.compare(0, folder.Path().size() + 1, folder.Path() + "/"), 0) << text;
      return text.substr(folder.Path().size() + 1);
    }
    return "";
  }

  static std::string TextOf(StateStore& states, unsigned long id) {
    const h7::auto_com<H7XML::INode> state = states.Load(id);
    return state ? XmlText(*state, XmlStyle::Compact) : "none";
  }

  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path("s"))) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

  mode_t Mode(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(::stat(folder.Path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  const testsupport::ScratchFolder folder;
};

TEST_F(AStateFolder, IsMadeWithTheFoldersAboveIt) {
  StateFolder states(folder.Path("s/t/u"));
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path("s/t/u")));
  EXPECT_EQ(TextOf(states, 1), "none");
}

TEST_F(AStateFolder, IsMadeForItsUserAloneWhateverTheUmask) {
  for (const mode_t mask : {0000U, 0077U, 0777U}) {
    const mode_t before = ::umask(mask);
    { const StateFolder states(folder.Path("s/t/")); }
    ::umask(before);
    EXPECT_EQ(Mode("s"), 0700U) << mask;
    EXPECT_EQ(Mode("s/t"), 0700U) << mask;
    std::filesystem::remove_all(folder.Path("s"));
  }
}

TEST_F(AStateFolder, GivesBackWhatItWasGivenAlsoToALaterProcess) {
  {
    StateFolder states(folder.Path("s"));
    states.Save(1, "<State a=\"b\">c</State>");
    states.Save(4294967295UL, "<Other/>");
    EXPECT_EQ(TextOf(states, 1), "<State a=\"b\">c</State>");
  }
  StateFolder states(folder.Path("s"));
  EXPECT_EQ(TextOf(states, 1), "<State a=\"b\">c</State>");
  EXPECT_EQ(TextOf(states, 4294967295UL), "<Other/>");
  EXPECT_EQ(TextOf(states, 2), "none");
}

TEST_F(AStateFolder, HoldsOneFileForEachDriverAndItsLock) {
  StateFolder states(folder.Path("s"));
  states.Save(1, "<A/>");
  states.Save(1, "<B/>");
  states.Save(2, "<C/>");
  EXPECT_EQ(Files(), (std::set<std::string>{"driver-1.xml", "driver-2.xml", "lock"}));
  EXPECT_EQ(folder.Read("s/driver-1.xml"), "<B/>\n");
  EXPECT_EQ(Mode("s/driver-1.xml"), 0600U);
}

TEST_F(AStateFolder, RemovesTheFileOfAStateThatIsKeptNoLonger) {
  StateFolder states(folder.Path("s"));
  states.Save(1, "<A/>");
  states.Save(1, "");
  states.Save(2, "");
  EXPECT_EQ(Files(), (std::set<std::string>{"lock"}));
}

TEST_F(AStateFolder, IsUsedByOneHostAtATime) {
  const StateFolder first(folder.Path("s"));
  try {
    const StateFolder second(folder.Path("s"));
    FAIL() << "a second one was let in";
  } catch (const StateError& error) {
    EXPECT_STREQ(
        error.what(),
        ("cannot keep states in \"" + folder.Path("s") + "\": another devhost is using it; allowed: one at a time").c_str());
  }
}

TEST_F(AStateFolder, ThatIsAFileIsRefused) {
  folder.Write("s", "");
  try {
    const StateFolder states(folder.Path("s"));
    FAIL() << "a file was taken for a folder";
  } catch (const StateError& error) {
    EXPECT_THAT(error.what(), HasSubstr("Not a directory; allowed: a folder that can be written, or one that can be made"));
  }
}

class ARefusedStateFolder : public AStateFolder {
 protected:
  // What the store throws at the start, without the folder that every message begins with; "" for nothing.
  std::string Refusal() const {
    try {
      const StateFolder states(folder.Path("s"));
    } catch (const StateError& error) {
      const std::string text = error.what();
      const std::string start = "cannot keep states in \"" + folder.Path("s") + "\": ";
      EXPECT_THAT(text, StartsWith(start));
      return text.substr(std::min(start.size(), text.size()));
    }
    return "";
  }
};

TEST_F(ARefusedStateFolder, CannotBeWrittenAlthoughItsLockIsThere) {
  folder.Write("s/lock", "");
  ASSERT_EQ(::chmod(folder.Path("s/lock").c_str(), 0666), 0);
  ASSERT_EQ(::chmod(folder.Path("s").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
  const OrdinaryUser user;
  EXPECT_EQ(Refusal(), "Permission denied; allowed: a folder that can be written, or one that can be made");
}

TEST_F(ARefusedStateFolder, CanBeWrittenByOthers) {
  folder.Write("s/driver-1.xml", "<Planted/>");
  for (const mode_t mode : {0720U, 0702U, 01777U}) {
    ASSERT_EQ(::chmod(folder.Path("s").c_str(), mode), 0);
    EXPECT_EQ(Refusal(), "other users can write it; allowed: a folder of your own that no other user can write");
    try {
      LookIntoStateFolder(folder.Path("s"), 1);
      FAIL() << "a planted state was shown";
    } catch (const StateError& error) {
      EXPECT_EQ(error.what(),
                "cannot look into the state folder \"" + folder.Path("s") +
                    "\": other users can write it; allowed: a folder of your own that no other user can write");
    }
  }
  EXPECT_EQ(Files(), (std::set<std::string>{"driver-1.xml"}));
}

TEST_F(ARefusedStateFolder, BelongsToAnotherUser) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give folders away";
  }
  folder.Write("s/driver-1.xml", "<Planted/>");
  ASSERT_EQ(::chown(folder.Path("s").c_str(), 65534, 65534), 0);
  EXPECT_EQ(Refusal(), "it belongs to another user (id 65534); allowed: a folder of your own that no other user can write");
}

TEST_F(ARefusedStateFolder, IsALinkToNothing) {
  std::filesystem::create_symlink("nowhere", folder.Path("s"));
  EXPECT_EQ(Refusal(), "it is a symbolic link to nothing; allowed: a folder that can be written, or one that can be made");
}

TEST_F(ARefusedStateFolder, HasSomethingElseInThePlaceOfItsLock) {
  const std::string allowed = "; allowed: a file with no other name, or none";
  folder.Write("s/driver-1.xml", "<A/>");
  const std::string lock = folder.Path("s/lock");
  std::filesystem::create_symlink("driver-1.xml", lock);
  EXPECT_EQ(Refusal(), "its file \"lock\" is a symbolic link" + allowed);
  std::filesystem::remove(lock);
  std::filesystem::create_hard_link(folder.Path("s/driver-1.xml"), lock);
  EXPECT_EQ(Refusal(), "its file \"lock\" has a second name (a hard link)" + allowed);
  std::filesystem::remove(lock);
  std::filesystem::create_directory(lock);
  EXPECT_EQ(Refusal(), "its file \"lock\" is a folder" + allowed);
  std::filesystem::remove(lock);
  ASSERT_EQ(::mkfifo(lock.c_str(), 0600), 0);
  EXPECT_EQ(Refusal(), "its file \"lock\" is not a file" + allowed);
}

TEST_F(AStateFolder, IsTakenOverFromAHostThatIsAboutToBeGone) {
  auto former = std::make_unique<StateFolder>(folder.Path("s"));
  std::thread end([&former] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    former.reset();
  });
  EXPECT_EQ(ErrorOf([this] { const StateFolder states(folder.Path("s")); }), "");
  end.join();
}

TEST_F(AStateFolder, KeepsACopyOfAStateThatAnotherProgramMustHaveWritten) {
  folder.Write("s/driver-1.xml", "<a/>");
  {
    StateFolder states(folder.Path("s"));
    EXPECT_EQ(TextOf(states, 1), "<a/>");
    states.Save(1, "<A/>");
    states.Save(1, "<A x=\"2\"/>");
  }
  EXPECT_EQ(folder.Read("s/driver-1.xml.damaged"), "<a/>");
  EXPECT_EQ(folder.Read("s/driver-1.xml"), "<A x=\"2\"/>\n");
  StateFolder states(folder.Path("s"));
  states.Load(1);
  states.Save(1, "<A/>");
  EXPECT_EQ(Files(), (std::set<std::string>{"driver-1.xml", "driver-1.xml.damaged", "lock"}));
}

struct Damage {
  const char* name;
  const char* text;
  const char* message;
};

class ADamagedState : public AStateFolder, public testing::WithParamInterface<Damage> {};

TEST_P(ADamagedState, IsReportedWithItsPlaceAndKeptAside) {
  folder.Write("s/driver-1.xml", GetParam().text);
  StateFolder states(folder.Path("s"));
  EXPECT_THAT(ErrorOf([&] { states.Load(1); }), StartsWith(GetParam().message));
  EXPECT_EQ(folder.Read("s/driver-1.xml.damaged"), GetParam().text);
  EXPECT_EQ(TextOf(states, 1), "none");
}

INSTANTIATE_TEST_SUITE_P(
    Each, ADamagedState,
    testing::Values(Damage{"empty", "",
                           "s/driver-1.xml: the state is damaged: the file is empty; kept as driver-1.xml.damaged"},
                    Damage{"blank", " \n", "s/driver-1.xml:"}, Damage{"text", "no state", "s/driver-1.xml:1:"},
                    Damage{"truncated", "<State>\n  <variables>\n    <variable deviceid=\"5\"", "s/driver-1.xml:3:"},
                    Damage{"cut", "<State>\n  <variables>\n", "s/driver-1.xml:"},
                    Damage{"two", "<State/>\n<State/>\n", "s/driver-1.xml:2:"}),
    [](const testing::TestParamInfo<Damage>& damage) { return damage.param.name; });

TEST_F(AStateFolder, PutsAsideAStateThatItMayNotRead) {
  StateFolder states(folder.Path("s"));
  folder.Write("s/driver-1.xml", "<State/>");
  ASSERT_EQ(::chmod(folder.Path("s/driver-1.xml").c_str(), 0), 0);
  ASSERT_EQ(::chmod(folder.Path("s").c_str(), 0777), 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
  const OrdinaryUser user;
  EXPECT_EQ(ErrorOf([&] { states.Load(1); }),
            "s/driver-1.xml: the state cannot be used: Permission denied; kept as driver-1.xml.damaged");
}

TEST_F(AStateFolder, SaysWhenADamagedStateCannotBePutAside) {
  StateFolder states(folder.Path("s"));
  folder.Write("s/driver-1.xml", "x");
  ASSERT_EQ(::chmod(folder.Path("s/driver-1.xml").c_str(), 0644), 0);
  ASSERT_EQ(::chmod(folder.Path("s").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
  const OrdinaryUser user;
  EXPECT_THAT(ErrorOf([&] { states.Load(1); }),
              testing::EndsWith("; it cannot be put aside: Permission denied; no other state is kept in its place"));
  EXPECT_EQ(folder.Read("s/driver-1.xml"), "x");
}

// The folder can be written again at the stop, as when a full disk has room again: the copy has still not been made.
TEST_F(AStateFolder, DoesNotOverwriteADamagedStateThatCouldNotBePutAside) {
  StateFolder states(folder.Path("s"));
  folder.Write("s/driver-1.xml", "x");
  ASSERT_EQ(::chmod(folder.Path("s").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
  {
    const OrdinaryUser user;
    EXPECT_NE(ErrorOf([&] { states.Load(1); }), "");
  }
  ASSERT_EQ(::chmod(folder.Path("s").c_str(), 0755), 0);
  for (const char* const state : {"<A/>", ""}) {
    EXPECT_EQ(ErrorOf([&] { states.Save(1, state); }),
              "s/driver-1.xml: the state is not kept: the one in its place could not be put aside");
    EXPECT_EQ(folder.Read("s/driver-1.xml"), "x");
  }
  EXPECT_THAT(ErrorOf([&] { states.Load(1); }), testing::EndsWith("; kept as driver-1.xml.damaged"));
  states.Save(1, "<A/>");
  EXPECT_EQ(folder.Read("s/driver-1.xml.damaged"), "x");
  EXPECT_EQ(folder.Read("s/driver-1.xml"), "<A/>\n");
}

TEST_F(AStateFolder, KeepsNoStateThatIsTooLargeToBeReadAgain) {
  StateFolder states(folder.Path("s"), 20);
  const std::string largest = "<A>" + std::string(12, 'x') + "</A>";
  states.Save(1, largest);
  EXPECT_EQ(TextOf(states, 1), largest);
  EXPECT_EQ(
      ErrorOf([&] { states.Save(1, "<A>" + std::string(13, 'y') + "</A>"); }),
      "s/driver-1.xml: the state is not kept: it has 21 bytes; allowed: at most 20, because more could not be read again");
  EXPECT_EQ(TextOf(states, 1), largest);
  EXPECT_EQ(Files(), (std::set<std::string>{"driver-1.xml", "lock"}));
}

TEST_F(AStateFolder, KeepsNoStateWithMoreElementsThanCanBeReadAgain) {
  StateFolder states(folder.Path("s"));
  states.Save(1, "<Old/>");
  std::string xml = "<A>";
  for (int i = 0; i != 4000000; ++i) {
    xml += "<b/>";
  }
  EXPECT_THAT(ErrorOf([&] { states.Save(1, xml + "</A>"); }),
              HasSubstr("the state is not kept: it could not be read again: more than "));
  EXPECT_EQ(TextOf(states, 1), "<Old/>");
}

TEST_F(AStateFolder, DoesNotUseAStateThatOthersCanWrite) {
  StateFolder states(folder.Path("s"));
  for (const mode_t mode : {0620U, 0602U}) {
    folder.Write("s/driver-1.xml", "<Planted/>");
    ASSERT_EQ(::chmod(folder.Path("s/driver-1.xml").c_str(), mode), 0);
    EXPECT_THAT(
        ErrorOf([&] { states.Load(1); }),
        StartsWith("s/driver-1.xml: the state cannot be used: other users can write it; kept as driver-1.xml.damaged"));
    EXPECT_EQ(TextOf(states, 1), "none");
  }
}

TEST_F(AStateFolder, DoesNotUseAStateOfAnotherUser) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give files away";
  }
  StateFolder states(folder.Path("s"));
  folder.Write("s/driver-1.xml", "<Planted/>");
  ASSERT_EQ(::chown(folder.Path("s/driver-1.xml").c_str(), 65534, 65534), 0);
  EXPECT_THAT(ErrorOf([&] { states.Load(1); }),
              StartsWith("s/driver-1.xml: the state cannot be used: it belongs to another user (id 65534); kept as "));
}

TEST_F(AStateFolder, StaysTheOneThatWasLockedWhenItIsRenamed) {
  StateFolder states(folder.Path("s"));
  std::filesystem::rename(folder.Path("s"), folder.Path("t"));
  states.Save(1, "<A/>");
  EXPECT_EQ(folder.Read("t/driver-1.xml"), "<A/>\n");
}

TEST_F(AStateFolder, CanBeLookedIntoWhileAHostUsesIt) {
  StateFolder states(folder.Path("s"));
  states.Save(1, "<A/>");
  EXPECT_EQ(LookIntoStateFolder(folder.Path("s"), 1), "<A/>\n");
  EXPECT_EQ(LookIntoStateFolder(folder.Path("s"), 2), "");
}

TEST_F(AStateFolder, IsLeftAsItIsByALook) {
  folder.Write("s/driver-1.xml", "<A>");
  EXPECT_EQ(ErrorOf([&] { LookIntoStateFolder(folder.Path("s"), 1); }).rfind("s/driver-1.xml:1:", 0), 0U);
  EXPECT_EQ(Files(), (std::set<std::string>{"driver-1.xml"}));
  EXPECT_EQ(LookIntoStateFolder(folder.Path("s"), 2), "");
  EXPECT_EQ(Files(), (std::set<std::string>{"driver-1.xml"}));
  try {
    LookIntoStateFolder(folder.Path("t"), 1);
    FAIL();
  } catch (const StateError& error) {
    EXPECT_EQ(error.what(), "cannot look into the state folder \"" + folder.Path("t") +
                                "\": No such file or directory; allowed: a folder that devhost run --state has made");
  }
  EXPECT_FALSE(std::filesystem::exists(folder.Path("t")));
}

}  // namespace
}  // namespace devhost
