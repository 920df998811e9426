#include "drivers/localsnmpd/KeptData.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace drivers {

namespace {

const std::size_t kLongestText = 255;
const std::size_t kLongestUser = 2000;

// What stands behind the keyword and one blank; nothing for a line with another keyword.
std::string_view ValueOf(std::string_view line, std::string_view keyword) {
  const bool isIt = line.size() > keyword.size() && line.substr(0, keyword.size()) == keyword && line[keyword.size()] == ' ';
  return isIt ? line.substr(keyword.size() + 1) : std::string_view();
}

bool IsMadeOf(std::string_view text, std::string_view characters) {
  return !text.empty() && text.find_first_not_of(characters) == std::string_view::npos;
}

bool IsNumber(std::string_view text) {
  return IsMadeOf(text, "0123456789") && text.size() <= 10;
}

// From 5 to 32 bytes, which is what an engine's id may have.
bool IsEngineId(std::string_view text) {
  return text.substr(0, 2) == "0x" && IsMadeOf(text.substr(2), "0123456789abcdefABCDEF") && text.size() >= 12 &&
         text.size() <= 66;
}

// Names and keys in quotes or as hexadecimal digits, and object identifiers.
bool IsUser(std::string_view text) {
  return text.size() <= kLongestUser && IsMadeOf(text, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .\"");
}

bool IsText(std::string_view text) {
  return !text.empty() && text.size() <= kLongestText && std::none_of(text.begin(), text.end(), [](char character) {
    return static_cast<unsigned char>(character) < ' ' || character == 0x7f;
  });
}

struct Rule {
  std::string_view keyword;
  bool (*isRight)(std::string_view);
  bool isLast;  // whether the last such line counts, or the first
};
const Rule kEngineId = {"oldEngineID", &IsEngineId, true};
const Rule kEngineBoots = {"engineBoots", &IsNumber, true};
const std::array<Rule, 4> kOthers = {{{"psyscontact", &IsText, false},
                                      {"psyslocation", &IsText, false},
                                      {"psysname", &IsText, false},
                                      {"pauthtrapenable", &IsNumber, true}}};

// Calls `work` with each line, without its line feed, until it returns false. A line without a line feed was not stored
// whole.
template <class Work>
void ForEachLine(std::string_view text, Work work) {
  for (std::size_t end = text.find('\n'); end != std::string_view::npos && work(text.substr(0, end));
       end = text.find('\n')) {
    text.remove_prefix(end + 1);
  }
}

// The line of that rule, with its line feed; nothing when there is none, or when the one that counts is wrong.
std::string Find(const std::string& stored, const Rule& rule) {
  std::string_view found;
  ForEachLine(stored, [&](std::string_view line) {
    const std::string_view value = ValueOf(line, rule.keyword);
    found = value.empty() ? found : value;
    return rule.isLast || found.empty();
  });
  return rule.isRight(found) ? std::string(rule.keyword) + ' ' + std::string(found) + '\n' : std::string();
}

// The users stand first, behind comments.
std::string FindUsers(const std::string& stored) {
  std::string users;
  ForEachLine(stored, [&users](std::string_view line) {
    const std::string_view user = ValueOf(line, "usmUser");
    if (IsUser(user)) {
      users += std::string(line) + '\n';
    }
    return line.empty() || line.front() == '#' || !user.empty();
  });
  return users;
}

}  // namespace

std::string SelectKeptData(const std::string& stored) {
  const std::string engine = Find(stored, kEngineBoots) + Find(stored, kEngineId);
  if (Find(stored, kEngineBoots).empty() || Find(stored, kEngineId).empty()) {
    return std::string();
  }
  std::string kept = FindUsers(stored) + engine;
  for (const Rule& rule : kOthers) {
    kept += Find(stored, rule);
  }
  return kept;
}

}  // namespace drivers
