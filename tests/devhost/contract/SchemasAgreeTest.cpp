// The schemas in contract/ and the table of shapes say the same. xmllint is the judge of the schemas.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "devhost/contract/Validate.h"
#include "devhost/system/RunProgram.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testsupport::ScratchFolder;

constexpr char kContract[] = SOURCE_FOLDER "/contract/";

struct Document {
  std::string origin;  // for messages
  std::string text;
};

// Which of the documents are valid by a schema, in the words of xmllint.
std::vector<bool> ByTheSchema(const std::string& schema, const std::vector<Document>& documents) {
  const ScratchFolder folder;
  ProgramRun run;
  run.folder = folder.Path();
  run.words = {"xmllint", "--noout", "--nonet", "--schema", kContract + schema};
  for (std::size_t i = 0; i != documents.size(); ++i) {
    folder.Write(std::to_string(i) + ".xml", documents[i].text);
    run.words.push_back(std::to_string(i) + ".xml");
  }
  std::istringstream output(RunProgram(run).output);
  std::set<std::string> valid;
  std::string line;
  while (std::getline(output, line)) {
    valid.insert(line);
  }
  std::vector<bool> verdicts;
  verdicts.reserve(documents.size());
  for (std::size_t i = 0; i != documents.size(); ++i) {
    verdicts.push_back(valid.count(std::to_string(i) + ".xml validates") != 0);
  }
  return verdicts;
}

// The difference between the two that contract/README.md names and that this is an example of, or "".
std::string NamedDifference(const std::string& text, const std::vector<Mismatch>& found) {
  if (found.empty()) {
    return text.find("<![CDATA[") != std::string::npos ? "a CDATA section beside elements" : "";
  }
  const std::string& reason = found.front().reason;
  const auto says = [&reason](const char* part) { return reason.find(part) != std::string::npos; };
  const bool hasStandalone = text.find("standalone") != std::string::npos;
  return says("a document type can")                                               ? "a document type"
         : says("the encoding is not UTF-8")                                       ? "another encoding"
         : says("the name xml is reserved")                                        ? "an instruction XML"
         : says("the version is not 1.0") && text.find("1.'") != std::string::npos ? "the version 1."
         : says("expected ?> at the end of the declaration") && hasStandalone      ? "no blank before standalone"
                                                                                   : "";
}

std::map<std::string, std::size_t>& NamedDifferences() {
  static std::map<std::string, std::size_t> counts;
  return counts;
}

// Expects that both judge each document alike, as a document of that shape. Returns how many are valid.
std::size_t ExpectAgreement(const DocumentShape& shape, const std::vector<Document>& documents) {
  const std::vector<bool> expected = ByTheSchema(shape.schema, documents);
  std::size_t valid = 0;
  for (std::size_t i = 0; i != documents.size(); ++i) {
    const std::vector<Mismatch> found = ValidateDocument(documents[i].text, shape.isReply);
    const std::string named = found.empty() == expected[i] ? "" : NamedDifference(documents[i].text, found);
    NamedDifferences()[named] += named.empty() ? 0U : 1U;
    EXPECT_TRUE(found.empty() == expected[i] || !named.empty())
        << shape.schema << ", " << documents[i].origin << ":\n"
        << documents[i].text << (found.empty() ? "" : "\n" + found.front().reason);
    valid += expected[i] ? 1U : 0U;
  }
  return valid;
}

// The name of the root element, or "".
std::string RootOf(const std::string& text) {
  try {
    return ReadXml(text).name;
  } catch (const XmlError&) {
    return "";
  }
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::vector<Document> FilesIn(const std::string& folder, const std::string& extension) {
  std::vector<Document> documents;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(std::string(SOURCE_FOLDER "/") + folder)) {
    if (entry.is_regular_file() && entry.path().extension() == extension) {
      documents.push_back({entry.path().string(), ScratchFolder::ReadFile(entry.path().string())});
    }
  }
  return documents;
}

TEST(AnExample, IsValidUnlessItsNameSaysOtherwise) {
  const std::vector<Document> examples = FilesIn("contract/examples", ".xml");
  EXPECT_GT(examples.size(), 20U);
  for (const Document& example : examples) {
    const bool isWrong = EndsWith(example.origin, "-invalid.xml");
    const bool isList = example.origin.find("/list") != std::string::npos;
    EXPECT_EQ(ValidateDocument(example.text, isList).empty(), !isWrong) << example.origin;
  }
}

