#include "devhost/snmpd/DaemonOutput.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The complaints, as "FILE|LINE|KIND|TEXT".
std::vector<std::string> Complaints(std::string_view output) {
  std::vector<std::string> texts;
  for (const Complaint& complaint : ReadDaemonOutput(output).complaints) {
    texts.push_back(complaint.file + "|" + std::to_string(complaint.line) + "|" + complaint.kind + "|" + complaint.text);
  }
  return texts;
}

TEST(AComplaint, HasAFileALineAKindAndAText) {
  EXPECT_THAT(Complaints("/etc/snmpd.conf: line 5: Warning: Unknown token: bogus.\nb.conf: line 12: Error: bad"),
              ElementsAre("/etc/snmpd.conf|5|Warning|Unknown token: bogus.", "b.conf|12|Error|bad"));
}

TEST(AComplaint, IsNamedOnce) {
  EXPECT_THAT(Complaints("a: line 5: Error: bad\nother\na: line 5: Error: bad\na: line 6: Error: bad\n"),
              ElementsAre("a|5|Error|bad", "a|6|Error|bad"));
}

TEST(AComplaint, MayBeAboutAFileWithALineInItsName) {
  EXPECT_THAT(Complaints("a: line 1.conf: line 5: Error: bad: line 7: Error: worse"),
              ElementsAre("a: line 1.conf|5|Error|bad: line 7: Error: worse"));
  EXPECT_THAT(Complaints("a: Error: b: line 5: Error: bad"), ElementsAre("a: Error: b|5|Error|bad"));
}

TEST(AComplaint, IsNotThatASinkHasItsPortInAField) {
  const DaemonOutput output = ReadDaemonOutput("a: line 4: Warning: The separate port argument for sinks is deprecated\n");
  EXPECT_THAT(output.complaints, IsEmpty());
  EXPECT_THAT(output.otherLines, IsEmpty());
}

TEST(OtherLines, AreAllThatIsNoComplaint) {
  const DaemonOutput output = ReadDaemonOutput(
      "\nError opening specified endpoint \"udp:161\"\nx: line 5: Note: y\nx: line : Error: y\n\nx: line 5\n"
      "x: line -5: Error: y\nx: line 99999999999999999999: Error: y\nx: line 5 : Error: y");
  EXPECT_THAT(output.complaints, IsEmpty());
  EXPECT_THAT(output.otherLines, ElementsAre("Error opening specified endpoint \"udp:161\"", "x: line 5: Note: y",
                                             "x: line : Error: y", "x: line 5", "x: line -5: Error: y",
                                             "x: line 99999999999999999999: Error: y", "x: line 5 : Error: y"));
}

}  // namespace
}  // namespace devhost
