#include "drivers/hostprobe/XmlChecks.h"

#include <string>

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/ParsedRoot.h"
#include "drivers/hostprobe/Report.h"
#include "host/H7XML.h"

namespace drivers {
namespace {

using Node = h7::auto_com<H7XML::INode>;
using List = h7::auto_com<H7XML::INodeList>;

constexpr unsigned long kMost = 4294967295UL;

std::string NamesOf(H7XML::INodeList& list) {
  std::string names;
  for (Node child = list.First(); child; child = list.Next()) {
    names += child->GetName() + " ";
  }
  return names;
}

std::string ChildNamesOf(const H7XML::INode& node) {
  const List list = node.GetChildren();
  return list ? NamesOf(*list) : "(no list)";
}

std::string CheckCreate() {
  Finding finding;
  const Node text = H7XML::CreateXmlNode("name", "a text");
  const Node empty = H7XML::CreateXmlNode("name", "");
  const Node number = H7XML::CreateXmlNode("number", kMost);
  if (finding.Unless(text && empty && number, "CreateXmlNode returns an empty handle")) {
    finding.Compare("GetName of a new node", text->GetName(), "name");
    finding.Compare("GetValue of a new node", text->GetValue(), "a text");
    finding.Compare("GetValue of a new node without text", empty->GetValue(), "");
    finding.Compare("GetValue of a new node with a number", number->GetValue(), "4294967295");
  }
  return finding.Words();
}

std::string CheckCreateEmpty() {
  Finding finding;
  Node made;
  H7XML::Create(made.Receive());
  if (finding.Unless(static_cast<bool>(made), "Create stores no node")) {
    finding.Compare("GetName of a node from Create", made->GetName(), "");
    finding.Compare("GetValue of a node from Create", made->GetValue(), "");
  }
  const Node old = H7XML::CreateXmlNode("old", "kept");
  H7XML::INode* place = old.Get();
  H7XML::Create(&place);
  if (finding.Unless(place != nullptr && place != old.Get(), "Create leaves what the place held")) {
    const Node release(place);
    finding.Compare("GetValue of the node that Create overwrote", old->GetValue(), "kept");
  }
  return finding.Words();
}

std::string CheckRename() {
  Finding finding;
  const Node node = H7XML::CreateXmlNode("before", "before");
  node->SetName("after");
  node->SetValue("behind");
  finding.Compare("GetName after SetName", node->GetName(), "after");
  finding.Compare("GetValue after SetValue", node->GetValue(), "behind");
  return finding.Words();
}

std::string CheckNamed() {
  Finding finding;
  const Node node = H7XML::CreateXmlNode("named", "");
  node->SetNamedString("first", "one");
  node->SetNamedULong("second", kMost);
  node->SetNamedString("First", "other");
  node->SetNamedString("first", "new");
  finding.Compare("GetNamedString after the value was replaced", node->GetNamedString("first"), "new");
  finding.Compare("GetNamedString of a name in other case", node->GetNamedString("First"), "other");
  finding.Compare("GetNamedString after SetNamedULong", node->GetNamedString("second"), "4294967295");
  return finding.Words();
}

std::string CheckChildren() {
  Finding finding;
  const Node node = H7XML::CreateXmlNode("parent", "");
  node->AddChildString("child", "first");
  node->AddChildString("child", "second");
  node->AddChildInt("number", -1);
  finding.Compare("the order of added children", ChildNamesOf(*node), "child child number ");
  finding.Compare("GetChildString of the first of two children", node->GetChildString("child"), "first");
  finding.Compare("GetChildString after AddChildInt", node->GetChildString("number"), "-1");
  return finding.Words();
}

std::string CheckChild() {
  Finding finding;
  const Node root = ParsedRoot("<root><child>one</child><child>two</child></root>");
  const Node child = root->GetChild("child");
  if (finding.Unless(static_cast<bool>(child), "GetChild does not find a child")) {
    child->SetValue("changed");
    finding.Compare("a child that was changed through GetChild", root->GetChildString("child"), "changed");
  }
  finding.Unless(!root->GetChild("Child"), "GetChild of a missing name returns a node");
  return finding.Words();
}

std::string CheckWalk() {
  Finding finding;
  const Node root = ParsedRoot("<root>text<b/><a><inner/></a><b/></root>");
  const List list = root->GetChildren();
  const List none = H7XML::CreateXmlNode("leaf", "")->GetChildren();
  if (!finding.Unless(list && none, "GetChildren returns an empty handle")) {
    return finding.Words();
  }
  finding.Unless(!list->Next(), "Next before First returns a child");
  finding.Compare("the children", NamesOf(*list), "b a b ");
  finding.Unless(!list->Next(), "Next after the last child returns one");
  finding.Compare("the children on a second walk", NamesOf(*list), "b a b ");
  finding.Unless(!none->First(), "First of a node without children returns one");
  return finding.Words();
}

std::string CheckAppend() {
  Finding finding;
  const Node from = ParsedRoot("<from><moved>old</moved><stays/></from>");
  const Node to = ParsedRoot("<to><there/></to>");
  const Node moved = from->GetChild("moved");
  to->AppendChild(*moved);
  finding.Compare("the old parent's children after AppendChild", ChildNamesOf(*from), "stays ");
  finding.Compare("the new parent's children after AppendChild", ChildNamesOf(*to), "there moved ");
  moved->SetValue("new");
  finding.Compare("a moved child, changed through the old handle", to->GetChildString("moved"), "new");
  return finding.Words();
}

std::string CheckFamilies() {
  Finding finding;
  const Node root = ParsedRoot("<root both=\"value\" value=\"1\"><both>child</both><child>1</child></root>");
  finding.Compare("GetNamedString", root->GetNamedString("both"), "value");
  finding.Compare("GetChildString", root->GetChildString("both"), "child");
  finding.Compare("GetNamedString of a child's name", root->GetNamedString("child"), "");
  finding.Compare("GetChildString of a named value's name", root->GetChildString("value"), "");
  return finding.Words();
}

std::string CheckParse() {
  Finding finding;
  const h7::auto_com<H7XML::IDocument> document =
      H7XML::CreateXmlDocument("<?xml version=\"1.0\"?><!-- c --><root a=\"&lt;&quot;&#65;\">x &amp;<![CDATA[<y>]]></root>");
  const Node root = document ? document->GetRootElement() : Node();
  if (finding.Unless(static_cast<bool>(root), "CreateXmlDocument does not read a document")) {
    finding.Compare("the root element's name", root->GetName(), "root");
    finding.Compare("a named value with references", root->GetNamedString("a"), "<\"A");
    finding.Compare("a text with a reference and a CDATA section", root->GetValue(), "x &<y>");
  }
  for (const char* const text : {"", "no XML", "<open>", "<a></b>", "<a b=c/>", "<a/><b/>"}) {
    finding.Unless(!H7XML::CreateXmlDocument(text),
                   std::string("CreateXmlDocument returns a document for \"") + text + "\"");
  }
  return finding.Words();
}

std::string CheckTexts() {
  Finding finding;
  for (const std::string& text :
       {std::string("a \"b\" & 'c' <d>"), std::string(" blanks \t and\nlines \n"), std::string("Z\xc3\xbcrich \xe2\x82\xac"),
        std::string("]]>&amp;&#10;"), std::string(65536, 'x'), std::string()}) {
    const Node node = H7XML::CreateXmlNode("texts", "");
    node->SetValue(text);
    node->SetNamedString("named", text);
    const Node parent = H7XML::CreateXmlNode("parent", "");
    parent->AddChildString("child", text);
    finding.Compare("GetValue", node->GetValue(), text);
    finding.Compare("GetNamedString", node->GetNamedString("named"), text);
    finding.Compare("GetChildString", parent->GetChildString("child"), text);
  }
  return finding.Words();
}

}  // namespace

void CheckXml(Report& report) {
  report.Check(Promise::XmlCreate, CheckCreate);
  report.Check(Promise::XmlCreateEmpty, CheckCreateEmpty);
  report.Check(Promise::XmlRename, CheckRename);
  report.Check(Promise::XmlNamed, CheckNamed);
  report.Check(Promise::XmlChildren, CheckChildren);
  report.Check(Promise::XmlChild, CheckChild);
  report.Check(Promise::XmlWalk, CheckWalk);
  report.Check(Promise::XmlAppend, CheckAppend);
  report.Check(Promise::XmlFamilies, CheckFamilies);
  report.Check(Promise::XmlParse, CheckParse);
  report.Check(Promise::XmlTexts, CheckTexts);
}

}  // namespace drivers