TEST(TheSchemas, AgreeWithTheTableOnEveryXmlFileOfTheProject) {
  for (const char* const folder : {"contract/examples", "tests", "scripts", "examples"}) {
    const std::vector<Document> files = FilesIn(folder, ".xml");
    EXPECT_FALSE(files.empty()) << folder;
    for (const Document& file : files) {
      for (const bool asReply : {false, true}) {
        const DocumentShape* const shape = FindDocument(RootOf(file.text), asReply);
        if (shape != nullptr) {
          ExpectAgreement(*shape, {file});
        } else {
          EXPECT_FALSE(ValidateDocument(file.text, asReply).empty()) << file.origin;
        }
      }
    }
  }
}

// What the agent wrote in the recorded sessions, by schema.
TEST(WhatTheAgentWrites, IsValid) {
  std::map<const DocumentShape*, std::vector<Document>> written;
  for (const Document& session : FilesIn("tests/data/scripts", ".golden")) {
    std::istringstream lines(session.text);
    std::string line;
    while (std::getline(lines, line)) {
      for (const std::string begin : {"reply agent ", "notification agent ", "state agent "}) {
        const std::string xml = line.compare(0, begin.size(), begin) == 0 ? line.substr(begin.size()) : "";
        if (xml.compare(0, 1, "<") == 0) {
          const DocumentShape* const shape = FindDocument(RootOf(xml), true);
          ASSERT_NE(shape, nullptr) << xml;
          written[shape].push_back({session.origin, xml});
        }
      }
    }
  }
  std::set<std::string> schemas;
  for (const auto& [shape, documents] : written) {
    EXPECT_EQ(ExpectAgreement(*shape, documents), documents.size());
    schemas.insert(shape->schema);
  }
  EXPECT_EQ(schemas, (std::set<std::string>{"notifications.xsd", "replies.xsd", "state.xsd"}));
}

