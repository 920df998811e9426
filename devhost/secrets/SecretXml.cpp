// Finds secrets in XML. The text may be cut off, or not be XML at all, so it is searched and not parsed.
#include "devhost/secrets/SecretXml.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr int kDeepest = 3;  // how deep XML may stand in the text of other XML

constexpr std::pair<std::string_view, char> kEntities[] = {
    {"&amp;", '&'},  {"&lt;", '<'},   {"&gt;", '>'},   {"&quot;", '"'}, {"&apos;", '\''},
    {"&#10;", '\n'}, {"&#xA;", '\n'}, {"&#13;", '\r'}, {"&#xD;", '\r'}, {"&#9;", '\t'},
    {"&#x9;", '\t'}, {"&#34;", '"'},  {"&#39;", '\''}, {"%0B", '\v'},   {"%0C", '\f'}};

// A text with its entities decoded, and with the blanks that the states of devices escape because XML cannot contain them.
// It knows where each byte stood before.
class DecodedText {
 public:
  explicit DecodedText(std::string_view coded) {
    m_text.reserve(coded.size());
    for (std::size_t at = 0; at < coded.size();) {
      const auto entity = coded[at] != '&' && coded[at] != '%'
                              ? std::end(kEntities)
                              : std::find_if(std::begin(kEntities), std::end(kEntities), [&](const auto& known) {
                                  return coded.compare(at, known.first.size(), known.first) == 0;
                                });
      if (entity == std::end(kEntities)) {
        m_text += coded[at++];
      } else {
        m_text += entity->second;
        at += entity->first.size();
        m_shifts.emplace_back(m_text.size(), at - m_text.size());
      }
    }
  }

  const std::string& Text() const { return m_text; }

  // Returns where the byte at `at`, or the end, stood in the coded text.
  std::size_t Coded(std::size_t at) const {
    auto next = std::upper_bound(m_shifts.begin(), m_shifts.end(), at,
                                 [](std::size_t value, const auto& shift) { return value < shift.first; });
    return at + (next == m_shifts.begin() ? 0 : std::prev(next)->second);
  }

 private:
  std::string m_text;
  // From which byte on the text has moved, and how far to the front.
  std::vector<std::pair<std::size_t, std::size_t>> m_shifts;
};

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool NamesCommunity(std::string_view name) {
  return name.find("ommunity") != npos;
}

bool IsSecretElement(std::string_view name) {
  return name == "snmpCommunityReadSetting" || name == "snmpCommunityWriteSetting" || name == "community";
}

struct XmlAttribute {
  std::string_view name;
  std::size_t begin = 0;  // of the value, without its quotes
  std::size_t end = 0;
};

struct XmlTag {
  std::string_view name;
  std::size_t end = 0;   // behind the closing >, or the end of the text
  bool whole = false;    // whether it has a closing >
  bool closing = false;  // </name>
  bool empty = false;    // <name/>
};

// Reads the tag that begins at `at`, and calls `use` with each of its attributes.
template <class Use>
XmlTag ReadTag(std::string_view xml, std::size_t at, Use use) {
  XmlTag tag;
  tag.closing = xml.substr(at + 1, 1) == "/";
  const auto name = [&xml](std::size_t from) {
    return xml.substr(from, std::min(xml.find_first_of("= \t\r\n/><\"'", from), xml.size()) - from);
  };
  at += tag.closing ? 2 : 1;
  tag.name = name(at);
  at += tag.name.size();
  XmlAttribute last;  // the value may still follow
  const auto useLast = [&] {
    if (!last.name.empty()) {
      use(last);
    }
  };
  while (at < xml.size() && xml[at] != '>') {
    if (xml[at] != '"' && xml[at] != '\'') {
      const std::string_view word = name(at);
      tag.empty = xml[at] == '/';
      if (word.empty()) {
        ++at;
      } else {
        useLast();
        last = {word, at, at};
        at += word.size();
      }
      continue;
    }
    const std::size_t end = std::min(xml.find(xml[at], at + 1), xml.size());
    last.begin = at + 1;
    last.end = end;
    at = std::min(end + 1, xml.size());
  }
  useLast();
  tag.whole = at < xml.size();
  tag.end = tag.whole ? at + 1 : at;
  return tag;
}

class XmlScanner {
 public:
  XmlScanner(std::string_view xml, int depth) : m_xml(xml), m_depth(depth) {}

  std::vector<SecretPlace> Scan() {
    std::size_t at = 0;
    while (at < m_xml.size()) {
      const std::size_t tag = NextTag(at);
      if (at == 0 && tag < m_xml.size() && IsEndOfSecret(tag)) {
        Secret(0, tag);  // the beginning of this element was cut off
      } else {
        Text(at, tag);
      }
      at = tag < m_xml.size() ? Tag(tag) : tag;
    }
    return std::move(m_places);
  }

