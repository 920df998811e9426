#include "devhost/script/ScriptReader.h"

#include <string_view>
#include <utility>

#include "devhost/script/ScriptActions.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

Script LoadScript(const std::string& path) {
  NamedText read = ReadNamedText(path);
  return Script{std::move(read.name), FolderOf(path), std::move(read.text)};
}

bool ScriptReader::Next(Action& action) {
  const std::string_view text = m_script.text;
  while (m_at < text.size()) {
    const std::size_t feed = text.find('\n', m_at);
    const std::size_t end = feed == std::string_view::npos ? text.size() : feed;
    std::string_view line = text.substr(m_at, end - m_at);
    m_at = feed == std::string_view::npos ? end : feed + 1;
    ++m_line;
    if (!line.empty() && line.back() == '\r') {
      line.remove_suffix(1);
    }
    try {
      if (line.find('\0') != std::string_view::npos) {
        throw WordError("the line holds a NUL byte: a script is text");
      }
      const std::vector<std::string> words = SplitWords(line);
      if (!words.empty()) {
        action = ParseAction(words, m_script.folder, m_names);
        return true;
      }
    } catch (const WordError& error) {
      throw ScriptError(Place().text + ": " + error.what());
    } catch (const std::runtime_error& error) {
      throw ScriptError(Place().text + ": " + error.what());
    }
  }
  return false;
}

std::size_t CheckScript(const Script& script, const DriverNames& names) {
  ScriptReader reader(script, names);
  Action action;
  std::size_t count = 0;
  while (reader.Next(action)) {
    ++count;
  }
  return count;
}

}  // namespace devhost
