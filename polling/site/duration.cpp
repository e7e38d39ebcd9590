#include "polling/site/duration.h"

#include "polling/text.h"

namespace fieldline {

std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text, std::chrono::milliseconds most) {
  using std::chrono::milliseconds;
  constexpr struct {
    std::string_view name;
    milliseconds length;
  } kUnits[] = {
      {"ms", milliseconds(1)        },
      {"s",  std::chrono::seconds(1)},
      {"m",  std::chrono::minutes(1)},
      {"h",  std::chrono::hours(1)  },
      {"d",  kDay                   },
  };
  milliseconds unit(1);
  for (const auto& [name, length] : kUnits) {
    if (!text.ends_with(name)) continue;
    text.remove_suffix(name.size());
    unit = length;
    break;
  }
  const std::optional<long> number = ParseInteger(text);
  if (!number || *number < 0 || *number > most / unit) return std::nullopt;
  return *number * unit;
}

}  // namespace fieldline
