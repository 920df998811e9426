#include "devhost/check/AccessLine.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <string_view>

#include "devhost/check/Source.h"
#include "devhost/check/Subtree.h"

namespace devhost {

namespace {

using Kind = AccessLine::Kind;

constexpr char kBlanks[] = " \t\n\v\f\r";
constexpr std::size_t kLongestName = 32;

// The pieces between such characters, none of which is empty.
std::vector<std::string> Pieces(std::string_view text, const char* separators) {
  std::vector<std::string> pieces;
  for (std::size_t at = text.find_first_not_of(separators); at < text.size();) {
    const std::size_t end = std::min(text.find_first_of(separators, at), text.size());
    pieces.emplace_back(text.substr(at, end - at));
    at = text.find_first_not_of(separators, end);
  }
  return pieces;
}

bool IsModel(const std::string& text, bool hasAny) {
  const std::string lower = InLowerCase(text);
  return lower == "v1" || lower == "v2c" || (hasAny && lower == "any") || text == "usm" || text == "tsm";
}

bool IsLevel(const std::string& text) {
  static const std::set<std::string> kLevels = {"noauth", "noauthnopriv", "auth", "authnopriv", "priv", "authpriv"};
  return kLevels.count(InLowerCase(text)) != 0;
}

bool IsViewType(const std::string& text) {
  static const std::set<std::string> kTypes = {"read", "write", "notify", "log", "execute", "net"};
  return kTypes.count(text) != 0;
}

constexpr char kNoModel[] = "it knows no such security model; v1, v2c, usm and tsm are some";
constexpr char kAnyModel[] = "any is not a security model here, but the name is in the group for each of them";
constexpr char kNoLevel[] = "it knows no such security level; noauth, auth and priv are those that it knows";
constexpr char kNoType[] = "it knows no such type of access; read, write and notify are some";
constexpr char kNoSubtree[] = "the subtree is not an object identifier such as .1.3.6.1";
constexpr char kZeroPrefix[] = "it takes 0 for exact, and asks for exact or prefix";
constexpr char kNoPrefix[] = "it takes exact or prefix for the context, in lower case, and nothing else";

// Reads the words of one line in turn. The first problem counts.
class Reader {
 public:
  Reader(const Directive& setting, Kind kind, bool isCutAtBlanks) : m_setting(setting) {
    m_line.kind = kind;
    if (isCutAtBlanks) {
      m_words = Pieces(setting.rest, kBlanks);
      return;
    }
    m_words.reserve(setting.words.size());
    for (const DirectiveWord& word : setting.words) {
      m_words.push_back(word.text);
    }
  }

  AccessLine ReadCommunity(bool hasTypes) {
    if (hasTypes) {
      Types();
      Check(!Next("the community is missing").empty(), "the community is missing");
    } else {
      m_at = 1;  // the community itself is judged by rules of its own
    }
    ReadAddress();
    ReadView();
    return std::move(m_line);
  }

  AccessLine ReadUser(bool hasTypes) {
    if (hasTypes) {
      Types();
    }
    if (Peek() == "-s") {
      ++m_at;
      Check(IsModel(Next("a security model is missing"), false), kNoModel);
    }
    const std::string name = Next("the user is missing");
    m_line.group = m_setting.keyword == "authgroup" ? name : "";
    Check(m_line.group.find_first_of(kBlanks) == std::string::npos, "a group with a space in it cannot stand in this line");
    Check(!name.empty(), "the user is missing");
    if (HasMore()) {
      Check(IsLevel(Next("")), kNoLevel);
    }
    ReadView();
    return std::move(m_line);
  }

  AccessLine ReadName() {
    if (Peek() == "-Cn") {
      ++m_at;
      Next("the context behind -Cn is missing");
    }
    m_line.name = Next("the security name is missing");
    Check(!m_line.name.empty(), "the security name is empty");
    Check(m_line.name.size() <= kLongestName, "the security name is longer than 32 bytes");
    if (!HasMore()) {
      Check(false, "the address that may use it is missing");
    }
    ReadAddress();
    Check(!Next("the community is missing").empty(), "the community is missing");
    return std::move(m_line);
  }

  AccessLine ReadMember() {
    m_line.group = Next("the group is missing");
    const std::string model = Next("the security model is missing");
    m_line.name = Next("the security name is missing");
    Check(!m_line.group.empty(), "the group is missing");
    Check(!m_line.name.empty(), "the security name is missing");
    const bool isOfAny = InLowerCase(model) == "any";
    m_line.isTakenAnyway = isOfAny && m_line.problem.empty();
    Check(IsModel(model, false), isOfAny ? kAnyModel : kNoModel);
    m_line.isOfCommunities = isOfAny || InLowerCase(model) == "v1" || InLowerCase(model) == "v2c";
    return std::move(m_line);
  }

  // "access" and "setaccess", which differ at the end.
  AccessLine ReadRights() {
    constexpr char kMissing[] = "its eight words are not all there; a context that is empty is written as two quotes";
    m_line.group = Next(kMissing);
    const std::string context = Next(kMissing);
    Check(m_line.group.size() <= kLongestName && context.size() <= kLongestName,
          "the group or the context is longer than 32 bytes");
    const std::string model = Next(kMissing);
    const std::string level = Next(kMissing);
    const std::string prefix = Next(kMissing);
    Check(IsModel(model, true), kNoModel);
    Check(IsLevel(level), kNoLevel);
    m_line.isTakenAnyway = prefix == "0" && m_line.problem.empty();
    Check(prefix == "exact" || prefix == "prefix", prefix == "0" ? kZeroPrefix : kNoPrefix);
    if (m_setting.keyword == "setaccess") {
      Check(IsViewType(Next("the type of access is missing")), kNoType);
      Use(Next("the view is missing"));
      return std::move(m_line);
    }
    for (int view = 0; view != 3; ++view) {
      Use(Next(kMissing));
    }
    return std::move(m_line);
  }

