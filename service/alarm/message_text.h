#pragma once

#include <string>
#include <string_view>

namespace fieldline::service {

// What the placeholders of a text stand for.
struct TextValues {
  std::string unit;
  std::string alarm;
  std::string severity;
  std::string device;
  std::string value;
  std::string since;
};

// Puts the values in place of {unit}, {alarm} and so on.
std::string FillText(std::string_view text, const TextValues& values);

// The text in ASCII, the part of the GSM alphabet that no conversion on the way can spoil: "28 °C" becomes "28 C", and
// what can't be written becomes '?'.
std::string ToBoardText(std::string_view text);

// As much of a text in ASCII as one SMS holds, with "..." when that is not all.
std::string CutToSms(std::string text);

}  // namespace fieldline::service