 private:
  std::size_t NextTag(std::size_t at) const {
    for (;; ++at) {
      at = m_xml.find('<', at);
      if (at == npos || at + 1 == m_xml.size()) {
        return m_xml.size();
      }
      const char next = m_xml[at + 1];
      if (IsNameStart(next) || next == '/') {
        return at;
      }
    }
  }

  bool IsEndOfSecret(std::size_t at) const {
    const XmlTag tag = ReadTag(m_xml, at, [](const XmlAttribute&) {});
    return tag.closing && IsSecretElement(tag.name);
  }

  void Secret(std::size_t begin, std::size_t end) {
    if (begin < end) {
      m_places.push_back({begin, end});
    }
  }

  // Looks at a text or an attribute's value, which may contain a configuration or more XML.
  void Text(std::size_t begin, std::size_t end) {
    const std::string_view text = m_xml.substr(begin, end - begin);
    if (text.find_first_of("&%") == npos) {
      for (const SecretPlace& place : SecretPlacesInText(text)) {
        Secret(begin + place.begin, begin + place.end);
      }
      return;
    }
    const DecodedText decoded(text);
    std::vector<SecretPlace> places = SecretPlacesInText(decoded.Text());
    // A configuration may contain text that only looks like XML: "Ada <ada@example.org>".
    if (m_depth < kDeepest && decoded.Text().find('<') != npos) {
      const std::vector<SecretPlace> inXml = XmlScanner(decoded.Text(), m_depth + 1).Scan();
      places.insert(places.end(), inXml.begin(), inXml.end());
      places = MergedPlaces(std::move(places));
    }
    for (const SecretPlace& place : places) {
      Secret(begin + decoded.Coded(place.begin), begin + decoded.Coded(place.end));
    }
  }

  // Looks at a tag. Returns where to continue.
  std::size_t Tag(std::size_t begin) {
    bool isSecret = false;
    bool named = false;
    const XmlTag tag = ReadTag(m_xml, begin, [&](const XmlAttribute& attribute) {
      if (attribute.name == "name") {
        named = attribute.begin != attribute.end && attribute.end < m_xml.size();
        isSecret = isSecret || NamesCommunity(m_xml.substr(attribute.begin, attribute.end - attribute.begin));
      }
    });
    isSecret = isSecret || IsSecretElement(tag.name);
    // The attributes are read again and not kept, because a tag may have millions of them.
    ReadTag(m_xml, begin, [&](const XmlAttribute& attribute) {
      // A name that was cut off may be that of a community.
      const bool isValue = attribute.name == "value" && (isSecret || (!named && !tag.whole));
      if (isValue || NamesCommunity(attribute.name)) {
        Secret(attribute.begin, attribute.end);
      } else {
        Text(attribute.begin, attribute.end);
      }
    });
    return isSecret && tag.whole && !tag.closing && !tag.empty ? Inside(tag) : tag.end;
  }

  // Takes everything inside an element as its secret. Returns where to continue.
  std::size_t Inside(const XmlTag& tag) {
    const std::string close = "</" + std::string(tag.name);
    std::size_t end = m_xml.find(close, tag.end);
    while (end != npos && end + close.size() < m_xml.size() && m_xml[end + close.size()] != '>' &&
           !IsBlank(m_xml[end + close.size()])) {
      end = m_xml.find(close, end + 1);
    }
    if (end != npos) {
      Secret(tag.end, end);
      return end;
    }
    // The end was cut off, perhaps in the middle of the closing tag.
    const std::string_view rest = m_xml.substr(tag.end);
    if (close.compare(0, rest.size(), rest) != 0) {
      Secret(tag.end, m_xml.size());
    }
    return m_xml.size();
  }

  std::string_view m_xml;
  int m_depth;
  std::vector<SecretPlace> m_places;
};

}  // namespace

std::vector<SecretPlace> SecretPlacesInXml(std::string_view xml) {
  return XmlScanner(xml, 0).Scan();
}

std::vector<std::string> SecretsInXml(std::string_view xml) {
  std::vector<std::string> secrets;
  std::size_t lineBegin = 0;
  std::size_t searched = 0;  // up to here, the beginning of the line is known
  for (const SecretPlace& place : SecretPlacesInXml(xml)) {
    const std::size_t feed = xml.substr(searched, place.begin - searched).rfind('\n');
    lineBegin = feed == npos ? lineBegin : searched + feed + 1;
    searched = place.begin;
    // A comment in an snmpd.conf explains things with ordinary words.
    if (lineBegin == 0 || xml[lineBegin] != '#') {
      secrets.push_back(DecodedText(xml.substr(place.begin, place.end - place.begin)).Text());
    }
  }
  return secrets;
}

}  // namespace devhost