// Differences that contract/README.md names, and that changes at random do not lead to.
TEST(TheSchemas, DifferFromTheTableWhereTheReadmeSaysSo) {
  const std::string begin = R"(<project><driver id="1" name="agent" module="agent.so")";
  const auto withConfig = [&begin](const std::string& config) {
    return begin + "><config" + config + "/></driver></project>";
  };
  const std::string known = R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:)";
  const auto named = [&withConfig](std::size_t length) { return withConfig(" " + std::string(length, 'n') + "='1'"); };
  const struct {
    std::string text;
    bool byTheTable;
    bool byTheSchema;
  } kCases[] = {
      {withConfig(""), true, true},
      {withConfig(known + "type='nosuch'"), true, false},
      {named(50'000), true, true},
      {named(50'001), true, false},
      {withConfig("") + std::string(1, '\0'), false, true},
      {withConfig("") + "\x01", false, false},
  };
  for (const auto& [text, byTheTable, byTheSchema] : kCases) {
    EXPECT_EQ(ValidateDocument(text, false).empty(), byTheTable) << text.substr(0, 200);
    EXPECT_EQ(ByTheSchema("project.xsd", {{"", text}}).front(), byTheSchema) << text.substr(0, 200);
  }
}

// Changes documents a little, most of them in one place, some of them where nobody counts.
class Changer {
 public:
  explicit Changer(unsigned int seed) : m_random(seed) {}

  std::string Change(const std::string& text) {
    XmlElement root = ReadXml(text);
    for (std::size_t left = Below(3); left != 0; --left) {
      ChangeOne(root);
    }
    std::string changed = XmlText(root, Below(2) == 0 ? XmlStyle::Compact : XmlStyle::Indented);
    for (std::size_t left = Below(3); left != 0 && !changed.empty(); --left) {
      ChangeMarkup(changed);
    }
    return changed;
  }

 private:
  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(m_random); }

  template <class List>
  auto& OneOf(List& list) {
    return *(std::begin(list) +
             static_cast<std::ptrdiff_t>(Below(static_cast<std::size_t>(std::end(list) - std::begin(list)))));
  }

  std::string Text() {
    static const std::string kTexts[] = {"",
                                         "0",
                                         "1",
                                         "12",
                                         "-1",
                                         "01",
                                         "4294967295",
                                         "4294967296",
                                         "2147483647",
                                         "2147483648",
                                         "-2147483648",
                                         "-2147483649",
                                         "65535",
                                         "65536",
                                         "162",
                                         "true",
                                         "false",
                                         "TRUE",
                                         " true",
                                         "1 ",
                                         "+1",
                                         "-0",
                                         "a b",
                                         "a\nb",
                                         "a\rb",
                                         "a\tb",
                                         "k-1.x_",
                                         "\xC3\xA4",
                                         "x ",
                                         " ",
                                         "\n",
                                         "<&>\"'",
                                         std::string(255, 'x'),
                                         std::string(256, 'x')};
    return OneOf(kTexts);
  }

  // Any element of the tree.
  XmlElement& Element(XmlElement& root) {
    XmlElement* element = &root;
    while (!element->children.empty() && Below(3) != 0) {
      element = &OneOf(element->children);
    }
    return *element;
  }

  void ChangeOne(XmlElement& root) {
    XmlElement& element = Element(root);
    switch (Below(element.attributes.empty() ? 8 : 11)) {
      case 0:
        element.text = Text();
        return;
      case 1:
        ChangeName(element.name);
        return;
      case 2:
        element.attributes.push_back({"x", Text()});
        return;
      case 3:
        element.children.push_back(Copy(Element(root)));
        return;
      case 8:
      case 9:
        OneOf(element.attributes).value = Text();
        return;
      case 10:
        element.attributes.erase(element.attributes.begin());
        return;
      default:
        ChangeChildren(element);
    }
  }

  // The list that it goes into may move what it is a copy of.
  static XmlElement Copy(const XmlElement& element) { return element; }

  void ChangeName(std::string& name) {
    switch (Below(3)) {
      case 0:
        name.pop_back();
        name += 'y';
        return;
      case 1:
        name[0] = static_cast<char>(name[0] ^ 0x20);
        return;
      default:
        static const std::string kNames[] = {"deviceId", "snmpEnabledSetting", "id", "trapTarget", "variable", "config",
                                             "driver"};
        name = OneOf(kNames);
    }
  }

  void ChangeChildren(XmlElement& element) {
    if (element.children.empty()) {
      element.text = Text();
      return;
    }
    const auto one = element.children.begin() + static_cast<std::ptrdiff_t>(Below(element.children.size()));
    switch (Below(4)) {
      case 0:
        element.children.erase(one);
        return;
      case 1:
        element.children.push_back(Copy(*one));
        return;
      case 2:
        std::swap(*one, OneOf(element.children));
        return;
      default:
        std::swap(*one, element.children.back());
    }
  }

  // What an XML parser passes over, resolves or refuses.
  std::string Piece() {
    static const std::string kPieces[] = {"<!-- x -->",
                                          "<!---->",
                                          "<!-->",
                                          "<!--->",
                                          "<!-- - -- -->",
                                          "<!-- --->",
                                          "<!--",
                                          "-->",
                                          "--",
                                          "<?x y?>",
                                          "<?x?>",
                                          "<?xml?>",
                                          "<?XML ?>",
                                          "<?xml version='1.0'?>",
                                          "<?",
                                          "?>",
                                          "<![CDATA[x]]>",
                                          "<![CDATA[]]>",
                                          "<![CDATA[ ]]>",
                                          "<![CDATA[",
                                          "]]>",
                                          "]]",
                                          "&#32;",
                                          "&#x31;",
                                          "&#0;",
                                          "&#xD;",
                                          "&#X31;",
                                          "&#10;",
                                          "&amp;",
                                          "&lt;",
                                          "&x;",
                                          "&",
                                          "&#",
                                          ";",
                                          "<",
                                          ">",
                                          "</",
                                          "/>",
                                          "=",
                                          "'",
                                          "\"",
                                          "/",
                                          "!",
                                          "?",
                                          "\n",
                                          "\r",
                                          "\r\n",
                                          "\t",
                                          " ",
                                          " x ",
                                          " x='y'",
                                          " x=\"<\"",
                                          "<x/>",
                                          "<x>",
                                          "</x>",
                                          "<!DOCTYPE a>",
                                          "<!x>",
                                          "\xEF\xBB\xBF",
                                          "\xC3\xA4",
                                          "\xC3",
                                          "\xE2\x80\xBF",
                                          "\x01",
                                          ":",
                                          "1",
                                          "-",
                                          "true"};
    return OneOf(kPieces);
  }

  std::string Declaration() {
    static const std::string kVersions[] = {" version='1.0'", " version=\"1.1\"", " version = '1.0'", " version='1.'",
                                            " version='2.0'", "version='1.0'",    " version=1.0",     "",
                                            " version='1.0\""};
    static const std::string kEncodings[] = {"",
                                             "",
                                             " encoding='UTF-8'",
                                             " encoding=\"utf-8\"",
                                             " encoding=''",
                                             " encoding='x y'",
                                             "encoding='UTF-8'",
                                             " encoding='ISO-8859-1'"};
    static const std::string kStandalones[] = {
        "", "", " standalone='yes'", " standalone=\"no\"", " standalone='true'", "standalone='yes'"};
    static const std::string kEnds[] = {"?>", "?>\n", " ?>", ">", "? >"};
    std::string text = Below(12) == 0 ? " <?xml" : "<?xml";
    if (Below(8) == 0) {
      return text + OneOf(kVersions) + OneOf(kStandalones) + OneOf(kEncodings) + OneOf(kEnds);
    }
    return text + OneOf(kVersions) + OneOf(kEncodings) + OneOf(kStandalones) + OneOf(kEnds);
  }

  void ChangeMarkup(std::string& text) {
    switch (Below(6)) {
      case 0:
        text.insert(0, Declaration());
        return;
      case 1:
        text.erase(Below(text.size()), 1 + Below(3));
        return;
      case 2:
        text[Below(text.size())] = static_cast<char>(Below(256));
        return;
      case 3: {
        // Where a text begins or ends.
        const std::size_t near = std::min(text.find(Below(2) == 0 ? ">" : "</", Below(text.size())), text.size() - 1);
        text.insert(near + (text[near] == '>' ? 1U : 0U), Piece());
        return;
      }
      default:
        text.insert(Below(text.size() + 1), Piece());
    }
  }

  std::mt19937 m_random;
};

// How many documents are made of each example. CHANGED_DOCUMENTS=2000 makes ten times as many.
int DocumentsOfEach() {
  const char* const wanted = std::getenv("CHANGED_DOCUMENTS");
  return wanted == nullptr ? 200 : std::atoi(wanted);
}

TEST(TheSchemas, AgreeWithTheTableOnChangedDocuments) {
  std::map<const DocumentShape*, std::vector<Document>> changed;
  const char* const seed = std::getenv("CHANGED_SEED");
  Changer changer(seed == nullptr ? 20261122U : static_cast<unsigned int>(std::atoi(seed)));
  for (const Document& example : FilesIn("contract/examples", ".xml")) {
    if (EndsWith(example.origin, "-invalid.xml")) {
      continue;
    }
    for (int i = DocumentsOfEach(); i != 0; --i) {
      const std::string text = changer.Change(example.text);
      const std::string root = RootOf(text);
      // What cannot be read, and what has another root, is held against the schemas that it began with.
      for (const bool asReply : {false, true}) {
        const DocumentShape* shape = FindDocument(root, asReply);
        shape = shape != nullptr ? shape : FindDocument(RootOf(example.text), asReply);
        if (shape->isReply == asReply || FindDocument(shape->root.name, !asReply) == shape) {
          changed[shape].push_back({example.origin, text});
        }
      }
    }
  }
  std::size_t all = 0;
  std::size_t valid = 0;
  for (const auto& [shape, documents] : changed) {
    all += documents.size();
    valid += ExpectAgreement(*shape, documents);
  }
  // Neither nearly all nor hardly any, or the changes would show little.
  EXPECT_GT(valid, all / 20);
  EXPECT_LT(valid, all / 2);
  for (const auto& [name, count] : NamedDifferences()) {
    RecordProperty(name.empty() ? "documents" : name, static_cast<int>(name.empty() ? all : count));
  }
}

}  // namespace
}  // namespace devhost
