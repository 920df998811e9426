#ifndef DEVHOST_TEXT_WORDS_H
#define DEVHOST_TEXT_WORDS_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// A line that cannot be cut into words; the text says what is wrong and what is allowed.
class WordError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Cuts a line (without its line feed) into words, much as a shell does: words stand between blanks and tabs; '...' takes
// everything as it is; "..." takes everything but the escapes \\ \" \n \r \t \xNN; a backslash elsewhere takes the next
// character as it is; a # at the start of a word begins a comment. Quoted and bare pieces that touch make one word, and ''
// is an empty word. Nothing is expanded. Throws WordError, also for more than
// 200000 words.
std::vector<std::string> SplitWords(std::string_view line);

// `text` as one word that SplitWords reads back as `text`; bare when it needs no quotes.
std::string AsWord(std::string_view text);

// Quoted shows at most this many bytes of a text.
inline constexpr std::size_t kMostQuoted = 200;

// `text` in double quotes for a message: control characters are made visible, a long text is cut.
std::string Quoted(std::string_view text);

// `text` on one line: control characters become \n, \t and so on, or \xNN; everything else stays.
std::string OneLine(std::string_view text);

// A number with what it counts, for a message: "1 error", "2 errors".
std::string Counted(std::size_t count, std::string_view what);

bool StartsWith(std::string_view text, std::string_view start) noexcept;

}  // namespace devhost

#endif
