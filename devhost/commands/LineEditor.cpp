#include "devhost/commands/LineEditor.h"

#ifdef DEVHOST_LINE_EDITOR

#include <histedit.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <memory>
#include <utility>

namespace devhost {

namespace {

constexpr int kHistorySize = 1000;

// How many letters all of the words begin with.
std::size_t CommonLength(const std::vector<std::string>& words) {
  std::size_t length = words.front().size();
  for (const std::string& word : words) {
    const auto differs = std::mismatch(word.begin(), word.end(), words.front().begin(), words.front().end());
    length = std::min(length, static_cast<std::size_t>(differs.first - word.begin()));
  }
  return length;
}

class Editor {
 public:
  Editor(std::string prompt, SuggestWords suggest)
      : m_prompt(std::move(prompt)),
        m_suggest(std::move(suggest)),
        m_history(::history_init(), &::history_end),
        m_editor(::el_init("devhost", stdin, stdout, stderr), &::el_end) {
    HistEvent event;
    ::history(m_history.get(), &event, H_SETSIZE, kHistorySize);
    ::history(m_history.get(), &event, H_SETUNIQUE, 1);
    ::el_set(m_editor.get(), EL_CLIENTDATA, this);
    ::el_set(m_editor.get(), EL_PROMPT, &Editor::Prompt);
    ::el_set(m_editor.get(), EL_EDITOR, "emacs");
    ::el_set(m_editor.get(), EL_SIGNAL, 1);
    ::el_set(m_editor.get(), EL_HIST, &::history, m_history.get());
    // Given narrow texts, the library copies them and never frees the copies.
    ::el_wset(m_editor.get(), EL_ADDFN, L"suggest", L"offer words", &Editor::Suggest);
    ::el_set(m_editor.get(), EL_BIND, "^I", "suggest", nullptr);
    // While a line is edited, the terminal sends no signals, so Ctrl-C is a key like any other.
    ::el_set(m_editor.get(), EL_SETTY, "-d", "-isig", nullptr);
    ::el_set(m_editor.get(), EL_BIND, "^C", "em-kill-line", nullptr);
    // A Ctrl-D that is typed while a line is played comes as a zero byte: the terminal has taken it for an end of its own.
    ::el_set(m_editor.get(), EL_BIND, "^@", "em-delete-or-list", nullptr);
  }

  std::optional<std::string> Next() {
    // Before the prompt: the library shows it first, and what is typed in between would meet the terminal's own keys.
    ::el_set(m_editor.get(), EL_PREP_TERM, 1);
    int length = 0;
    const char* const text = ::el_gets(m_editor.get(), &length);
    if (text == nullptr || length <= 0) {
      std::fputc('\n', stdout);
      std::fflush(stdout);
      return std::nullopt;
    }
    std::string line(text, static_cast<std::size_t>(length));
    if (line.find_first_not_of(" \t\n") != std::string::npos) {
      HistEvent event;
      ::history(m_history.get(), &event, H_ENTER, line.c_str());
    }
    line.erase(line.find_last_not_of('\n') + 1);
    return line;
  }

 private:
  static Editor& Of(EditLine* editor) {
    void* self = nullptr;
    ::el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<Editor*>(self);
  }

  // The library declares that it may write to it, and does not.
  static char* Prompt(EditLine* editor) { return Of(editor).m_prompt.data(); }

  static unsigned char Suggest(EditLine* editor, int) {
    const LineInfo* const line = ::el_line(editor);
    const std::string before(line->buffer, line->cursor);
    const std::vector<std::string> words = Of(editor).m_suggest(before);
    if (words.empty()) {
      return CC_ERROR;
    }
    const std::size_t written = before.size() - (before.find_last_of(" \t") + 1);
    std::string rest = words.front().substr(written, CommonLength(words) - written);
    rest += words.size() == 1 ? " " : "";
    if (!rest.empty()) {
      ::el_insertstr(editor, rest.c_str());
      return CC_REFRESH;
    }
    std::fputc('\n', stdout);
    for (const std::string& word : words) {
      std::fprintf(stdout, "%s  ", word.c_str());
    }
    std::fputc('\n', stdout);
    return CC_REDISPLAY;
  }

  std::string m_prompt;
  SuggestWords m_suggest;
  std::unique_ptr<History, void (*)(History*)> m_history;
  std::unique_ptr<EditLine, void (*)(EditLine*)> m_editor;
};

}  // namespace

LineSource EditedLines(const std::string& prompt, SuggestWords suggest) {
  // The library reads and shows characters, not bytes. A terminal of today sends UTF-8; that of the environment may not be
  // installed. Nothing else of the process depends on this category.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  const auto editor = std::make_shared<Editor>(prompt, std::move(suggest));
  return [editor] { return editor->Next(); };
}

}  // namespace devhost

#else

namespace devhost {

LineSource EditedLines(const std::string&, SuggestWords) {
  return {};
}

}  // namespace devhost

#endif
