#include "fieldline/platform/file.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

class FileTest : public testing::Test {
 protected:
  FileTest() { EXPECT_EQ(1, SetFlashRoot(root_.Path().string().c_str())); }
  ~FileTest() override { SetFlashRoot(nullptr); }

  bool Store(const char16_t* path, const std::string& content) {
    File file;
    if (!file.Create(path)) return false;
    const int count = static_cast<int>(content.size());
    EXPECT_EQ(count, file.Write(reinterpret_cast<const BYTE*>(content.data()), count));
    file.Close();
    return true;
  }

  TempDirectory root_;
};

TEST_F(FileTest, FilesAreCreatedAndReplacedBelowTheFlashRoot) {
  std::filesystem::create_directories(root_.Path("NandFlash/www"));
  EXPECT_TRUE(Store(u"\\NandFlash\\www\\a.jpeg", "first picture"));
  EXPECT_EQ("first picture", root_.ReadFile("NandFlash/www/a.jpeg"));
  EXPECT_TRUE(Store(u"\\NandFlash\\www\\a.jpeg", "second"));
  EXPECT_EQ("second", root_.ReadFile("NandFlash/www/a.jpeg"));
  EXPECT_TRUE(Store(u"\\\u6E29.jpeg", "x"));
  EXPECT_EQ("x", root_.ReadFile("\xE6\xB8\xA9.jpeg"));
}

TEST_F(FileTest, DirectoriesAreNeverMade) {
  EXPECT_FALSE(Store(u"\\NandFlash\\a", "x"));
  EXPECT_TRUE(std::filesystem::is_empty(root_.Path()));
}

TEST_F(FileTest, APathThatIsTooLongIsNotCut) {
  const std::u16string path = std::u16string(3950, u'\\') + std::u16string(250, u'a');
  EXPECT_FALSE(Store(path.c_str(), "x"));
  EXPECT_TRUE(std::filesystem::is_empty(root_.Path()));
}

TEST_F(FileTest, AFileThatIsNotOpenTakesNothing) {
  File file;
  const BYTE byte = 1;
  EXPECT_EQ(-1, file.Write(&byte, 1));
  file.Close();
  ASSERT_TRUE(file.Create(u"\\a"));
  EXPECT_EQ(0, file.Write(&byte, 0));
  file.Close();
  EXPECT_EQ(-1, file.Write(&byte, 1));
}

TEST_F(FileTest, WithoutAFlashRootPathsAreThoseOfTheSystem) {
  EXPECT_EQ(1, SetFlashRoot(nullptr));
  EXPECT_TRUE(Store((root_.Path() / "a").u16string().c_str(), "x"));
  EXPECT_EQ("x", root_.ReadFile("a"));
}

}  // namespace
}  // namespace fieldline
