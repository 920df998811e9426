#include "devhost/commands/PageOpener.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

// ServeTest.cpp has the whole of it, with a program that opens the page.
TEST(APageOpener, SaysThatThereIsNothingToOpenThePageWith) {
  const testsupport::ScratchFolder folder;
  const std::string before = std::getenv("PATH");
  const FileDescriptor errors(::open(folder.Path("errors").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  Console console(errors.Get(), errors.Get());
  ::setenv("PATH", folder.Path().c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  {
    PageOpener opener("http://127.0.0.1:1/#token", console);
    opener.Tick();
  }
  ::setenv("PATH", before.c_str(), 1);
  ::unsetenv("XDG_RUNTIME_DIR");
  EXPECT_THAT(folder.Read("errors"), testing::HasSubstr("xdg-open is not installed"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1) << "the errors alone";
}

}  // namespace
}  // namespace devhost
