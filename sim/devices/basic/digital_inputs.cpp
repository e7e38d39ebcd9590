#include "sim/devices/basic/digital_inputs.h"

#include <fstream>
#include <string>
#include <system_error>

namespace fieldline::sim {
namespace {

constexpr int kInputs = 8;

std::string InputName(int number) { return "input_" + std::to_string(number); }

}  // namespace

DigitalInputs::DigitalInputs(const std::filesystem::path& directory) : path_(directory / "eio1") {
  for (int i = 1; i <= kInputs; ++i) values_.Add({.name = InputName(i), .maximum = 1});
}

DigitalInputs::~DigitalInputs() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

bool DigitalInputs::Update() {
  unsigned states = 0;
  for (int i = 1; i <= kInputs; ++i) {
    if (values_.Number(InputName(i)) != 0) states |= 1u << (i - 1);
  }
  std::filesystem::path next = path_;
  next += ".new";
  std::ofstream file(next, std::ios::binary);
  file.put(static_cast<char>(states));
  file.close();
  if (!file) return false;
  std::error_code error;
  std::filesystem::rename(next, path_, error);
  return !error;
}

}  // namespace fieldline::sim
