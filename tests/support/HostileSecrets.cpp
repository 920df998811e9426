#include "tests/support/HostileSecrets.h"

#include <algorithm>

namespace {

void Replace(std::string& text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
}

std::string XmlEscaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    escaped += c == '&'    ? "&amp;"
               : c == '<'  ? "&lt;"
               : c == '"'  ? "&quot;"
               : c == '\r' ? "&#13;"
               : c == '\n' ? "&#xA;"
                           : std::string(1, c);
  }
  return escaped;
}

std::string PercentCoded(const std::string& text) {
  std::string coded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = byte >= ' ' && byte < 0x7F && c != '%';
    constexpr char kDigits[] = "0123456789ABCDEF";
    coded += isPlain ? std::string(1, c) : std::string("%") + kDigits[byte / 16] + kDigits[byte % 16];
  }
  return coded;
}

std::string Hexadecimal(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    digits.append(digits.empty() ? 0 : 1, ' ').append({kDigits[byte / 16], kDigits[byte % 16]});
  }
  return digits;
}

std::string Utf16(const std::string& text, bool bigEndian) {
  std::string wide;
  for (const char c : text) {
    wide += bigEndian ? std::string({'\0', c}) : std::string({c, '\0'});
  }
  return wide;
}

}  // namespace

std::string HostileSecrets::Part() {
  // No word of the texts here begins like one, and none begins like another.
  std::string part = "zq" + std::to_string(m_parts.size() + 10) + "Z";
  for (std::size_t more = m_choose(16) * m_choose(8); more != 0; --more) {
    part += "aBxJ7k"[m_choose(6)];
  }
  m_parts.push_back(part);
  return part;
}

std::string HostileSecrets::Value() {
  std::string value = Part();
  while (OneOf(3)) {
    value += Pick({" ",
                   "  ",
                   "\"",
                   "'",
                   "\\",
                   "#",
                   "%",
                   "&",
                   "<",
                   ">",
                   "\t",
                   "\r",
                   "\n",
                   "|",
                   "\xC2\xA0",
                   "\xFF",
                   "=",
                   ";",
                   " sysContact ",
                   "\nsysLocation ",
                   "%0D",
                   "&#13;",
                   "/",
                   "*****"}) +
             Part();
  }
  return value;
}

std::string HostileSecrets::Line() {
  if (OneOf(4)) {
    return Pick(
        {"sysName kitchen", "", "# an explanation", "view all included .1", "master agentx", "   ", "sysContact Ada"});
  }
  std::string line = Pick({"rocommunity~{}",
                           "rwcommunity~{}~default",
                           "rocommunity6~{}",
                           "trap2sink~10.0.0.5~{}~162",
                           "trap2sink~{}",
                           "trapsink~{}",
                           "informsink~h~{}",
                           "trapcommunity~{}",
                           "com2sec~me~default~{}",
                           "com2sec6~-Cn~c~me~default~{}",
                           "authcommunity~log~{}",
                           "trapsess~-c~{}~h",
                           "trapsess~-v~3~-A~{}~h",
                           "proxy~-c~{}~h~.1",
                           "createUser~bob~SHA~{}~AES~{}",
                           "createUser~bob~{}",
                           "defCommunity~{}",
                           "exec~x~/usr/bin/snmpget~-c~{}~h",
                           "extend~x~{}",
                           "usmUser~1~3~0x80~{}~{}",
                           "smuxpeer~.1~{}",
                           "#~community~{}",
                           "#~the~passphrase~{}",
                           "#~was:~rocommunity~{}",
                           "#~{}~is~the~community",
                           "#~it~is~the~token~{}",
                           "#~RO:~{}",
                           "#~./x.sh~-c~{}",
                           "#~authkey={}",
                           "#~net-snmp-create-v3-user~-A~{}~bob",
                           "#rocomm~{}",
                           "#com2~sec~me~default~{}"});
  const std::string keyword = line.substr(0, line.find('~'));
  // One letter of it is wrong, or two, or letters of another script look like its own.
  const std::size_t wrong = keyword.size() < 5 || !OneOf(4) ? 0 : keyword.size() < 6 ? 1 : 1 + m_choose(2);
  for (std::size_t i = 0; i != wrong; ++i) {
    const std::size_t at = 1 + m_choose(keyword.size() - 3);
    const std::size_t how = m_choose(3);
    line = how == 0 ? line.erase(at, 1) : how == 1 ? line.insert(at, 1, 'm') : line.replace(at, 1, "n");
  }
  if (wrong == 0 && keyword.size() > 1 && OneOf(8)) {
    line.replace(1 + m_choose(keyword.size() - 1), 1, Pick({"\xD0\xBE", "\xC3\xB6", "\xE1\xB4\x8F", "\xF0\x9D\x97\x88"}));
  }
  Replace(line, "~",
          OneOf(2) ? " " : Pick({"  ", "    ", "\t", "\r", "\xC2\xA0", ": ", " : ", "=", "\v", "\xE3\x80\x80", "\x01"}));
  std::string value = Value();
  Replace(value, "\n", "");  // a line of its own would be a line of somebody else
  const std::string quote = Pick({"", "", "\"", "'", "\"\"", "\"'"});
  for (std::size_t at = line.find("{}"); at != std::string::npos; at = line.find("{}")) {
    line.replace(at, 2, quote + value + (OneOf(6) ? "" : quote));
  }
  line.insert(0, Pick({"", "", "", " ", "#", "# ", " ## # ", "#- ", "#\t", "#;", "[snmp] ", "\xEF\xBB\xBF", "\xC2\xA0"}));
  return line + Pick({"", "", "", " ", "\\", "\r", " # more"});
}

