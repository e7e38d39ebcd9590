#include "fieldline/drivers/imaging/snapshot_name.h"

#include <algorithm>
#include <charconv>

#include "fieldline/platform/clock.h"

namespace fieldline {
namespace {

char16_t* AppendText(char16_t* out, std::u16string_view text) { return std::copy(text.begin(), text.end(), out); }

// Writes at least two digits.
char16_t* AppendNumber(char16_t* out, int number) {
  char digits[11];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  if (end - digits < 2) *out++ = u'0';
  return std::copy(digits, end, out);
}

}  // namespace

SnapshotName::SnapshotName(std::u16string_view prefix, std::u16string_view suffix) {
  const CalendarTime now = LocalTime();
  char16_t* end = AppendText(path_, kDirectory);
  end = AppendText(end, prefix);
  for (const int number : {now.year, now.month, now.day, now.hour, now.minute, now.second}) {
    end = AppendNumber(end, number);
  }
  end = AppendText(end, suffix);
  *end = u'\0';
}

}  // namespace fieldline
