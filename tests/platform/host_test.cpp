// The smaller promises of the platform.

#include <gtest/gtest.h>

#include <chrono>
#include <string_view>

#include "fieldline/platform/clock.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/digital_inputs.h"
#include "fieldline/platform/file.h"
#include "fieldline/platform/text.h"
#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

TEST(ClockTest, TicksKeepStepWithASleep) {
  const auto start = std::chrono::steady_clock::now();
  const std::uint32_t first = TickMs();
  SleepMs(30);
  const std::uint32_t elapsed = TickMs() - first;
  const auto bound = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, 29u);  // each tick is cut to whole milliseconds
  EXPECT_LE(std::chrono::milliseconds(elapsed), bound + std::chrono::milliseconds(1));
}

TEST(DigitalInputsTest, OneByteIsReadFromTheMappedDevice) {
  const TempDirectory directory;
  directory.WriteFile("inputs", "\x81\x42");
  directory.WriteFile("empty", "");
  BYTE states = 0x55;
  const auto read_from = [&](const char* file) {
    EXPECT_EQ(1, MapDevice(L"EIO1:", directory.Path(file).c_str()));
    const bool done = ReadDigitalInputs(L"EIO1:", &states);
    MapDevice(L"EIO1:", nullptr);
    return done;
  };
  for (const char* file : {"nothing", "empty", "."}) EXPECT_FALSE(read_from(file)) << file;
  EXPECT_FALSE(ReadDigitalInputs(nullptr, &states));
  EXPECT_EQ(0x55, states);
  EXPECT_TRUE(read_from("inputs"));
  EXPECT_EQ(0x81, states);
}

class FileTest : public testing::Test {
 protected:
  FileTest() { EXPECT_EQ(1, SetFlashRoot(root_.Path().string().c_str())); }
  ~FileTest() override { SetFlashRoot(nullptr); }

  bool Store(const std::u16string& path, const std::string& content) {
    File file;
    if (!file.Create(path.c_str())) return false;
    const int count = static_cast<int>(content.size());
    EXPECT_EQ(count, file.Write(reinterpret_cast<const BYTE*>(content.data()), count));
    file.Close();
    return true;
  }

  TempDirectory root_;
};

TEST_F(FileTest, FilesAreCreatedAndReplacedBelowTheFlashRoot) {
  EXPECT_FALSE(Store(u"\\NandFlash\\www\\a.jpeg", "x")) << "directories are never made";
  EXPECT_FALSE(Store(std::u16string(3950, u'\\') + std::u16string(250, u'a'), "x")) << "nor is a long path cut";
  EXPECT_TRUE(std::filesystem::is_empty(root_.Path()));
  std::filesystem::create_directories(root_.Path("NandFlash/www"));
  for (const char* content : {"first picture", "second"}) {
    EXPECT_TRUE(Store(u"\\NandFlash\\www\\a.jpeg", content));
    EXPECT_EQ(content, root_.ReadFile("NandFlash/www/a.jpeg"));
  }
  EXPECT_TRUE(Store(u"\\\u6E29.jpeg", "x"));
  EXPECT_EQ("x", root_.ReadFile("\xE6\xB8\xA9.jpeg"));

  EXPECT_EQ(1, SetFlashRoot(nullptr));
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(root_.Path());  // on Windows the root is that of the current drive
  EXPECT_TRUE(Store((root_.Path() / "a").relative_path().u16string(), "x")) << "paths are those of the system";
  std::filesystem::current_path(former);
  EXPECT_EQ("x", root_.ReadFile("a"));
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

// What `convert` makes of a text in an output of so many units, in which it must stay.
template <class String>
String Converted(int capacity, const auto& convert) {
  String out(static_cast<std::size_t>(capacity) + 1, '#');
  const auto length = static_cast<std::size_t>(convert(out.data(), capacity));
  EXPECT_EQ(0, out[length]);
  EXPECT_EQ('#', out.back()) << "wrote beyond the capacity";
  return out.substr(0, length);
}

TEST(TextTest, DeviceTextBecomesUtf16) {
  const struct {
    std::string_view text;
    int capacity;
    std::u16string_view expected;
  } kCases[] = {
      {"",                                     1,  u""                      },
      {"UPS 3k",                               20, u"UPS 3k"                },
      {"UPS 3k",                               4,  u"UPS"                   },
      {"\xC3\xA9\xE6\xB8\xA9\xF0\x9F\x94\xA5", 20, u"\u00E9\u6E29\U0001F525"},
      {"a\xF0\x9F\x94\xA5",                    3,  u"a"                     }, // a pair is not cut in half
      {{"\xE6\xB8\xA9", 2},                    20, u"\uFFFD"                }, // ends in mid-character
      {"\xE6\xB8z",                            20, u"\uFFFDz"               }, // cut short by another character
      {"\x80\xFF",                             20, u"\uFFFD\uFFFD"          }, // never a first byte
      {"\xC1\x81\xE0\x82\x80",                 20, u"\uFFFD\uFFFD"          }, // longer than the character needs
      {"\xED\xA0\x80\xF4\x90\x80\x80",         20, u"\uFFFD\uFFFD"          }, // half a pair; beyond the last character
  };
  for (const auto& c : kCases) {
    const auto convert = [&](char16_t* out, int capacity) {
      return DeviceTextToUtf16(c.text.data(), static_cast<int>(c.text.size()), out, capacity);
    };
    EXPECT_EQ(c.expected, Converted<std::u16string>(c.capacity, convert)) << testing::PrintToString(c.text);
  }
}

TEST(TextTest, Utf16BecomesUtf8) {
  constexpr char16_t kHighAlone[] = {0xD83D, u'a', 0};
  constexpr char16_t kLowAlone[] = {0xDD25, 0xD83D, 0};
  const struct {
    const char16_t* text;
    int capacity;
    const char* expected;
  } kCases[] = {
      {u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000", 20, "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80"},
      {kHighAlone,                                  20, "\xEF\xBF\xBD\x61"                                            },
      {kLowAlone,                                   20, "\xEF\xBF\xBD\xEF\xBF\xBD"                                    },
      {u"a\u6E29",                                  4,  "a"                                                           },
      {u"a\u6E29",                                  5,  "a\xE6\xB8\xA9"                                               },
      {u"",                                         1,  ""                                                            },
  };
  for (const auto& c : kCases) {
    const auto convert = [&](char* out, int capacity) { return Utf16ToUtf8(c.text, out, capacity); };
    EXPECT_EQ(c.expected, Converted<std::string>(c.capacity, convert));
  }
}

}  // namespace
}  // namespace fieldline