std::string HostileSecrets::PlainConfig() {
  std::string text;
  const std::string end = OneOf(6) ? "\r\n" : OneOf(12) ? "\r" : "\n";
  for (std::size_t lines = 1 + m_choose(6); lines != 0; --lines) {
    text += Line() + end;
    if (OneOf(8)) {
      text += "rocommunity \\" + end + Pick({"  ", "", "master "}) + Part() + end;
    }
  }
  return (OneOf(8) ? "\xEF\xBB\xBF" : "") + text;
}

std::string HostileSecrets::Config() {
  std::string text = PlainConfig();
  switch (m_choose(8)) {
    case 0:
      return (OneOf(2) ? "\xFF\xFE" : "") + Utf16(text, false);
    case 1:
      return (OneOf(2) ? "\xFE\xFF" : "") + Utf16(text, true);
    case 2:
      return text.insert(m_choose(text.size() + 1), 1, '\0');
    default:
      return text;
  }
}

std::string HostileSecrets::Element(int depth) {
  const std::string value = OneOf(3) ? PercentCoded(Value()) : Value();
  const std::string written = OneOf(4) ? value : XmlEscaped(value);
  std::string element = Pick(
      {"<snmpCommunityReadSetting>{}</snmpCommunityReadSetting>",
       "<snmpCommunityWriteSetting><x>{}</x></snmpCommunityWriteSetting>",
       "<trapTarget><target>{}</target><community>{}</community><port>{}</port></trapTarget>",
       "<trapTarget target=\"{}\" community='{}' port=\"162\"/>", "<setting name=\"communityRead\" value=\"{}\"/>",
       "<setting value='{}' name='communityWrite' erased=\"false\"/>", "<setting name=\"communityRead\">{}</setting>",
       "<setting name='comunityRead' value=\"{}\"/>", "<setting name=\"{}\" value=\"communityRead\"/>", "<other>{}</other>",
       "<other a=\"{}\"/>", "<community><![CDATA[{}]]></community>", "<Success>{}</Success>", "<sysName kitchen=\"{}\"/>"});
  Replace(element, "{}", written);
  if (depth < 3 && OneOf(4)) {
    return "<settings>" + Element(depth + 1) + Element(depth + 1) + "</settings>";
  }
  return element;
}

std::string HostileSecrets::Xml() {
  std::string text = PlainConfig();
  Replace(text, "\r", OneOf(2) ? "%0D" : "&#13;");
  Replace(text, "\v", "%0B");
  Replace(text, "\x01", "%01");
  Replace(text, "\xFF", "%FF");
  const std::string config = XmlEscaped(text);
  std::string xml = "<LocalSnmpd version=\"1\">" + Element(0) + (OneOf(2) ? Element(0) : "") +
                    (OneOf(2) ? "<known>-\n" + config + "\n-</known>" : "<pending>" + config + "</pending>") +
                    "</LocalSnmpd>";
  switch (m_choose(8)) {
    case 0:
      return xml.substr(0, m_choose(xml.size()));
    case 1:
      return xml.erase(m_choose(xml.size()), 1);
    case 2:
      return xml.insert(m_choose(xml.size()), 1, "\0<>&\"'\xFF\n"[m_choose(8)]);
    default:
      return xml;
  }
}

std::string HostileSecrets::Message(const std::string& secret) {
  const std::string begin = Pick(
      {"line 3 is wrong: ", "", "0D", "x", "read \"", "<Fail>", "{\"text\":\"", "rocommunity ", "cannot create sink: "});
  if (OneOf(4)) {  // what is cut off is marked so
    return begin + secret.substr(0, 12 + m_choose(80)) + Pick({"", "\"", " is wrong", "\n", "..."});
  }
  return begin +
         (OneOf(4)   ? XmlEscaped(secret)
          : OneOf(4) ? PercentCoded(secret)
          : OneOf(8) ? Hexadecimal(secret)
                     : secret) +
         Pick({"", "\"", " is wrong", "\n", "xyz", "..."});
}

std::string HostileSecrets::FindIn(std::string_view shown) const {
  std::string text(shown);
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  for (const std::string& part : m_parts) {
    if (text.find(part) != std::string::npos) {
      return part;
    }
  }
  return std::string();
}
