#include "devhost/replay/Replay.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "devhost/project/Project.h"
#include "devhost/replay/Conversation.h"
#include "devhost/system/FileText.h"
#include "tests/devhost/support/TemporaryFiles.h"

namespace devhost {
namespace {

using testing::HasSubstr;

// A copy of one of the recorded conversations.
class AReplay : public testing::Test {
 protected:
  void SetUp() override { Take("change"); }

  void Take(const std::string& name) {
    std::filesystem::copy(SOURCE_FOLDER "/contract/conversations/" + name, folder.Path(),
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing);
    lines.clear();
    std::istringstream text(folder.Read(kConversationFile));
    for (std::string line; std::getline(text, line);) {
      lines.push_back(line);
    }
  }

  ReplayResult Play() const {
    std::string text;
    for (const std::string& line : lines) {
      text += line + "\n";
    }
    Masker secrets(false);
    return Replay(folder.Write(kConversationFile, text), MODULE_FOLDER, secrets);
  }

  const testsupport::ScratchFolder folder;
  std::vector<std::string> lines;
};

TEST_F(AReplay, OfWhatTheAgentSaidFindsNoDifference) {
  const ReplayResult result = Play();
  EXPECT_EQ(result.difference.what, "");
  EXPECT_EQ(result.lines, lines.size());
}

TEST_F(AReplay, LeavesTheFilesAndNoCopyOfThem) {
  const TemporaryFiles files;
  const std::string before = folder.Read("kitchen/snmpd.conf");
  Play();
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), before);
  EXPECT_TRUE(files.Become(true));
}

// Whatever line is another one, or missing, or too much: the difference is in its place.
TEST_F(AReplay, FindsEveryLineThatIsAnotherOne) {
  const std::vector<std::string> right = lines;
  for (std::size_t i = 0; i != right.size(); ++i) {
    lines = right;
    const std::size_t kind = lines[i].find("\"kind\":\"") + 8;
    lines[i].replace(kind, lines[i].find('"', kind) - kind, "manners");
    const ReplayResult result = Play();
    EXPECT_EQ(result.line, i + 1);
    EXPECT_EQ(result.lines, i);
    EXPECT_EQ(result.difference.what, "something else came");
  }
}

TEST_F(AReplay, FindsThatSomethingIsMissing) {
  const std::string missing = "{\"kind\":\"notification\",\"driver\":\"agent\",\"xml\":\"<x/>\"}";
  lines.push_back(missing);
  ReplayResult result = Play();
  EXPECT_EQ(result.line, lines.size());
  EXPECT_THAT(result.difference.details,
              testing::ElementsAre("  expected: notification of agent <x/>", "  found:    nothing more"));
  lines.pop_back();
  // In front of the next command, which is not sent then.
  lines.insert(lines.begin() + 5, missing);
  result = Play();
  EXPECT_EQ(result.line, 6U);
  EXPECT_EQ(result.difference.details.back(), "  found:    nothing more");
}

TEST_F(AReplay, FindsThatThereIsMore) {
  lines.pop_back();
  const ReplayResult result = Play();
  EXPECT_EQ(result.line, lines.size() + 1);
  EXPECT_THAT(result.difference.details, testing::ElementsAre("  expected: nothing more", "  found:    unload of agent"));
}

TEST_F(AReplay, FindsThatACommandIsNotKnown) {
  lines[3] = "{\"kind\":\"command\",\"driver\":\"agent\",\"name\":\"Unknown\",\"parameters\":{}}";
  const ReplayResult result = Play();
  EXPECT_EQ(result.line, 4U);
  EXPECT_THAT(result.difference.details.back(), testing::StartsWith("  found:    error of agent: driver 1"));
}

TEST_F(AReplay, PlaysWhatAShellHasRecorded) {
  lines.insert(lines.begin() + 3, "{\"n\":4,\"kind\":\"done\",\"good\":true}");
  EXPECT_EQ(Play().difference.what, "");
}

TEST_F(AReplay, NamesTheLineOfAConversationThatIsWrong) {
  lines[2] = "x";
  EXPECT_THROW(
      try { Play(); } catch (const ConversationError& error) {
        EXPECT_THAT(error.what(), HasSubstr("conversation.ndjson:3: "));
        throw;
      },
      ConversationError);
}

TEST_F(AReplay, NeedsAProjectBesideTheConversation) {
  std::filesystem::remove(folder.Path(kConversationProject));
  EXPECT_THROW(Play(), ProjectError);
}

TEST_F(AReplay, RefusesAFolderWithALinkOrWithTooMuchInIt) {
  ASSERT_EQ(::symlink("/etc/passwd", folder.Path("link").c_str()), 0);
  EXPECT_THROW(Play(), FileError);
  std::filesystem::remove(folder.Path("link"));
  EXPECT_EQ(Play().difference.what, "");
  for (int i = 0; i != 1000; ++i) {
    folder.Write("many/" + std::to_string(i), "");
  }
  EXPECT_THROW(Play(), FileError);
}

// As an author of a driver has it who tries a module of their own.
TEST_F(AReplay, TakesModulesFromWhereTheProjectIs) {
  const testsupport::ScratchFolder modules;
  std::filesystem::create_symlink(MODULE_FOLDER "/simulated_device.so", modules.Path("own.so"));
  const std::string relative = std::filesystem::relative(modules.Path("own.so"), folder.Path()).string();
  std::string project = folder.Read(kConversationProject);
  project.replace(project.find("simulated_device.so"), 19, relative);
  folder.Write(kConversationProject, project);
  EXPECT_EQ(Play().difference.what, "");
}

TEST(Conversations, AreFoundInAFolderOfFolders) {
  const testsupport::ScratchFolder folder;
  const std::string second = folder.Write("b/conversation.ndjson", "");
  const std::string first = folder.Write("a/conversation.ndjson", "");
  folder.Write("c/other", "");
  EXPECT_THAT(FindConversations(folder.Path()), testing::ElementsAre(first, second));
  EXPECT_THAT(FindConversations(folder.Path("a")), testing::ElementsAre(first));
  EXPECT_THAT(FindConversations(first), testing::ElementsAre(first));
  EXPECT_THROW(FindConversations(folder.Path("c")), FileError);
}

}  // namespace
}  // namespace devhost
