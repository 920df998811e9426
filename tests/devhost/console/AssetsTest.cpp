#include "devhost/console/Assets.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

TEST(ThePage, IsTheOneOfTheSourceTree) {
  for (const EmbeddedFile& file : PageFiles()) {
    EXPECT_EQ(file.text, testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/devhost/page/" + file.name));
  }
  EXPECT_EQ(FindAsset("/").text, testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/devhost/page/index.html"));
  EXPECT_STREQ(FindAsset("/").type, "text/html; charset=utf-8");
}

TEST(ThePage, HasAllFilesThatItNames) {
  std::size_t assets = 0;
  for (const EmbeddedFile& file : PageFiles()) {
    assets += FindAsset("/" + file.name).type != nullptr ? 1 : 0;
  }
  EXPECT_GE(assets, 1U);
  const std::string page = testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/devhost/page/index.html");
  const std::regex named("(?:src|href)=\"([^\"]+)\"");
  for (auto match = std::sregex_iterator(page.begin(), page.end(), named); match != std::sregex_iterator(); ++match) {
    const std::string name = (*match)[1].str();
    EXPECT_NE(FindAsset(name.front() == '/' ? name : "/" + name).type, nullptr) << name;
  }
}

std::string Unpacked(const std::string& packed) {
  const testsupport::ScratchFolder folder;
  const std::string command = "gzip -dc " + folder.Write("packed", packed) + " > " + folder.Path("plain");
  EXPECT_EQ(std::system(command.c_str()), 0);
  return folder.Read("plain");
}

TEST(ThePage, IsThereAsGzipAsWell) {
  std::size_t size = 0;
  for (const EmbeddedFile& file : PageFiles()) {
    EXPECT_EQ(Unpacked(file.packed), file.text) << file.name;
    EXPECT_EQ(file.packed.substr(4, 4), std::string(4, '\0')) << "a time would make each build another one";
    size += FindAsset("/" + file.name).packed.size();
  }
  EXPECT_LT(size, 60'000U) << "what a browser has to load";
}

TEST(AFileThatIsNotOfThePage, IsNotFound) {
  for (const char* const path :
       {"", "/no.js", "/../CMakeLists.txt", "/README.md", "//index.html", "index.html", "/index.html/"}) {
    const bool isFound = !FindAsset(path).text.empty();
    EXPECT_FALSE(isFound) << path;
  }
}

}  // namespace
}  // namespace devhost
