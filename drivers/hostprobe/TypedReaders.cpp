#include <string>

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/ParsedRoot.h"
#include "drivers/hostprobe/Report.h"
#include "drivers/hostprobe/XmlChecks.h"
#include "host/H7XML.h"
#include "host/ToString.h"

namespace drivers {
namespace {

using Node = h7::auto_com<H7XML::INode>;

// A node that has `text` as its text, as a named value "x" and as the text of a child "x".
Node NodeWith(const std::string& text) {
  return ParsedRoot("<node x=\"" + text + "\">" + text + "<x>" + text + "</x></node>");
}

std::string CheckBool() {
  Finding finding;
  for (const char* const text : {"true", "1", "false", "0", "", "2", "TRUE", "True", "yes", "on", "truely"}) {
    const Node node = NodeWith(text);
    const bool expected = std::string(text) == "true" || std::string(text) == "1";
    finding.Compare("GetNamedBool of \"" + std::string(text) + "\"", node->GetNamedBool("x"), expected);
    finding.Compare("GetChildBool of \"" + std::string(text) + "\"", node->GetChildBool("x"), expected);
  }
  return finding.Words();
}

std::string CheckNumber() {
  struct Example {
    const char* text;
    unsigned long number;
  };
  Finding finding;
  for (const Example& example : {Example{"0", 0},
                                 {"7", 7},
                                 {"4294967295", 4294967295UL},
                                 {" \t12\n", 12},
                                 {"007", 7},
                                 {"4294967296", 0},
                                 {"18446744073709551617", 0},
                                 {"-1", 0},
                                 {"12x", 0},
                                 {"1 2", 0},
                                 {"0x10", 0},
                                 {"1.5", 0},
                                 {"", 0},
                                 {"word", 0}}) {
    const Node node = NodeWith(example.text);
    const std::string what = " of \"" + std::string(example.text) + "\"";
    finding.Compare("GetValueULong" + what, node->GetValueULong(), example.number);
    finding.Compare("GetNamedULong" + what, node->GetNamedULong("x"), example.number);
    finding.Compare("GetChildULong" + what, node->GetChildULong("x"), example.number);
  }
  return finding.Words();
}

std::string CheckAbsent() {
  Finding finding;
  const Node node = ParsedRoot("<node><child/></node>");
  finding.Compare("GetNamedString of what is absent", node->GetNamedString("absent"), "");
  finding.Compare("GetNamedULong of what is absent", node->GetNamedULong("absent"), 0UL);
  finding.Compare("GetNamedBool of what is absent", node->GetNamedBool("absent"), false);
  finding.Compare("GetChildString of what is absent", node->GetChildString("absent"), "");
  finding.Compare("GetChildULong of what is absent", node->GetChildULong("absent"), 0UL);
  finding.Compare("GetChildBool of what is absent", node->GetChildBool("absent"), false);
  return finding.Words();
}

std::string CheckToString() {
  Finding finding;
  finding.Compare("ToString(true)", h7::ToString(true), "true");
  finding.Compare("ToString(false)", h7::ToString(false), "false");
  finding.Compare("ToString(0)", h7::ToString(0UL), "0");
  finding.Compare("ToString(4294967295)", h7::ToString(4294967295UL), "4294967295");
  return finding.Words();
}

}  // namespace

void CheckTypedReaders(Report& report) {
  report.Check(Promise::ReaderBool, CheckBool);
  report.Check(Promise::ReaderNumber, CheckNumber);
  report.Check(Promise::ReaderAbsent, CheckAbsent);
  report.Check(Promise::ReaderToString, CheckToString);
}

}  // namespace drivers
