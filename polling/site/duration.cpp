#include "polling/site/duration.h"

#include "polling/text.h"

namespace fieldline {

std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text) {
  constexpr long kMost = 24L * 3600 * 1000;  // ms
  long unit = 1;
  if (text.ends_with("ms")) {
    text.remove_suffix(2);
  } else if (text.ends_with('s')) {
    text.remove_suffix(1);
    unit = 1000;
  }
  const std::optional<long> number = ParseInteger(text);
  if (!number || *number < 0 || *number > kMost / unit) return std::nullopt;
  return std::chrono::milliseconds(*number * unit);
}

}  // namespace fieldline
