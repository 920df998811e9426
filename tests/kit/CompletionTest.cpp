// Completion in the shells of the distribution, with the files that were installed.

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "tests/kit/InstalledKit.h"
#include "tests/kit/Terminal.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testsupport::ScratchFolder;

constexpr char kProject[] =
    "<project><driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/>"
    "<driver id=\"12\" name=\"kitchen\" module=\"simulated_device.so\"><config/></driver>"
    "<driver id=\"13\" name=\"cellar\" module=\"simulated_device.so\"><config/></driver></project>";

// A folder with a project, and a shell in it that finds the installed kit and nothing of the user's.
class AShell : public testing::Test {
 protected:
  AShell() {
    folder.Write("project.xml", kProject);
    folder.Write("with blank/project.xml", kProject);
    folder.Write("states/notes.txt", "");
  }

  std::vector<std::string> Variables() const {
    const InstalledKit& kit = InstalledKit::Get();
    return {"PATH=" + kit.Path("bin") + ":/usr/bin:/bin",
            "XDG_DATA_DIRS=" + kit.Path("share") + ":/usr/share",
            "FPATH_OF_KIT=" + kit.Path("share/zsh/site-functions"),
            "HOME=" + folder.Path(),
            "TERM=xterm",
            "LANG=C.UTF-8"};
  }

  // `settings` bind Control-G to printing the line that is being written, as "line: LINE|".
  void Start(const std::vector<std::string>& arguments, const std::string& settings) {
    m_shell = std::make_unique<Terminal>(arguments, Variables(), folder.Path());
    m_shell->Type(settings + " PS1='> '; echo rea''dy\r");
    m_shell->ReadUntil("ready\r\n");
  }

  // Types `typed` and Tab, and returns what the line is then. What the shell lists on the way is in `listed`.
  std::string Completed(const std::string& typed) {
    m_shell->Type(typed + "\t\a");
    listed = m_shell->ReadUntil("line: [^\n]*\\|\r?\n");
    // Until the prompt is there again, the terminal and not the shell takes what is typed.
    m_shell->ReadUntil("> ");
    m_shell->Type("\025");
    std::smatch line;
    std::regex_search(listed, line, std::regex("line: ([^\n]*)\\|\r?\n$"));
    listed.erase(static_cast<std::size_t>(line.position(0)));
    return line[1];
  }

  const ScratchFolder folder;
  std::string listed;

 private:
  std::unique_ptr<Terminal> m_shell;
};

class InBash : public AShell {
 protected:
  InBash() {
    Start(
        {"bash", "--norc", "--noprofile", "-i"},
        "bind 'set enable-bracketed-paste off'; bind 'set show-all-if-ambiguous on'; bind 'set bell-style none'; "
        "bind -x '\"\\C-g\": printf \"\\nline: %s|\\n\" \"$READLINE_LINE\"'; . /usr/share/bash-completion/bash_completion;");
  }
};

class InZsh : public AShell {
 protected:
  InZsh() {
    Start(
        {"zsh", "-f", "-i"},
        "unsetopt prompt_cr prompt_sp beep; fpath=($FPATH_OF_KIT $fpath); autoload -U compinit; compinit -u -D; bindkey -e; "
        "show-line() { zle -I; print -r -- \"line: $BUFFER|\" }; zle -N show-line; bindkey '^G' show-line; "
        "LISTMAX=1000; setopt no_list_ambiguous;");
  }
};

class InFish : public AShell {
 protected:
  // What fish offers for that line: candidates with their meaning, a line each.
  std::string Offers(const std::string& line) const {
    std::string command = "cd '" + folder.Path() + "' && env -i";
    for (const std::string& variable : Variables()) {
      command += " '" + variable + "'";
    }
    const ShellResult result = RunInShell(command + " fish -c 'complete -C \"" + line + "\"'");
    EXPECT_EQ(result.status, 0) << result.output;
    return result.output;
  }
};

TEST_F(InBash, CommandsAreCompleted) {
  EXPECT_EQ(Completed("devhost ch"), "devhost check ");
  EXPECT_EQ(Completed("devhost "), "devhost ");
  EXPECT_THAT(listed, AllOf(HasSubstr("advise"), HasSubstr("preview"), Not(HasSubstr("__complete"))));
}

TEST_F(InBash, OptionsAndTheirValuesAreCompleted) {
  EXPECT_EQ(Completed("devhost run --col"), "devhost run --color ");
  EXPECT_EQ(Completed("devhost run --color al"), "devhost run --color always ");
  EXPECT_EQ(Completed("devhost run --color=al"), "devhost run --color=always ");
  EXPECT_EQ(Completed("devhost run --color="), "devhost run --color=");
  EXPECT_THAT(listed, AllOf(HasSubstr("auto"), HasSubstr("never")));
}

TEST_F(InBash, FilesAndFoldersAreCompleted) {
  EXPECT_EQ(Completed("devhost run --project proj"), "devhost run --project project.xml ");
  EXPECT_EQ(Completed("devhost run --project=proj"), "devhost run --project=project.xml ");
  EXPECT_EQ(Completed("devhost run --state st"), "devhost run --state states/");
  EXPECT_EQ(Completed("devhost run --state proj"), "devhost run --state proj");
}

