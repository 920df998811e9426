// Which files a line leads to.
#include "devhost/check/Includes.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AnInclude : public testing::Test {
 protected:
  // The names of the files that a line of FOLDER/snmpd.conf leads to, and what is not read.
  std::vector<std::string> Names(const std::string& line, int depth = 0) {
    std::vector<std::string> names;
    ForEachLine(line, [&](const ConfigLine& cut) {
      if (cut.number != 0 && FindInclude(cut) != nullptr) {
        const Includes::Found found = Includes().Follow(cut, folder.Path("snmpd.conf"), depth);
        problem = found.problem;
        names.reserve(names.size() + found.files.size());
        for (const IncludedFiles::File& file : found.files) {
          names.push_back(file.path.substr(folder.Path().size() + 1));
        }
      }
    });
    return names;
  }

  const testsupport::ScratchFolder folder;
  std::string problem;
};

TEST_F(AnInclude, OfAFileIsRelativeToTheFileAroundIt) {
  const std::string path = folder.Write("more/a", "");
  EXPECT_THAT(Names("includeFile  more/a"), ElementsAre("more/a"));
  EXPECT_THAT(Names("INCLUDEFILE " + path), ElementsAre("more/a"));
  EXPECT_EQ(problem, "");
}

TEST_F(AnInclude, OfAFolderTakesEachConf) {
  for (const char* const name : {"d/2.conf", "d/10.conf", "d/3.txt"}) {
    folder.Write(name, "");
  }
  EXPECT_THAT(Names("includeDir " + folder.Path("d")), ElementsAre("d/10.conf", "d/2.conf"));
  EXPECT_THAT(Names("includeDir d"), IsEmpty());
  EXPECT_THAT(problem, HasSubstr("must be absolute"));
}

TEST_F(AnInclude, ThatIsSearchedTakesAllOfThatName) {
  for (const char* const name : {"p/a.conf", "q/a.conf", "q/a.local.conf", "q/b.conf", "p/c"}) {
    folder.Write(name, "");
  }
  ::setenv("SNMPCONFPATH", (folder.Path("p") + ":" + folder.Path("q")).c_str(), 1);
  EXPECT_THAT(Names("includeSearch a"), ElementsAre("p/a.conf", "q/a.conf", "q/a.local.conf"));
  EXPECT_THAT(Names("includeSearch b.conf"), ElementsAre("q/b.conf"));
  EXPECT_THAT(Names("includeSearch c"), IsEmpty());
  ::unsetenv("SNMPCONFPATH");
  EXPECT_THAT(problem, HasSubstr("under this name"));
}

TEST_F(AnInclude, HasANameToTheEndOfTheLine) {
  folder.Write("a", "");
  for (const char* const line : {"includeFile a ", "includeFile a\r", "includeFile \"a\"", "includeFile a # comment"}) {
    EXPECT_THAT(Names(line), IsEmpty()) << line;
    EXPECT_THAT(problem, HasSubstr("the daemon takes all that follows for the name")) << line;
  }
  EXPECT_THAT(Names("includeFile b"), IsEmpty());
  EXPECT_EQ(problem, "the included file cannot be read: No such file or directory");
}

TEST_F(AnInclude, IsNotKnownBehindTheNameOfASection) {
  folder.Write("a", "");
  EXPECT_THAT(Names("[snmpd] includeFile a"), IsEmpty());
  EXPECT_THAT(Names("[snmp]\n[snmpd]\nincludeFile a"), ElementsAre("a"));
  EXPECT_THAT(Names("includeFile"), IsEmpty());
}

TEST_F(AnInclude, EndsAtTheDepthAtWhichTheDaemonStops) {
  folder.Write("a", "");
  EXPECT_THAT(Names("includeFile a", 15), ElementsAre("a"));
  EXPECT_THAT(Names("includeFile a", 16), IsEmpty());
  EXPECT_THAT(problem, HasSubstr("too deeply"));
}

}  // namespace
}  // namespace devhost
