#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/types.h"

namespace fieldline {

using Bytes = std::vector<BYTE>;

// "01 03 00": all bytes, or the first `most` and the total number.
std::string Hex(std::span<const BYTE> bytes, std::size_t most = SIZE_MAX);

// Reads a decimal number, or a hexadecimal one after "0x". Nothing unless the whole text is a number.
std::optional<long> ParseInteger(std::string_view text);

// "17.3" for 17.26 and one decimal.
std::string Fixed(double number, int decimals);

// Makes untrusted text safe for a terminal, a log or a message: control characters and invalid UTF-8 are shown as \r,
// \n, \t or \xNN, and a backslash as two.
std::string Escaped(std::string_view text);

// The same for a whole message, in which backslashes stay single: parts of it may be escaped already.
std::string ForTerminal(std::string_view message);

// "; did you mean poll?" when one of `candidates` differs from `text` by a typing mistake or two, else empty.
std::string DidYouMean(std::string_view text, std::span<const std::string> candidates);

// "a, b, c"
std::string Join(std::span<const std::string> parts, std::string_view between = ", ");

// A cell of a CSV file: in quotation marks where the text would be taken for several cells or rows.
std::string CsvCell(std::string_view text);

using Time = std::chrono::system_clock::time_point;

// 2024-05-17T13:45:00.123Z, with up to six digits of the second's fraction.
std::string IsoTime(Time time, int digits = 3);

}  // namespace fieldline
