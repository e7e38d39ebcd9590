#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace fieldline {

// How to write one, for messages.
constexpr std::string_view kDurationForm = "milliseconds, or 250ms or 5s, up to a day";

// 250, 250ms or 5s; nothing for anything else, and for more than a day.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text);

}  // namespace fieldline
