#include "polling/text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace fieldline {
namespace {

template <typename... Args>
std::string Print(const char* format, Args... args) {
  char text[64];
  std::snprintf(text, sizeof text, format, args...);
  return text;
}

// Length of the first UTF-8 character of `text`, which must not be empty; 0 for a control character and for invalid
// UTF-8.
std::size_t PrintableLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return byte(0) >= 0x20 && byte(0) != 0x7F ? 1 : 0;
  const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : byte(0) >= 0xC2 ? 2 : 0;
  if (length == 0 || byte(0) > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, surrogates and codes beyond Unicode begin with these. C2 80 to C2 9F are control characters.
  const bool wrong = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xED && byte(1) > 0x9F) ||
                     (byte(0) == 0xF0 && byte(1) < 0x90) || (byte(0) == 0xF4 && byte(1) > 0x8F) ||
                     (byte(0) == 0xC2 && byte(1) < 0xA0);
  return wrong ? 0 : length;
}

std::string Escape(std::string_view text, std::string_view backslash) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  while (!text.empty()) {
    const std::size_t length = PrintableLength(text);
    const char first = text.front();
    if (first == '\\') {
      escaped += backslash;
    } else if (length > 0) {
      escaped += text.substr(0, length);
    } else if (first == '\r' || first == '\n' || first == '\t') {
      escaped += first == '\r' ? "\\r" : first == '\n' ? "\\n" : "\\t";
    } else {
      const auto byte = static_cast<unsigned char>(first);
      escaped += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
    text.remove_prefix(std::max<std::size_t>(1, length));
  }
  return escaped;
}

// Edit distance: characters to add, remove, change, or swap with their neighbour.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> slips(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t k = 0; k <= b.size(); ++k) {
      std::size_t& here = slips[i][k];
      if (i == 0 || k == 0) {
        here = i + k;
        continue;
      }
      const std::size_t changed = slips[i - 1][k - 1] + (a[i - 1] == b[k - 1] ? 0 : 1);
      here = std::min({slips[i - 1][k] + 1, slips[i][k - 1] + 1, changed});
      const bool swapped = i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1];
      if (swapped) here = std::min(here, slips[i - 2][k - 2] + 1);
    }
  }
  return slips[a.size()][b.size()];
}

}  // namespace

std::string Hex(std::span<const BYTE> bytes, std::size_t most) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const BYTE byte : bytes.first(std::min(bytes.size(), most))) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  if (bytes.size() > most) text += " ... (" + std::to_string(bytes.size()) + " bytes)";
  return text;
}

std::optional<long> ParseInteger(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
    if (text.starts_with('-')) return std::nullopt;
  }
  long number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

std::string Fixed(double number, int decimals) { return Print("%.*f", decimals, number); }

std::string Escaped(std::string_view text) { return Escape(text, "\\\\"); }

std::string ForTerminal(std::string_view message) { return Escape(message, "\\"); }

std::string DidYouMean(std::string_view text, std::span<const std::string> candidates) {
  constexpr std::size_t kLongest = 40;  // longer texts get no suggestion
  if (text.size() > kLongest) return {};
  std::size_t least = std::min<std::size_t>(3, (text.size() + 2) / 2);
  const std::string* nearest = nullptr;
  for (const std::string& candidate : candidates) {
    const bool begun = text.size() > 1 && candidate.starts_with(text);
    const std::size_t distance = begun ? 1 : EditDistance(text, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = &candidate;
  }
  return nearest != nullptr ? "; did you mean " + *nearest + '?' : std::string();
}

std::string Join(std::span<const std::string> parts, std::string_view between) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += between;
    text += part;
  }
  return text;
}

std::string CsvCell(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == text.npos) return std::string(text);
  std::string cell = "\"";
  for (const char c : text) cell += c == '"' ? std::string("\"\"") : std::string(1, c);
  return cell + '"';
}

std::string IsoTime(Time time, int digits) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::microseconds>(time - day));
  std::string text = Print("%04d-%02u-%02uT%02d:%02d:%02d.%06d", static_cast<int>(date.year()),
                           static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                           static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                           static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  text.resize(text.size() - 6 + static_cast<std::size_t>(digits));
  return text + 'Z';
}

}  // namespace fieldline