TEST_F(InBash, TheDevicesOfTheProjectAreCompleted) {
  EXPECT_EQ(Completed("devhost preview --project project.xml k"), "devhost preview --project project.xml kitchen ");
  EXPECT_EQ(Completed("devhost preview --project ~/project.xml c"), "devhost preview --project ~/project.xml cellar ");
  EXPECT_EQ(Completed("devhost preview --project='with blank/project.xml' k"),
            "devhost preview --project='with blank/project.xml' kitchen ");
  EXPECT_EQ(Completed("devhost preview --project with\\ blank/project.xml k"),
            "devhost preview --project with\\ blank/project.xml kitchen ");
}

TEST_F(InBash, ChecksAreCompletedAlsoBehindAComma) {
  EXPECT_EQ(Completed("devhost conform --explain traps-m"), "devhost conform --explain traps-many ");
  EXPECT_EQ(Completed("devhost conform --only erased,traps-m"), "devhost conform --only erased,traps-many ");
}

TEST_F(InBash, NothingThatIsTypedIsRun) {
  Completed("devhost preview --project $(touch ran) ");
  Completed("devhost preview --project `touch ran` ");
  Completed("devhost preview --project \"$(touch ran)\" ");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("ran")));
}

TEST_F(InBash, TheScriptThatTheProgramPrintsCompletes) {
  EXPECT_EQ(
      InstalledKit::Get()
          .Run("devhost completion bash | cmp - " + InstalledKit::Get().Path("share/bash-completion/completions/devhost"),
               folder.Path())
          .status,
      0);
}

TEST_F(InZsh, CommandsAreCompletedWithTheirMeaning) {
  EXPECT_EQ(Completed("devhost ch"), "devhost check ");
  EXPECT_EQ(Completed("devhost "), "devhost ");
  EXPECT_THAT(listed, AllOf(HasSubstr("preview"), HasSubstr("-- Show what SetDeviceState would change"),
                            Not(HasSubstr("__complete"))));
}

TEST_F(InZsh, OptionsAndTheirValuesAreCompleted) {
  EXPECT_EQ(Completed("devhost run --col"), "devhost run --color ");
  EXPECT_EQ(Completed("devhost run --color al"), "devhost run --color always ");
  EXPECT_EQ(Completed("devhost run --color=al"), "devhost run --color=always ");
}

TEST_F(InZsh, FilesAndFoldersAreCompleted) {
  EXPECT_EQ(Completed("devhost run --project proj"), "devhost run --project project.xml ");
  EXPECT_EQ(Completed("devhost run --project=proj"), "devhost run --project=project.xml ");
  EXPECT_EQ(Completed("devhost run --state st"), "devhost run --state states/");
}

TEST_F(InZsh, TheDevicesOfTheProjectAreCompleted) {
  EXPECT_EQ(Completed("devhost preview --project project.xml k"), "devhost preview --project project.xml kitchen ");
  EXPECT_EQ(Completed("devhost preview --project ~/project.xml c"), "devhost preview --project ~/project.xml cellar ");
  EXPECT_EQ(Completed("devhost preview --project 'with blank/project.xml' k"),
            "devhost preview --project 'with blank/project.xml' kitchen ");
}

TEST_F(InZsh, ChecksAreCompletedAlsoBehindAComma) {
  EXPECT_EQ(Completed("devhost conform --explain traps-m"), "devhost conform --explain traps-many ");
  EXPECT_EQ(Completed("devhost conform --only erased,traps-m"), "devhost conform --only erased,traps-many ");
}

TEST_F(InFish, CommandsAreOfferedWithTheirMeaning) {
  EXPECT_EQ(Offers("devhost ch"), "check\tSay what in an snmpd.conf will surprise its owner\n");
  EXPECT_THAT(Offers("devhost "), AllOf(HasSubstr("preview\tShow what"), Not(HasSubstr("__complete"))));
}

TEST_F(InFish, OptionsAndTheirValuesAreOffered) {
  EXPECT_THAT(Offers("devhost run --col"), testing::StartsWith("--color\tColour"));
  EXPECT_EQ(Offers("devhost run --color al"), "always\n");
  EXPECT_EQ(Offers("devhost run --color=al"), "--color=always\n");
}

TEST_F(InFish, FilesAndFoldersAreOffered) {
  EXPECT_EQ(Offers("devhost run --project proj"), "project.xml\n");
  EXPECT_EQ(Offers("devhost run --project=proj"), "--project=project.xml\n");
  EXPECT_EQ(Offers("devhost run --state st"), "states/\tDirectory\n");
  EXPECT_EQ(Offers("devhost run --state proj"), "");
}

TEST_F(InFish, TheDevicesOfTheProjectAreOffered) {
  EXPECT_EQ(Offers("devhost preview --project project.xml k"), "kitchen\tdriver 12\n");
  EXPECT_EQ(Offers("devhost preview --project with\\ blank/project.xml k"), "kitchen\tdriver 12\n");
  EXPECT_EQ(Offers("devhost preview --project=project.xml c"), "cellar\tdriver 13\n");
}

TEST_F(InFish, ChecksAreOffered) {
  EXPECT_EQ(Offers("devhost conform --only erased,traps-m"), "erased,traps-many\tA list may have 1000 targets.\n");
}

}  // namespace
