// The report alone; its log is the skeleton host's.
#include "drivers/hostprobe/Report.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/support/ScratchFolder.h"

namespace {

using drivers::Promise;
using drivers::Report;
using testing::HasSubstr;
using testing::Not;

class AReport : public testing::Test {
 protected:
  std::string Text() const { return folder.Read("report.txt"); }

  testsupport::ScratchFolder folder;
  const std::string path = folder.Path("report.txt");
};

TEST_F(AReport, SaysWhatToDoForEachLineThatIsNotChecked) {
  Report report;
  report.Open(path, "title");
  EXPECT_THAT(Text(), HasSubstr("title\n60 promises: 0 hold, 0 fail, 60 not checked\n\n"));
  EXPECT_THAT(Text(), HasSubstr("\nnot checked  event-item-removed         remove a device from the project\n"));
}

TEST_F(AReport, CountsWhatHoldsAndWhatFails) {
  Report report;
  report.Open(path, "title");
  report.Note(Promise::XmlWalk, "");
  report.Note(Promise::XmlAppend, "the child is\nlost");
  EXPECT_THAT(Text(), HasSubstr("60 promises: 1 hold, 1 fail, 58 not checked\n"));
  EXPECT_THAT(Text(), HasSubstr("\nfails        xml-append                 the child is lost\n"));
}

TEST_F(AReport, KeepsTheFirstFailureOfALine) {
  Report report;
  report.Note(Promise::XmlWalk, "");
  report.Note(Promise::XmlWalk, "one");
  report.Note(Promise::XmlWalk, "");
  report.Note(Promise::XmlWalk, "two");
  report.Open(path, "title");
  EXPECT_THAT(Text(), HasSubstr("\nfails        xml-walk                   one\n"));
}

TEST_F(AReport, NamesTheCheckThatIsUnderWay) {
  Report report;
  report.Open(path, "title");
  report.Check(Promise::XmlWalk, [this]() -> std::string {
    EXPECT_THAT(Text(), HasSubstr("\nunder way    xml-walk "));
    return "";
  });
  EXPECT_THAT(Text(), Not(HasSubstr("under way")));
}

TEST_F(AReport, TakesAnExceptionForAFailure) {
  Report report;
  report.Open(path, "title");
  report.Check(Promise::XmlWalk, []() -> std::string { throw std::runtime_error("no walk"); });
  report.Check(Promise::XmlAppend, []() -> std::string { throw 1; });
  EXPECT_THAT(Text(), HasSubstr("xml-walk                   an exception came out of the host: no walk\n"));
  EXPECT_THAT(Text(),
              HasSubstr("xml-append                 an exception came out of the host that is not a std::exception\n"));
}

TEST_F(AReport, GoesOnWithTheFileOfAnEarlierLife) {
  {
    Report earlier;
    earlier.Open(path, "earlier");
    earlier.Note(Promise::XmlWalk, "wrong");
    earlier.Note(Promise::XmlAppend, "wrong");
    earlier.Note(Promise::XmlChild, "");
  }
  Report report;
  report.Note(Promise::XmlWalk, "");
  report.Open(path, "later");
  EXPECT_THAT(Text(), HasSubstr("later\n60 promises: 2 hold, 1 fail, 57 not checked\n"));
  EXPECT_THAT(Text(), HasSubstr("\nfails        xml-append                 wrong\n"));
  report.Note(Promise::XmlAppend, "");
  EXPECT_THAT(Text(), HasSubstr("60 promises: 3 hold, 0 fail, 57 not checked\n"));
}

TEST_F(AReport, SaysThatTheHostEndedDuringACheck) {
  folder.Write("report.txt", "title\n\nunder way    xml-walk                   words\n");
  Report report;
  report.Open(path, "title");
  EXPECT_THAT(Text(), HasSubstr("\nfails        xml-walk                   the host ended during this check\n"));
}

TEST_F(AReport, IsAsLongAsItsText) {
  folder.Write("report.txt", std::string(100000, 'x'));
  Report report;
  report.Open(path, "title");
  EXPECT_THAT(Text(), testing::StartsWith("title\n"));
  EXPECT_THAT(Text(), Not(HasSubstr("xx")));
}

TEST_F(AReport, ThatCannotBeWrittenChangesNothing) {
  Report report;
  report.Open(folder.Path("missing/report.txt"), "title");
  report.Note(Promise::XmlWalk, "");
  EXPECT_EQ(report.Summary(), "60 promises: 1 hold, 0 fail, 59 not checked");
}

TEST_F(AReport, SeesWhichDriverEndsFirst) {
  Report report;
  report.Open(path, "title");
  const int first = report.DriverBegins();
  const int second = report.DriverBegins();
  report.DriverEnds(first);
  report.DriverEnds(second);
  EXPECT_THAT(Text(), HasSubstr("\nfails        life-reverse "));
  EXPECT_THAT(Text(), HasSubstr("\nholds        life-destroyed "));
}

}  // namespace
