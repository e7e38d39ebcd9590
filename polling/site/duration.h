#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace fieldline {

// For messages: how a duration is written.
constexpr std::string_view kDurationForm = "milliseconds, or 250ms, 5s, 5m, 72h or 90d";

// The longest interval between polls, and the longest run of a program.
constexpr std::chrono::milliseconds kDay = std::chrono::days(1);
constexpr std::chrono::milliseconds kTenYears = std::chrono::days(3653);

// Reads 250, 250ms, 5s, 5m, 72h or 90d. Nothing for any other text, and for more than `most`.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text, std::chrono::milliseconds most);

}  // namespace fieldline
