#ifndef DEVHOST_SECRETS_CONFIG_SECRETS_H
#define DEVHOST_SECRETS_CONFIG_SECRETS_H

#include <cstddef>
#include <string>
#include <string_view>

// What may be seen of an snmpd.conf. Only what is understood is shown.
namespace devhost {

// Why a text is not shown at all, or "": it is not plain text, or it is in an encoding in which nothing of it is understood.
std::string WhyNotPlain(std::string_view text);

// How many bytes at the front of a line may be shown, the blanks in front of what is hidden included:
// - the whole of a harmless directive, of a blank line, and of a comment that Debian or the agent has written,
// - of any other comment, what explains in plain words (Explanation.h), when no word in it is near to a directive or to a
// word
//   for a secret, such as "community"; else the marks in front of it,
// - the name of another directive, also when it is misspelt by one letter or begins a comment,
// - nothing of any other line.
// Of a line that holds a control character but tabs, an invisible or no-break character, a byte that is not UTF-8, that ends
// in a backslash or is too long for the daemon, at most the name is shown, and nothing of a comment.
std::size_t ShownLength(std::string_view line);

enum class WrittenBy {
  Us,     // what is said about communities in general is not a secret
  Others  // a driver or a program, which may say: the community is X
};

// The same for a line of free text, a message or the output of a program: all in front of what looks like a directive that
// may hold a secret, like the options of an SNMP program, or like a community=VALUE.
std::size_t ShownLengthOfFreeText(std::string_view line, WrittenBy author = WrittenBy::Us);

// The letters, digits and underscores at the front of a text: a name, wherever it ends.
std::string_view NameAt(std::string_view text);

// How many bytes at the front of a line are the name of a directive and the marks before it; 0 for other lines.
std::size_t LengthOfKeyword(std::string_view line);

// Whether the first character of a line that is not a blank begins a comment.
bool IsComment(std::string_view line);

}  // namespace devhost

#endif
