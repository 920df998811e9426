#include "devhost/secrets/Masker.h"

#include <algorithm>
#include <utility>

#include "devhost/secrets/ConfigSecrets.h"
#include "devhost/secrets/Explanation.h"
#include "devhost/secrets/Fields.h"
#include "devhost/secrets/LineSecrets.h"
#include "devhost/secrets/ProgramLine.h"
#include "devhost/secrets/Readings.h"
#include "devhost/snmpd/DirectiveNames.h"
#include "devhost/snmpd/LineCutter.h"
#include "devhost/snmpd/WordCutter.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
// Of the lines of files that are kept to be shown again.
constexpr std::size_t kMostLines = 2000;
constexpr std::size_t kLongestLine = 256;

// The setting that an element is about, where it says so.
std::string_view SettingOf(const XmlElement& element) {
  const std::string* const name = element.FindAttribute("name");
  return name == nullptr ? std::string_view() : *name;
}

// The text with each of its lines as `shown` gives it.
template <class Shown>
std::string EachLine(std::string_view text, Shown shown) {
  std::string lines;
  for (LineCutter cutter(text); cutter.Next();) {
    lines.append(shown(cutter.Line())).append(1, '\n');
  }
  if (!text.empty() && text.back() != '\n') {
    lines.pop_back();
  }
  return lines;
}

bool IsBlankText(std::string_view text) {
  return std::all_of(text.begin(), text.end(), IsConfigBlank);
}

// Whether the next line may belong to this one.
bool IsContinued(std::string_view line) {
  while (!line.empty() && IsConfigBlank(line.back())) {
    line.remove_suffix(1);
  }
  return !line.empty() && line.back() == '\\';
}

// What may be seen of a text, then the mask for the rest.
std::string WithMask(std::string_view shown) {
  const bool needsBlank = !shown.empty() && !IsConfigBlank(shown.back());
  return std::string(shown) + (needsBlank ? " " : "") + kMask;
}

bool IsSwitch(std::string_view word) {
  return word == "true" || word == "false" || (word.size() <= 11 && word.find_first_not_of("-0123456789") == npos);
}

bool IsPort(std::string_view word) {
  return word.size() <= 5 && word.find_first_not_of("0123456789") == npos;
}

// A text without what looks like a secret's place, line by line.
std::string WithoutPlaces(std::string_view text, WrittenBy author) {
  bool continues = false;
  return EachLine(text, [&continues, author](std::string_view line) {
    const std::size_t length = continues || line.find('\0') != npos ? 0 : ShownLengthOfFreeText(line, author);
    continues = length != line.size() && IsContinued(line);
    return IsBlankText(line.substr(length)) ? std::string(line) : WithMask(line.substr(0, length));
  });
}

bool IsKnownWord(std::string_view word) {
  return word == "true" || word == "false" || (word.size() < 4 && IsSwitch(word)) || FindField(word) != Field::Unknown ||
         FindSetting(word) != Setting::Unknown || IsOperation(word) ||
         FindDirectiveName(word).spelling == KnownName::Spelling::Exact;
}

}  // namespace

std::string Masker::Secret(std::string_view text) {
  if (!m_showSecrets) {
    m_known.LearnShort(text);
  }
  return Hide(text);
}

// A text that may be a secret.
std::string Masker::Hide(std::string_view text) {
  if (m_showSecrets || text.empty()) {
    return std::string(text);
  }
  m_known.Learn(text);
  return kMask;
}

std::string Masker::SettingValue(std::string_view name, std::string_view value) {
  const Setting setting = FindSetting(name);
  const bool isShown = setting == Setting::Shown || (setting == Setting::Switch && IsSwitch(value));
  return isShown ? Text(value) : setting == Setting::Secret ? Secret(value) : Hide(value);
}

