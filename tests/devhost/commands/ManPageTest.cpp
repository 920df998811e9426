// The man page is written by hand; these tests keep it and the commands together.
#include <gmock/gmock.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "devhost/commands/CommandLine.h"
#include "devhost/commands/Commands.h"
#include "devhost/script/ScriptActions.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using Names = std::set<std::string>;

std::string ManPage() {
  const std::string page = testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/man/devhost.1");
  return std::regex_replace(page, std::regex("\\\\-"), "-");
}

// The terms (lines that begin with .B) of one section of the man page.
Names Terms(const std::string& section) {
  std::istringstream page(ManPage());
  std::string line;
  bool inside = false;
  Names terms;
  while (std::getline(page, line)) {
    if (line.compare(0, 4, ".SH ") == 0) {
      inside = line == ".SH " + section;
    } else if (inside && line.compare(0, 3, ".B ") == 0) {
      terms.insert(line.substr(3));
    }
  }
  return terms;
}

TEST(TheManPage, NamesEveryCommandAndNoOther) {
  Names commands;
  for (const Command& command : Commands()) {
    commands.insert(command.name);
  }
  EXPECT_EQ(Terms("COMMANDS"), commands);
}

// With the word that stands for the value, as the help shows it.
TEST(TheManPage, NamesEveryOptionAndNoOther) {
  Names options = {"-h, --help", "--version"};
  for (const Command& command : Commands()) {
    for (const CommandOption& option : command.options) {
      if (!option.IsArgument() && !option.isHidden) {
        options.insert(option.takes == CommandOption::Takes::Nothing ? option.name
                                                                     : std::string(option.name) + " " + option.value);
      }
    }
  }
  EXPECT_EQ(Terms("OPTIONS"), options);
}

TEST(TheManPage, NamesEveryActionOfTheHelpAndNoOther) {
  const std::string help = MakeRun().footer;
  Names actions;
  for (const ActionForm& form : ActionForms()) {
    actions.insert(form.synopsis);
    EXPECT_THAT(help, testing::HasSubstr(form.synopsis));
  }
  EXPECT_EQ(Terms("ACTIONS"), actions);
}

TEST(TheManPage, HasTheVersionOfTheProgram) {
  const char* const argv[] = {"devhost", "--version"};
  const std::string version = ParseCommandLine(2, argv, Commands()).text;
  EXPECT_THAT(ManPage(), testing::HasSubstr('"' + version.substr(0, version.find('\n')) + '"'));
}

TEST(TheManPage, NamesEveryExitStatus) {
  EXPECT_EQ(Terms("EXIT STATUS"), (Names{"0", "1", "2"}));
}

TEST(TheManPage, DescribesShortXmlByteOrderMarksAndDriversThatCannotStart) {
  const std::string page = ManPage();
  EXPECT_THAT(page, testing::AllOf(testing::HasSubstr("100 characters"), testing::HasSubstr("UTF-8 byte order mark"),
                                   testing::HasSubstr("could not start (its Initialize")));
}

}  // namespace
}  // namespace devhost
