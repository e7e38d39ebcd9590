#include "fieldline/platform/text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace fieldline {
namespace {

std::u16string ToUtf16(std::string_view text, int capacity) {
  std::u16string out(static_cast<std::size_t>(capacity) + 1, u'#');
  const int length = DeviceTextToUtf16(text.data(), static_cast<int>(text.size()), out.data(), capacity);
  EXPECT_EQ(0, out[static_cast<std::size_t>(length)]);
  EXPECT_EQ(u'#', out.back()) << "wrote beyond the capacity";
  return out.substr(0, static_cast<std::size_t>(length));
}

std::string ToUtf8(const char16_t* text, int capacity) {
  std::string out(static_cast<std::size_t>(capacity) + 1, '#');
  const int length = Utf16ToUtf8(text, out.data(), capacity);
  EXPECT_EQ(0, out[static_cast<std::size_t>(length)]);
  EXPECT_EQ('#', out.back()) << "wrote beyond the capacity";
  return out.substr(0, static_cast<std::size_t>(length));
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
  for (const auto& c : kCases) EXPECT_EQ(c.expected, ToUtf16(c.text, c.capacity)) << testing::PrintToString(c.text);
}

TEST(TextTest, Utf16BecomesUtf8) {
  constexpr char16_t kHighAlone[] = {0xD83D, u'a', 0};
  constexpr char16_t kLowAlone[] = {0xDD25, 0xD83D, 0};
  EXPECT_EQ("", ToUtf8(u"", 1));
  EXPECT_EQ("\\NandFlash", ToUtf8(u"\\NandFlash", 20));
  EXPECT_EQ("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80",
            ToUtf8(u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000", 20));
  EXPECT_EQ(
      "\xEF\xBF\xBD"
      "a",
      ToUtf8(kHighAlone, 20));
  EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD", ToUtf8(kLowAlone, 20));
  EXPECT_EQ("a", ToUtf8(u"a\u6E29", 4));
  EXPECT_EQ("a\xE6\xB8\xA9", ToUtf8(u"a\u6E29", 5));
}

}  // namespace
}  // namespace fieldline
