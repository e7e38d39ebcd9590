#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace fieldline {

// How to write one, for messages.
constexpr std::string_view kDurationForm = "milliseconds, or 250ms, 5s, 5m, 72h or 90d";

// The most that a pause between polls may be, and the most that a program may be told to go on for.
constexpr std::chrono::milliseconds kDay = std::chrono::days(1);
constexpr std::chrono::milliseconds kTenYears = std::chrono::days(3653);

// 250, 250ms, 5s, 5m, 72h or 90d; nothing for anything else, and for more than `most`.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text, std::chrono::milliseconds most);

}  // namespace fieldline
