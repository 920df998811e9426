// Parts of these files are made of the table of the language (ScriptActions.h). UPDATE_GOLDENS=1 writes them anew.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "devhost/script/ScriptActions.h"
#include "tests/scripts/Transcript.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

// What a form means, in sentences.
template <class Form>
std::string Sentences(const Form& form) {
  std::string text = form.meaning;
  if (text.compare(0, 7, "SUBJECT") != 0) {
    text.front() = static_cast<char>(text.front() - 'a' + 'A');
  }
  return text + "." + (*form.details == '\0' ? "" : " ") + form.details;
}

template <class Forms>
std::string ManPageTable(const Forms& forms) {
  std::string table;
  for (const auto& form : forms) {
    const std::string sentences = Replaced(Sentences(form), ". ", ".\n");
    table += ".TP\n.B " + Replaced(form.synopsis, "-", "\\-") + "\n" + Replaced(sentences, "-", "\\-") + "\n";
  }
  return table;
}

template <class Forms>
std::string MarkdownTable(const Forms& forms) {
  std::string table;
  for (const auto& form : forms) {
    table += "| `" + Replaced(form.synopsis, "|", "\\|") + "` | " + Sentences(form) + " |\n";
  }
  table.pop_back();  // the end of the last line stays where it is
  return table;
}

// The words that stand for themselves, each once.
template <class Forms>
void AddWords(const Forms& forms, std::vector<std::string>& words) {
  for (const auto& form : forms) {
    std::istringstream synopsis(Replaced(form.synopsis, "|", " "));
    for (std::string word; synopsis >> word;) {
      word.erase(std::remove_if(word.begin(), word.end(), [](char c) { return c == '[' || c == ']'; }), word.end());
      const bool isOwn = word.front() >= 'a' && word.front() <= 'z';
      if (isOwn && std::find(words.begin(), words.end(), word) == words.end()) {
        words.push_back(word);
      }
    }
  }
}

std::string Dictionary() {
  std::vector<std::string> words;
  AddWords(ActionForms(), words);
  AddWords(SubjectForms(), words);
  std::string dictionary;
  for (const std::string& word : words) {
    dictionary += "\"" + word + " \"\n";
  }
  return dictionary;
}

// Compares the part of a file between two texts with what it should be, or writes it.
void CheckPart(const std::string& file, const std::string& begin, const std::string& end, const std::string& expected) {
  const std::string path = std::string(SOURCE_FOLDER "/") + file;
  const std::string text = testsupport::ScratchFolder::ReadFile(path);
  const std::size_t start = text.find(begin) + begin.size();
  const std::size_t stop = text.find(end, start);
  ASSERT_TRUE(text.find(begin) != std::string::npos && stop != std::string::npos) << file << " has no part after " << begin;
  const std::string part = text.substr(start, stop - start);
  if (part == expected) {
    return;
  }
  if (testsupport::UpdateGoldens()) {
    std::ofstream(path, std::ios::binary) << text.substr(0, start) << expected << text.substr(stop);
    GTEST_SKIP() << file << " was written anew: look at the change before you keep it";
  }
  ADD_FAILURE() << file << " differs from the table of the language:\n"
                << testsupport::UnifiedDifference(expected, part) << "Write it anew with UPDATE_GOLDENS=1.";
}

TEST(TheManPage, HasTheTableOfActions) {
  CheckPart("docs/man/devhost.1", ".SH ACTIONS\n", ".SH ", ManPageTable(ActionForms()));
}

TEST(TheManPage, HasTheTableOfSubjects) {
  CheckPart("docs/man/devhost.1", ".SH SUBJECTS\n", ".SH ", ManPageTable(SubjectForms()));
}

TEST(ThePageAboutScripts, HasTheTableOfActions) {
  CheckPart("docs/scripts.md", "| action | what it does |\n|---|---|\n", "\n\n", MarkdownTable(ActionForms()));
}

TEST(ThePageAboutScripts, HasTheTableOfSubjects) {
  CheckPart("docs/scripts.md", "| subject | what it is |\n|---|---|\n", "\n\n", MarkdownTable(SubjectForms()));
}

TEST(TheDictionaryOfTheFuzzer, HasTheWordsOfTheLanguage) {
  CheckPart("fuzz/devhost/script/ScriptFuzzer.dict", "# The words of the language.\n", "# ", Dictionary());
}

}  // namespace
}  // namespace devhost
