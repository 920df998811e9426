#include "devhost/check/ReadBack.h"

#include <algorithm>
#include <cstddef>

#include "devhost/check/ConfigText.h"

namespace devhost {

namespace {

using Kind = ReadBack::Kind;

// In the order in which the reader looks for them.
constexpr struct {
  const char* keyword;
  Kind kind;
} kKeywords[] = {{"rocommunity", Kind::Word},    {"rwcommunity", Kind::Word}, {"agentXTimeout", Kind::Field},
                 {"agentXRetries", Kind::Field}, {"sysContact", Kind::Word},  {"sysLocation", Kind::Word},
                 {"sysName", Kind::Word},        {"trap2sink", Kind::Trap}};

// Calls `use` with every piece between two delimiters, empty ones too, and with every delimiter.
template <typename Use>
void ForEachToken(std::string_view line, const char* delimiters, Use use) {
  for (std::size_t from = 0;;) {
    const std::size_t end = std::min(line.find_first_of(delimiters, from), line.size());
    use(line.substr(from, end - from));
    if (end == line.size()) {
      return;
    }
    use(line.substr(end, 1));
    from = end + 1;
  }
}

void ReadWord(std::string_view line, ReadBack& read) {
  std::string value;
  ForEachToken(line, " ", [&](std::string_view token) {
    if (token != read.keyword) {
      value += token;
    }
  });
  read.value = TrimmedView(value);
  read.sets = true;
}

void ReadField(std::string_view line, ReadBack& read) {
  const std::size_t blank = line.find(' ');
  if (blank != std::string_view::npos) {
    const std::size_t begin = std::min(line.find_first_not_of(' ', blank), line.size());
    const std::size_t end = std::min(line.find(' ', begin), line.size());
    read.value = line.substr(begin, end - begin);
    read.sets = true;
  }
}

void ReadTrap(std::string_view line, ReadBack& read) {
  bool closed = false;
  ForEachToken(line, " \"", [&](std::string_view token) {
    if (token == read.keyword) {
      return;
    }
    if (read.target.empty()) {
      read.target = TrimmedView(token);
    } else if (!closed && token == "\"") {
      read.community = std::string(TrimmedView(read.community));
      closed = !read.community.empty();
    } else if (!closed) {
      read.community += token;
    } else if (read.port.empty()) {
      read.port = TrimmedView(token);
    }
  });
  const std::size_t first = std::min(read.community.find_first_not_of('"'), read.community.size());
  read.community = read.community.substr(first, read.community.find_last_not_of('"') + 1 - first);
  read.sets = true;
}

}  // namespace

ReadBack ReadLineBack(std::string_view line) {
  ReadBack read;
  for (const auto& known : kKeywords) {
    if (Contains(line, known.keyword)) {
      read.keyword = known.keyword;
      read.kind = known.kind;
      break;
    }
  }
  if (read.kind == Kind::Word) {
    ReadWord(line, read);
  } else if (read.kind == Kind::Field) {
    ReadField(line, read);
  } else if (read.kind == Kind::Trap) {
    ReadTrap(line, read);
  }
  return read;
}

bool LosesKeyword(std::string_view line, const ReadBack& read) {
  if (read.kind != Kind::Word && read.kind != Kind::Trap) {
    return false;
  }
  int seen = 0;
  ForEachToken(line, read.kind == Kind::Word ? " " : " \"", [&](std::string_view token) { seen += token == read.keyword; });
  return seen > 1;
}

}  // namespace devhost