std::string Masker::FieldValue(std::string_view name, const std::string& value, const FieldPlace& place) {
  bool isShown = false;
  switch (FindField(name)) {
    case Field::Shown:
      isShown = true;
      break;
    case Field::Switch:
      isShown = IsSwitch(value);
      break;
    case Field::FreeText:
      return Text(value);
    case Field::Name:
      if (IsNearSetting(value)) {
        return value;
      }
      isShown = place.owner == "variable";
      break;
    case Field::Operation:
      isShown = IsOperation(value);
      break;
    case Field::Value:
      if (place.owner != "count") {
        return SettingValue(place.setting, value);
      }
      isShown = IsSwitch(value);
      break;
    case Field::Address:
      isShown = IsNumericAddress(value);
      break;
    case Field::Port:
      isShown = IsPort(value) || value == "auto";
      break;
    case Field::Config:
      if (place.isText) {
        for (const Reading& reading : Unescaped(value)) {
          Config(reading.text);
        }
        return "(" + Counted(value.size(), "byte") + ")";
      }
      isShown = IsSwitch(value);
      break;
    case Field::Secret:
      return Secret(value);
    case Field::Unknown:
    case Field::Part:
      break;
  }
  return isShown ? Text(value) : Hide(value);
}

Parameters Masker::Fields(const Parameters& parameters) {
  if (m_showSecrets) {
    return parameters;
  }
  const auto named =
      std::find_if(parameters.begin(), parameters.end(), [](const auto& each) { return each.first == "name"; });
  const FieldPlace place{"", named == parameters.end() ? std::string_view() : named->second, false};
  Parameters shown;
  for (const auto& [name, value] : parameters) {
    shown.emplace_back(Text(name), name == "xml" ? Xml(value) : FieldValue(name, value, place));
  }
  return shown;
}

void Masker::LearnFrom(const XmlElement& element) {
  FieldValue(element.name, element.text, {element.name, SettingOf(element), true});
  for (const XmlAttribute& attribute : element.attributes) {
    FieldValue(attribute.name, attribute.value, {element.name, SettingOf(element), false});
  }
  for (const XmlElement& child : element.children) {
    LearnFrom(child);
  }
}

void Masker::LearnFromDamaged(std::string_view xml) {
  // The values are what stands between two tags, and in quotes behind an equals sign.
  char open = '>';
  std::string_view before;
  for (std::size_t at = 0; at <= xml.size();) {
    const std::size_t end = std::min(xml.find_first_of("<>\"'", at), xml.size());
    const std::string_view piece = xml.substr(at, end - at);
    const bool isQuoted = (open == '"' || open == '\'') && !before.empty() && before.back() == '=';
    if ((open == '>' || isQuoted) && FindSetting(piece) == Setting::Unknown && !IsSwitch(piece)) {
      m_known.Learn(piece);
    }
    before = piece;
    open = end == xml.size() ? '\0' : xml[end];
    at = end + 1;
  }
}

void Masker::HideIn(XmlElement& element, bool isKnown) {
  // In what is known, a name that is not may be a part of a value that was not written as XML should be.
  isKnown = isKnown || FindField(element.name) != Field::Unknown;
  const auto shownName = [&](const std::string& name) {
    return FindField(name) != Field::Unknown ? name : isKnown ? kMask : Text(name);
  };
  const std::string setting(SettingOf(element));
  if (!element.text.empty()) {
    element.text = FieldValue(element.name, element.text, {element.name, setting, true});
  }
  for (XmlAttribute& attribute : element.attributes) {
    attribute.value = FieldValue(attribute.name, attribute.value, {element.name, setting, false});
    attribute.name = shownName(attribute.name);
  }
  for (XmlElement& child : element.children) {
    HideIn(child, isKnown);
  }
  element.name = shownName(element.name);
}

std::string Masker::Xml(const std::string& xml, XmlStyle style) {
  if (m_showSecrets || xml.empty()) {
    return xml;
  }
  try {
    XmlElement root = ReadXml(xml);
    // First of all: what is shown may stand in front of the place where it is a secret.
    LearnFrom(root);
    HideIn(root, false);
    return XmlText(root, style);
  } catch (const XmlError&) {
    LearnFromDamaged(xml);
    return std::string(kMask) + " (" + Counted(xml.size(), "byte") + ", not XML)";
  }
}

