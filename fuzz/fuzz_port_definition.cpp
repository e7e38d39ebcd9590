// Port definitions: a device up to the first colon, and exactly four fields after it.

#include <cwchar>

#include "fieldline/serial/port_definition.h"
#include "fuzz/reply_port.h"

using namespace fieldline;
using fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Bytes from 0x80 on stand for characters whose low byte is that of another one.
  std::wstring definition;
  for (std::size_t i = 0; i < size && data[i] != 0; ++i) definition += data[i] < 0x80 ? data[i] : 0x80 + data[i];
  const std::size_t device = definition.find(L':') + 1;
  Require(static_cast<std::size_t>(DeviceNameLength(definition.c_str())) == device);

  // A comma in the last place belongs to its field.
  const std::wstring fields = definition.substr(device);
  const bool is_right = !fields.empty() && std::count(fields.begin(), fields.end() - 1, L',') == 3;
  LineSettings settings;
  const std::span bytes(reinterpret_cast<BYTE*>(&settings), sizeof settings);
  fuzz::MakeOld(bytes);
  Require(ParseLineSettings(definition.c_str(), &settings) == is_right);
  if (!is_right) {
    Require(fuzz::IsOld(bytes));
    return 0;
  }

  const wchar_t* const digits = fields.c_str() + std::wcsspn(fields.c_str(), L" \t");
  const bool is_number = *digits >= L'0' && *digits <= L'9';
  Require(settings.baud == (is_number ? std::min(std::wcstoull(digits, nullptr, 10), 0xFFFFFFFFull) : 9600));
  Require(settings.parity <= Parity::kSpace);
  Require((settings.stop_bits == StopBits::kTwo) == fields.ends_with(L",2"));
  return 0;
}
