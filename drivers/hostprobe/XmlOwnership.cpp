#include <string>

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/ParsedRoot.h"
#include "drivers/hostprobe/Report.h"
#include "drivers/hostprobe/XmlChecks.h"
#include "host/H7XML.h"

namespace drivers {
namespace {

using Node = h7::auto_com<H7XML::INode>;

std::string CheckTree() {
  Finding finding;
  Node root = ParsedRoot("<root><child a=\"kept\">text</child></root>");
  const h7::auto_com<H7XML::INodeList> list = root->GetChildren();
  const Node child = root->GetChild("child");
  root.Reset();
  if (!finding.Unless(child && list, "GetChild or GetChildren returns an empty handle")) {
    return finding.Words();
  }
  finding.Compare("GetNamedString of a child whose tree is gone", child->GetNamedString("a"), "kept");
  finding.Compare("GetValue of a child whose tree is gone", child->GetValue(), "text");
  const Node first = list->First();
  finding.Unless(first && first->GetName() == "child", "a list does not keep its parent alive");
  return finding.Words();
}

std::string CheckReferences() {
  Finding finding;
  const Node root = ParsedRoot("<root><child>text</child></root>");
  const Node one = root->GetChild("child");
  {
    // The copies are what is checked: each adds a reference and gives it up.
    // NOLINTBEGIN(performance-unnecessary-copy-initialization)
    const Node two(one);
    Node three;
    three = two;
    const h7::auto_com<H7XML::INodeList> list = root->GetChildren();
    const h7::auto_com<H7XML::INodeList> sameList(list);
    // NOLINTEND(performance-unnecessary-copy-initialization)
    const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument("<document/>");
    h7::auto_com<H7XML::IDocument> sameDocument(document);
    sameDocument.Reset();
    finding.Unless(document && document->GetRootElement(), "a document is gone with a second handle on it");
  }
  finding.Compare("GetValue of a node after other handles on it are gone", one->GetValue(), "text");
  return finding.Words();
}

std::string CheckBorrowedTexts() {
  Finding finding;
  const Node node = H7XML::CreateXmlNode("node", "");
  std::string name = "aName";
  node->SetNamedString(name.c_str(), "value");
  name.assign("other");
  finding.Compare("GetNamedString after the text of the name has changed", node->GetNamedString("aName"), "value");
  return finding.Words();
}

}  // namespace

void CheckXmlOwnership(Report& report) {
  report.Check(Promise::OwnerTree, CheckTree);
  report.Check(Promise::OwnerReferences, CheckReferences);
  report.Check(Promise::OwnerTexts, CheckBorrowedTexts);
}

}  // namespace drivers
