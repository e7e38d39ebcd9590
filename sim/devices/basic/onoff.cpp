#include "sim/devices/basic/onoff.h"

#include <algorithm>
#include <string>

namespace fieldline::sim {
namespace {

constexpr int kInputs = 12;

std::string InputName(int number) { return "input_" + std::to_string(number); }

}  // namespace

SwitchInputs::SwitchInputs(BYTE address) : ModbusSlave(address) {
  for (int i = 1; i <= kInputs; ++i) values().Add({.name = InputName(i), .maximum = 1});
}

Bytes SwitchInputs::Answer(std::span<const BYTE> request) {
  constexpr BYTE kReadAll[] = {4, 0, 0, 0, kInputs};
  if (!std::ranges::equal(request, kReadAll)) return ModbusSlave::Answer(request);

  Bytes answer = {4, kInputs};
  for (int i = 1; i <= kInputs; ++i) answer.push_back(static_cast<BYTE>(values().Number(InputName(i))));
  return answer;
}

}  // namespace fieldline::sim
