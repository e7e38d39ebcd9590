#include "service/parse_time.h"

#include <optional>

#include "polling/site/duration.h"
#include "polling/usage_error.h"

namespace fieldline::service {
namespace {

// A number of so many digits at the start of `text`, which loses it and the mark after it.
std::optional<int> TakeNumber(std::string_view& text, std::size_t digits, char mark) {
  if (text.size() < digits) return std::nullopt;
  int number = 0;
  for (const char c : text.substr(0, digits)) {
    if (c < '0' || c > '9') return std::nullopt;
    number = 10 * number + (c - '0');
  }
  text.remove_prefix(digits);
  if (mark == '\0') return number;
  if (text.empty() || text.front() != mark) return std::nullopt;
  text.remove_prefix(1);
  return number;
}

std::optional<Time> ParseDay(std::string_view& text) {
  const auto year = TakeNumber(text, 4, '-');
  const auto month = year ? TakeNumber(text, 2, '-') : std::nullopt;
  const auto day = month ? TakeNumber(text, 2, '\0') : std::nullopt;
  if (!day) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  if (!date.ok()) return std::nullopt;
  const std::chrono::sys_days midnight = date;
  return midnight;
}

std::optional<Time> ParseIso(std::string_view text) {
  const std::optional<Time> day = ParseDay(text);
  if (!day || text.empty()) return day;
  if (text.front() != 'T') return std::nullopt;
  text.remove_prefix(1);
  const auto hour = TakeNumber(text, 2, ':');
  const auto minute = hour ? TakeNumber(text, 2, ':') : std::nullopt;
  const auto second = minute ? TakeNumber(text, 2, 'Z') : std::nullopt;
  if (!second || *hour > 23 || *minute > 59 || *second > 59 || !text.empty()) return std::nullopt;
  return *day + std::chrono::hours(*hour) + std::chrono::minutes(*minute) + std::chrono::seconds(*second);
}

}  // namespace

UnixTime ParseTime(const std::string& text, Time now) {
  if (const auto ago = ParseDuration(text, kTenYears)) return ToUnixTime(now - *ago);
  if (const auto time = ParseIso(text)) return ToUnixTime(*time);
  throw UsageError("'" + text + "' is no time; write 2026-05-17T13:45:00Z, 2026-05-17, or 24h for a day ago");
}

}  // namespace fieldline::service
