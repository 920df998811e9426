#include "devhost/engine/EndLine.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

class AnEndLine : public testing::Test {
 protected:
  // Opens a file under that number.
  void Put(int descriptor, const std::string& name) const {
    const int file = ::open(m_folder.Path(name).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(file, descriptor);
    ::close(file);
  }

  // Ends the process with 0 when the line has been written to that file, and to no other one.
  [[noreturn]] void ExitByFile(const std::string& name) const {
    bool isRight = true;
    for (const char* const each : {"errors", "output", "others"}) {
      const bool isThere = std::filesystem::exists(m_folder.Path(each)) && !m_folder.Read(each).empty();
      isRight = isRight && isThere == (name == each);
    }
    ::_exit(isRight ? 0 : 1);
  }

  testsupport::ScratchFolder m_folder;
};

TEST_F(AnEndLine, GoesToStandardError) {
  EXPECT_EXIT(
      {
        EndLine::KeepOutputs();
        EndLine().Add("the process ").Add("ended").Write();
        ::_exit(0);
      },
      testing::ExitedWithCode(0), "^the process ended\n$");
}

TEST_F(AnEndLine, IsCutWhereItIsVeryLong) {
  EXPECT_EXIT(
      {
        EndLine::KeepOutputs();
        EndLine().Add(std::string(5000, 'x').c_str()).Add("y").Write();
        ::_exit(0);
      },
      testing::ExitedWithCode(0), "^x+\n$");
}

TEST_F(AnEndLine, GoesToTheFormerStandardErrorWhenADriverHasClosedIt) {
  EXPECT_EXIT(
      {
        Put(STDERR_FILENO, "errors");
        Put(STDOUT_FILENO, "output");
        EndLine::KeepOutputs();
        Put(STDERR_FILENO, "others");
        EndLine().Add("ended").Write();
        ExitByFile("errors");
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(AnEndLine, GoesToStandardOutputWhereThereWasNoStandardError) {
  EXPECT_EXIT(
      {
        Put(STDOUT_FILENO, "output");
        ::close(STDERR_FILENO);
        EndLine::KeepOutputs();
        Put(STDERR_FILENO, "others");
        EndLine().Add("ended").Write();
        ExitByFile("output");
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(AnEndLine, GoesIntoNoFileOfADriverThatHasClosedEverything) {
  EXPECT_EXIT(
      {
        EndLine::KeepOutputs();
        for (int descriptor = 0; descriptor != 100; ++descriptor) {
          ::close(descriptor);
        }
        for (int descriptor = 0; descriptor != 20; ++descriptor) {
          static_cast<void>(::open(m_folder.Path("others").c_str(), O_WRONLY | O_CREAT, 0600));
        }
        EndLine().Add("ended").Write();
        ExitByFile("none");
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace devhost
