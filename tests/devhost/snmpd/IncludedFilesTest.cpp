#include "devhost/snmpd/IncludedFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ScratchFolder.h"

namespace {

using devhost::IncludedFiles;

class AnIncludedFile : public testing::Test {
 protected:
  std::string Read(const std::string& path) { return IncludedFiles().Read(path, m_files); }

  testsupport::ScratchFolder m_folder;
  std::vector<IncludedFiles::File> m_files;
};

TEST_F(AnIncludedFile, IsReadWhole) {
  m_folder.Write("a.conf", std::string(200000, 'a'));
  EXPECT_EQ("", Read(m_folder.Path("a.conf")));
  ASSERT_EQ(1U, m_files.size());
  EXPECT_EQ(m_folder.Path("a.conf"), m_files[0].path);
  EXPECT_EQ(std::string(200000, 'a'), m_files[0].text);
}

TEST_F(AnIncludedFile, HasAnAbsolutePath) {
  for (const std::string path : {"", "a.conf", "../a.conf", "~/a.conf"}) {
    EXPECT_EQ("the path of an included file must be absolute", Read(path));
  }
  EXPECT_EQ("the path of an included folder must be absolute", IncludedFiles().ReadFolder("..", m_files));
}

TEST_F(AnIncludedFile, IsNeitherALinkNorAPipeNorADeviceNorAFolder) {
  m_folder.Write("a.conf", "sysName x\n");
  std::filesystem::create_symlink(m_folder.Path("a.conf"), m_folder.Path("link.conf"));
  EXPECT_EQ("the included file cannot be read: it is a link", Read(m_folder.Path("link.conf")));
  ASSERT_EQ(0, ::mkfifo(m_folder.Path("pipe.conf").c_str(), 0600));
  for (const std::string& path : {m_folder.Path("pipe.conf"), std::string("/dev/zero"), m_folder.Path()}) {
    EXPECT_EQ("the included file is not a regular file", Read(path)) << path;
  }
  EXPECT_EQ("the included file cannot be read: No such file or directory", Read("/none"));
  EXPECT_EQ("the included file cannot be read: File name too long", Read("/" + std::string(5000, 'x')));
  EXPECT_TRUE(m_files.empty());
  std::filesystem::create_directory_symlink(m_folder.Path(), m_folder.Path("folder"));
  EXPECT_EQ("the included folder cannot be read: Not a directory",
            IncludedFiles().ReadFolder(m_folder.Path("folder"), m_files));
  EXPECT_EQ("the included file cannot be read: it is a link", IncludedFiles().ReadFolder(m_folder.Path(), m_files));
  EXPECT_EQ(1U, m_files.size());
}

TEST_F(AnIncludedFile, MayBeALinkToARegularFileForThoseWhoFollowLinks) {
  m_folder.Write("a.conf", "sysName x\n");
  std::filesystem::create_symlink(m_folder.Path("a.conf"), m_folder.Path("link.conf"));
  std::filesystem::create_directory_symlink(m_folder.Path(), m_folder.Path("folder"));
  std::filesystem::create_symlink("/dev/zero", m_folder.Path("device"));
  IncludedFiles files(IncludedFiles::Links::Followed);
  EXPECT_EQ("", files.Read(m_folder.Path("link.conf"), m_files));
  EXPECT_EQ("", files.ReadFolder(m_folder.Path("folder"), m_files));
  EXPECT_EQ(3U, m_files.size());
  EXPECT_EQ("the included file is not a regular file", files.Read(m_folder.Path("device"), m_files));
}

TEST_F(AnIncludedFile, IsLeftOutBeyondTheBoundsOfOneConfiguration) {
  m_folder.Write("large.conf", std::string(16 * 1024 * 1024 + 1, '#'));
  EXPECT_EQ("the included files are too many or too large", Read(m_folder.Path("large.conf")));
  m_folder.Write("small.conf", "");
  IncludedFiles many;
  for (int number = 0; number < 100; ++number) {
    EXPECT_EQ("", many.Read(m_folder.Path("small.conf"), m_files));
  }
  EXPECT_EQ("the included files are too many or too large", many.Read(m_folder.Path("small.conf"), m_files));
  EXPECT_EQ(100U, m_files.size());
}

}  // namespace
