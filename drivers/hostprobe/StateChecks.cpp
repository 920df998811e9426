#include "drivers/hostprobe/StateChecks.h"

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/Report.h"
#include "host/H7XML.h"

namespace drivers {
namespace {

constexpr const char* kText = " a \"b\" & 'c' <d>\n\tZ\xc3\xbcrich ";
constexpr unsigned long kNumber = 4294967295UL;

}  // namespace

h7::auto_com<H7XML::INode> MakeState() {
  h7::auto_com<H7XML::INode> state = H7XML::CreateXmlNode("HostProbeState", "");
  state->SetNamedString("text", kText);
  state->SetNamedULong("number", kNumber);
  state->AddChildString("child", kText);
  return state;
}

std::string WhatIsWrongWithState(const H7XML::INode& state) {
  Finding finding;
  finding.Compare("the name of the state", state.GetName(), "HostProbeState");
  finding.Compare("a named value of the state", state.GetNamedString("text"), kText);
  finding.Compare("a number of the state", state.GetNamedULong("number"), kNumber);
  finding.Compare("a child's text of the state", state.GetChildString("child"), kText);
  return finding.Words();
}

void CheckConfiguration(Report& report, const H7XML::INode& config) {
  if (config.GetNamedString("text").empty() && config.GetNamedString("number").empty() &&
      config.GetNamedString("flag").empty()) {
    return;
  }
  report.Check(Promise::ReaderConfig, [&] {
    Finding finding;
    finding.Compare("GetNamedString of \"text\"", config.GetNamedString("text"), "a \"b\" & <c>");
    finding.Compare("GetNamedULong of \"number\"", config.GetNamedULong("number"), kNumber);
    finding.Compare("GetNamedBool of \"flag\"", config.GetNamedBool("flag"), true);
    return finding.Words();
  });
}

}  // namespace drivers
