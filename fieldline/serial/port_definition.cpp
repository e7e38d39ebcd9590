#include "fieldline/serial/port_definition.h"

#include <limits>
#include <string_view>

namespace fieldline {
namespace {

constexpr int kFields = 4;

// Reads the number after the blanks of `field`. Leaves *number unchanged when there is no digit. A number too large for
// the type is clamped; no line supports that value.
void ReadNumber(std::wstring_view field, std::uint32_t* number) {
  const std::size_t first = field.find_first_not_of(L" \t");
  if (first == field.npos || field[first] < L'0' || field[first] > L'9') return;

  constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
  std::uint64_t value = 0;
  for (const wchar_t c : field.substr(first)) {
    if (c < L'0' || c > L'9') break;
    value = value * 10 + static_cast<std::uint64_t>(c - L'0');
    if (value > kMost) value = kMost;
  }
  *number = static_cast<std::uint32_t>(value);
}

void ReadParity(std::wstring_view field, Parity* parity) {
  switch (field.empty() ? L'\0' : field.front()) {
    case L'N':
    case L'n':
      *parity = Parity::kNone;
      break;
    case L'O':
    case L'o':
      *parity = Parity::kOdd;
      break;
    case L'E':
    case L'e':
      *parity = Parity::kEven;
      break;
    case L'M':
    case L'm':
      *parity = Parity::kMark;
      break;
    case L'S':
    case L's':
      *parity = Parity::kSpace;
      break;
    default:
      break;
  }
}

void ReadStopBits(std::wstring_view field, StopBits* stop_bits) {
  if (field == L"1") *stop_bits = StopBits::kOne;
  if (field == L"1.5") *stop_bits = StopBits::kOneAndHalf;
  if (field == L"2") *stop_bits = StopBits::kTwo;
}

}  // namespace

int DeviceNameLength(const wchar_t* definition) {
  const std::size_t colon = std::wstring_view(definition).find(L':');
  return colon == std::wstring_view::npos ? 0 : static_cast<int>(colon) + 1;
}

bool ParseLineSettings(const wchar_t* definition, LineSettings* settings) {
  std::wstring_view rest(definition);
  rest.remove_prefix(static_cast<std::size_t>(DeviceNameLength(definition)));

  LineSettings parsed;
  int fields = 0;
  while (!rest.empty()) {
    // A comma at the very end of the text is part of the last field, not a separator.
    std::size_t comma = rest.find(L',');
    if (comma + 1 == rest.size()) comma = rest.npos;
    const std::wstring_view field = rest.substr(0, comma);
    rest.remove_prefix(comma == rest.npos ? rest.size() : comma + 1);

    switch (fields++) {
      case 0:
        ReadNumber(field, &parsed.baud);
        break;
      case 1:
        ReadParity(field, &parsed.parity);
        break;
      case 2:
        ReadNumber(field, &parsed.data_bits);
        break;
      case 3:
        ReadStopBits(field, &parsed.stop_bits);
        break;
      default:
        break;
    }
  }
  if (fields != kFields) return false;
  *settings = parsed;
  return true;
}

}  // namespace fieldline
