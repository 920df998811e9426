// The man page is written by hand; these tests keep it and the program's own help together.
#include <gmock/gmock.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "devhost/commands/CommandLine.h"
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

std::string Help(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "devhost");
  const CommandLine line = ParseCommandLine(static_cast<int>(arguments.size()), arguments.data(), "lib");
  EXPECT_EQ(line.kind, CommandLine::Kind::Answer);
  return line.text;
}

Names Matches(const std::string& text, const std::string& expression) {
  const std::regex pattern(expression);
  Names names;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    names.insert((*match)[1].str());
  }
  return names;
}

// The part of a help text under one heading.
std::string Under(const std::string& help, const std::string& heading) {
  const std::size_t start = help.find("\n" + heading + ":\n");
  if (start == std::string::npos) {
    return "";
  }
  return help.substr(start, help.find("\n\n", start + 1) - start);
}

TEST(TheManPage, NamesEveryCommandOfTheHelpAndNoOther) {
  const Names commands = Matches(Under(Help({"--help"}), "Subcommands"), "\n  ([a-z]+) ");
  EXPECT_THAT(commands, testing::Contains("run"));
  EXPECT_EQ(Terms("COMMANDS"), commands);
}

TEST(TheManPage, NamesEveryOptionOfTheHelpAndNoOther) {
  Names options;
  Names commands = Terms("COMMANDS");
  options.merge(Matches(Under(Help({"--help"}), "Options"), "(--[a-z-]+)"));
  for (const std::string& command : commands) {
    options.merge(Matches(Under(Help({command.c_str(), "--help"}), "Options"), "(--[a-z-]+)"));
  }
  EXPECT_THAT(options, testing::IsSupersetOf({"--help", "--version", "--project"}));
  Names described;
  for (const std::string& term : Terms("OPTIONS")) {
    described.merge(Matches(term, "(--[a-z-]+)"));
  }
  EXPECT_EQ(described, options);
}

TEST(TheManPage, NamesEveryActionOfTheHelpAndNoOther) {
  const std::string help = Help({"run", "--help"});
  Names actions;
  for (const ActionForm& form : ActionForms()) {
    actions.insert(form.synopsis);
    EXPECT_THAT(help, testing::HasSubstr(form.synopsis));
  }
  EXPECT_EQ(Terms("ACTIONS"), actions);
}

TEST(TheManPage, NamesEveryExitStatus) {
  EXPECT_EQ(Terms("EXIT STATUS"), (Names{"0", "1", "2"}));
}

TEST(TheManPage, TellsOfShortXmlOfByteOrderMarksAndOfDriversThatCannotStart) {
  const std::string page = ManPage();
  EXPECT_THAT(page, testing::AllOf(testing::HasSubstr("100 characters"), testing::HasSubstr("UTF-8 byte order mark"),
                                   testing::HasSubstr("could not start (its Initialize")));
}

}  // namespace
}  // namespace devhost