  AccessLine ReadGroupView() {
    Types();
    m_line.group = Next("the group is missing");
    Use(Next("the view is missing"));
    Check(!HasMore() || IsLevel(Next("")), kNoLevel);
    return std::move(m_line);
  }

  AccessLine ReadViewItself() {
    m_line.name = Next("the name of the view is missing");
    Check(m_line.name.size() <= kLongestName, "the name of the view is longer than 32 bytes");
    const std::string type = Next("included or excluded is missing");
    Check(type == "included" || type == "excluded", "it takes included or excluded, in lower case, and nothing else");
    Judge(Next("the subtree is missing"));
    std::string mask;
    while (HasMore()) {
      mask += Next("") + " ";
    }
    for (const std::string& byte : Pieces(mask, " .:")) {
      Check(std::string_view("0123456789abcdefABCDEF+-").find(byte.front()) != std::string_view::npos,
            "the mask is not a row of hexadecimal bytes; it knows no comments in this line");
    }
    return std::move(m_line);
  }

 private:
  bool HasMore() const { return m_at < m_words.size(); }
  std::string Peek() const { return HasMore() ? m_words[m_at] : std::string(); }
  void Check(bool isGood, const std::string& problem) {
    if (!isGood && m_line.problem.empty()) {
      m_line.problem = problem;
    }
  }
  std::string Next(const char* missing) {
    Check(HasMore(), missing);
    return HasMore() ? m_words[m_at++] : std::string();
  }
  void Types() {
    for (const std::string& type : Pieces(Next("the type of access is missing"), ",|:")) {
      Check(IsViewType(type), kNoType);
    }
  }
  void ReadAddress() {
    if (HasMore()) {
      // com2secunix has the path of a socket instead.
      if (const std::optional<Source> source = ReadSource(m_setting)) {
        const std::string problem = WhyNoSource(*source);
        Check(problem.empty(), problem);
        m_line.hasHostName = IsLookedUp(*source);
      }
      ++m_at;
    }
  }
  void Judge(const std::string& subtree) {
    const Subtree judged = JudgeSubtree(subtree);
    Check(judged != Subtree::Wrong, kNoSubtree);
    m_line.hasObjectName = judged == Subtree::Named;
  }
  void ReadView() {
    if (Peek() == "-V") {
      ++m_at;
      Use(Next("the view behind -V is missing"));
    } else if (HasMore()) {
      Judge(Next(""));
    }
    Check(Peek().find_first_of(kBlanks) == std::string::npos, "a context with a space in it cannot stand in this line");
  }
  void Use(const std::string& view) {
    if (m_line.problem.empty()) {
      m_line.views.push_back(view);
    }
  }

  const Directive& m_setting;
  AccessLine m_line;
  std::vector<std::string> m_words;
  std::size_t m_at = 0;
};

using Read = AccessLine (*)(const Directive& setting);

const std::map<std::string_view, Read>& Readers() {
  const Read community = [](const Directive& line) { return Reader(line, Kind::Community, false).ReadCommunity(false); };
  const Read user = [](const Directive& line) { return Reader(line, Kind::User, false).ReadUser(false); };
  const Read name = [](const Directive& line) { return Reader(line, Kind::Name, false).ReadName(); };
  const Read rights = [](const Directive& line) { return Reader(line, Kind::Rights, true).ReadRights(); };
  static const std::map<std::string_view, Read> kReaders = {
      {"rocommunity", community},
      {"rwcommunity", community},
      {"rocommunity6", community},
      {"rwcommunity6", community},
      {"rouser", user},
      {"rwuser", user},
      {"com2sec", name},
      {"com2sec6", name},
      {"com2secunix", name},
      {"group", [](const Directive& line) { return Reader(line, Kind::Member, false).ReadMember(); }},
      {"access", rights},
      {"setaccess", rights},
      {"view", [](const Directive& line) { return Reader(line, Kind::View, true).ReadViewItself(); }},
      {"authcommunity", [](const Directive& line) { return Reader(line, Kind::Community, false).ReadCommunity(true); }},
      {"authuser", [](const Directive& line) { return Reader(line, Kind::User, false).ReadUser(true); }},
      {"authgroup", [](const Directive& line) { return Reader(line, Kind::Rights, false).ReadUser(true); }},
      {"authaccess", [](const Directive& line) { return Reader(line, Kind::Rights, true).ReadGroupView(); }}};
  return kReaders;
}

}  // namespace

bool IsAccess(std::string_view keyword) {
  return Readers().count(keyword) != 0;
}

std::optional<AccessLine> ReadAccess(const Directive& setting) {
  const auto reader = Readers().find(setting.keyword);
  if (reader == Readers().end()) {
    return std::nullopt;
  }
  // Without a value, or with an empty community, the line is not about anything.
  const bool isEmpty =
      setting.words.empty() || (setting.words.front().text.empty() && reader->second == Readers().at("rocommunity"));
  if (isEmpty) {
    return std::nullopt;
  }
  return reader->second(setting);
}

}  // namespace devhost
