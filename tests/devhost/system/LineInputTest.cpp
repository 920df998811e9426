#include "devhost/system/LineInput.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/FileText.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;

class Lines : public testing::Test {
 protected:
  // All lines of a file with that text.
  std::vector<std::string> Of(const std::string& text) const {
    const FileDescriptor file(::open(folder.Write("input", text).c_str(), O_RDONLY | O_CLOEXEC));
    LineInput input(file.Get(), "the input");
    std::vector<std::string> lines;
    while (auto line = input.Next()) {
      lines.push_back(*line);
    }
    return lines;
  }

  const testsupport::ScratchFolder folder;
};

using Texts = std::vector<std::string>;

TEST_F(Lines, AreCutAtLineFeedsAndTheLastNeedsNone) {
  EXPECT_EQ(Of(""), Texts{});
  EXPECT_EQ(Of("a\n\nb\r\nc"), (Texts{"a", "", "b\r", "c"}));
  EXPECT_EQ(Of("a\n"), (Texts{"a"}));
  const std::string large(200000, 'x');
  EXPECT_EQ(Of(large + "\n" + large), (Texts{large, large}));
}

TEST_F(Lines, ComeAsSoonAsTheyAreComplete) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const FileDescriptor reading(ends[0]);
  FileDescriptor writing(ends[1]);
  LineInput input(reading.Get(), "the input");
  ASSERT_EQ(::write(writing.Get(), "one\ntwo\nth", 10), 10);
  EXPECT_EQ(input.Next(), "one");
  EXPECT_EQ(input.Next(), "two");
  ASSERT_EQ(::write(writing.Get(), "ree\n", 4), 4);
  EXPECT_EQ(input.Next(), "three");
}

TEST_F(Lines, AreBounded) {
  const std::string longest(LineInput::kLongestLine, 'x');
  EXPECT_EQ(Of(longest + "\n").size(), 1U);
  try {
    Of("a\n" + longest + "x\n");
    FAIL() << "the line was read";
  } catch (const LineTooLong& error) {
    EXPECT_THAT(error.what(), HasSubstr("a line has more than 16777216 bytes"));
  }
}

TEST_F(Lines, BehindOneThatIsTooLongAreRead) {
  const std::string longest(LineInput::kLongestLine, 'x');
  for (const std::size_t more : {std::size_t{1}, std::size_t{100000}, LineInput::kLongestLine}) {
    for (const std::string end : {"\nb\nc", ""}) {
      const std::string text = "a\n" + longest + std::string(more, 'y') + end;
      const FileDescriptor file(::open(folder.Write("input", text).c_str(), O_RDONLY | O_CLOEXEC));
      LineInput input(file.Get(), "the input");
      EXPECT_EQ(input.Next(), "a");
      EXPECT_THROW(input.Next(), LineTooLong);
      if (!end.empty()) {
        EXPECT_EQ(input.Next(), "b");
        EXPECT_EQ(input.Next(), "c");
      }
      EXPECT_EQ(input.Next(), std::nullopt);
    }
  }
}

TEST_F(Lines, OfWhatCannotBeReadAreAnError) {
  LineInput input(-1, "the input");
  EXPECT_THROW(input.Next(), FileError);
}

}  // namespace
}  // namespace devhost
