// The built probe in a host of its own that breaks one promise at a time: exactly the line of that promise fails.
#include <gmock/gmock.h>

#include <cctype>
#include <set>
#include <sstream>
#include <string>

#include "tests/drivers/hostprobe/BrokenPromise.h"
#include "tests/drivers/hostprobe/SkeletonHost.h"
#include "tests/support/ScratchFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using skeleton::Promise;

// The report of a probe after two lives of the host, in which everything happened that the probe waits for.
class AHost {
 public:
  AHost() {
    m_host.AddVariable(5, 7, false, false);
    m_host.AddVariable(9, 1, true, false);
    LoadDrivers();
    Play();
    m_host.Stop();
    LoadDrivers();
    LoadProject();
    m_host.Stop();
  }

  std::string Report() const { return m_folder.Read("report.txt"); }

  // The ids of the lines that begin with that verdict.
  std::set<std::string> Lines(const std::string& verdict) const {
    std::set<std::string> ids;
    std::istringstream lines(Report());
    for (std::string line; std::getline(lines, line);) {
      if (line.compare(0, verdict.size(), verdict) == 0) {
        ids.insert(line.substr(13, line.find(' ', 13) - 13));
      }
    }
    return ids;
  }

 private:
  void LoadDrivers() {
    m_host.Load(8, "<config/>");
    m_host.Load(7, "<config report='" + m_folder.Path("report.txt") +
                       "' text='a &quot;b&quot; &amp; &lt;c&gt;' number=' 4294967295 ' flag='1'/>");
  }

  void LoadProject() {
    m_host.Send(5, skeleton::Breaks(Promise::EventProjectLoaded) ? "<e name=''/>" : "<e name='OnProjectLoaded'/>");
  }

  void Play() {
    LoadProject();
    LoadProject();
    m_host.AddVariable(5, 8, false, true);
    m_host.AddVariable(9, 2, true, true);
    m_host.Send(35, skeleton::Breaks(Promise::EventVariableRemoved)
                        ? "<e name='OnVariableRemoved'><p name='iddevice'>five</p><p name='idvariable'>8</p></e>"
                        : "<e name='OnVariableRemoved'><p name='iddevice'>5</p><p name='idvariable'>8</p></e>");
    m_host.Send(11, skeleton::Breaks(Promise::EventItemRemoved)
                        ? "<e name='OnItemRemoved'><p name='iditem'>5</p></e>"
                        : "<e name='OnItemRemoved'><p name='iditem'>5</p><p name='idroom'>0</p></e>");
    m_host.Command("HostProbe", {{"text", "two \"words\" & <more>"},
                                 {"empty", ""},
                                 {"number", "4294967295"},
                                 {"large", "4294967296"},
                                 {"word", "12x"}});
  }

  testsupport::ScratchFolder m_folder;
  skeleton::Host m_host{HOST_PROBE_MODULE};
};

TEST(AHostThatKeepsItsPromises, HasAReportOfLinesThatAllHold) {
  skeleton::brokenPromise = Promise::Count;
  const AHost host;
  EXPECT_EQ(host.Lines("holds").size(), drivers::kPromiseCount) << host.Report();
}

class AHostThatBreaks : public testing::TestWithParam<drivers::PromiseText> {
 protected:
  void SetUp() override { skeleton::brokenPromise = GetParam().promise; }
  void TearDown() override { skeleton::brokenPromise = Promise::Count; }
};

TEST_P(AHostThatBreaks, FailsThatLineAndNoOther) {
  const AHost host;
  EXPECT_THAT(host.Lines("fails"), ElementsAre(GetParam().id)) << host.Report();
  EXPECT_THAT(host.Lines("under way"), IsEmpty());
}

std::string NameOf(const testing::TestParamInfo<drivers::PromiseText>& promise) {
  std::string name;
  bool isStart = true;
  for (const char* c = promise.param.id; *c != '\0'; ++c) {
    if (*c != '-') {
      name += isStart ? static_cast<char>(std::toupper(static_cast<unsigned char>(*c))) : *c;
    }
    isStart = *c == '-';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Promises, AHostThatBreaks, testing::ValuesIn(drivers::AllPromises()), NameOf);

}  // namespace