// The same lines come again and again: in each text of a file, before and after a change. They are looked at once for all
// that was learnt so far.
std::string Masker::ConfigLine(std::string_view line, bool continues) {
  if (m_lines.size() == kMostLines || m_learntForLines != m_known.Count()) {
    m_lines.clear();
    m_learntForLines = m_known.Count();
  }
  if (line.size() > kLongestLine) {
    return ShownConfigLine(line, continues);
  }
  std::string key = std::string(continues ? "+" : "-").append(line);
  auto found = m_lines.find(key);
  if (found == m_lines.end()) {
    found = m_lines.emplace(std::move(key), ShownConfigLine(line, continues)).first;
  }
  return found->second;
}

std::string Masker::ShownConfigLine(std::string_view line, bool continues) {
  const std::size_t length = continues ? 0 : ShownLength(line);
  const std::string_view rest = line.substr(length);
  const bool isWhole = IsBlankText(rest);
  if (!isWhole && !IsComment(line)) {
    LearnSecretsOfLine(line, continues, [this](std::string_view secret, bool isSure) {
      m_known.Learn(secret);
      if (isSure) {
        m_known.LearnShort(secret);
      }
    });
  }
  const std::string_view shown = isWhole ? line : line.substr(0, length);
  const std::size_t keyword = LengthOfKeyword(shown);
  const std::string text = std::string(shown.substr(0, keyword)) + m_known.Mask(shown.substr(keyword));
  return isWhole ? text : WithMask(text);
}

std::string Masker::Config(std::string_view text) {
  if (m_showSecrets) {
    return std::string(text);
  }
  const auto show = [&](std::string_view part) {
    bool continues = false;
    return EachLine(part,
                    [&](std::string_view line) { return ConfigLine(line, std::exchange(continues, IsContinued(line))); });
  };
  show(text);  // once to learn, like XML
  const std::string reason = WhyNotPlain(text);
  if (reason.empty()) {
    return show(text);
  }
  // The letters of UTF-16 stand between NUL bytes.
  std::string letters(text);
  letters.erase(std::remove(letters.begin(), letters.end(), '\0'), letters.end());
  show(letters);
  return "(" + Counted(text.size(), "byte") + ", not shown: " + reason + ")";
}

std::string Masker::CommandLine(const std::vector<std::string>& words) {
  const ProgramLine shown = m_showSecrets ? ProgramLine{words, {}} : ShownProgramLine(words);
  for (const std::string& secret : shown.secrets) {
    m_known.Learn(secret);
  }
  std::string line;
  for (const std::string& word : shown.words) {
    line += (line.empty() ? "" : " ") + AsWord(word);
  }
  return m_showSecrets ? line : m_known.Mask(line);
}

std::string Masker::Pattern(const std::string& pattern) const {
  bool isKnown = true;
  for (std::size_t at = 0; at < pattern.size() && isKnown;) {
    const std::string_view rest = std::string_view(pattern).substr(at);
    const std::size_t length = NameAt(rest).size();
    isKnown = length == 0 ? static_cast<unsigned char>(rest.front()) < 0x80 : IsKnownWord(rest.substr(0, length));
    // Behind a backslash stands the name of a class of letters.
    at += rest.front() == '\\' ? 2 : std::max<std::size_t>(length, 1);
  }
  return isKnown || m_showSecrets ? pattern : kMask;
}

std::string Masker::Expected(const std::string& text) const {
  const std::string pattern = Pattern(text);
  const std::size_t length = LengthOfExplanation(text);
  const std::string shown = Text(std::string_view(text).substr(0, length), WrittenBy::Others);
  return pattern != kMask ? pattern : length == text.size() ? shown : WithMask(shown);
}

std::string Masker::Text(std::string_view text, WrittenBy author) const {
  const auto where = author == WrittenBy::Us ? KnownSecrets::Short::InQuotes : KnownSecrets::Short::Everywhere;
  return m_showSecrets ? std::string(text) : m_known.Mask(WithoutPlaces(text, author), where);
}

std::string Masker::Sentence(std::string_view text) const {
  return m_showSecrets ? std::string(text) : m_known.Mask(text, KnownSecrets::Short::InQuotes);
}

}  // namespace devhost
