#include "sim/devices/power/dual_proto.h"

#include <bit>
#include <cstdint>
#include <memory>
#include <string>

namespace fieldline::sim {
namespace {

using namespace std::chrono_literals;

constexpr WORD kCoil = 1013;

constexpr struct {
  WORD first_register;
  double minimum;
  double maximum;
  double number;
  double drift;
} kFloats[] = {
    {2348, 0,       6553.5, 220,  3},
    {2350, -32768,  32767,  -3,   2},
    {2352, 0,       65535,  50,   1},
    {2356, -32768,  32767,  25,   2},
    {2382, -3276.8, 3276.7, 53.5, 1},
    {2384, 0,       6553.5, 12.5, 2},
    {2386, 0,       6553.5, 13,   2},
    {2388, 0,       6553.5, 14,   2},
    {2390, 0,       6553.5, 54,   1},
    {2392, -3276.8, 3276.7, -6.5, 2},
    {2394, 0,       6553.5, 30,   2},
};

constexpr auto kPause = 300ms;
constexpr std::size_t kBodyLength = 132;
constexpr int kStatusByte = 131;
constexpr int kStateOff = 0x10;  // bit of the status byte that is set when the state is 0

constexpr int kWords[] = {0, 2, 4, 6, 8, 10, 12};
constexpr int kSignedBytes[] = {14, 15, 57};
constexpr int kBytes[] = {22, 23, 30, 31, 45, 46, 52, 53, 54, 55, 56, 58, 59, 60, 61, 66, 67, 68, 69, 80, 81, 82, 83};

std::string RegisterName(int number) { return "register_" + std::to_string(number); }
std::string WordName(int place) { return "word_" + std::to_string(place); }
std::string ByteName(int place) { return "byte_" + std::to_string(place); }

}  // namespace

std::unique_ptr<Device> MakeDualProto(BYTE address) {
  if (address % 2 == 0) return std::make_unique<DualProtoModbus>(address);
  return std::make_unique<DualProtoFrame>(address);
}

DualProtoModbus::DualProtoModbus(BYTE address) : ModbusSlave(address) {
  for (const auto& row : kFloats) {
    values().Add({.name = RegisterName(row.first_register),
                  .minimum = row.minimum,
                  .maximum = row.maximum,
                  .decimals = 2,
                  .number = row.number,
                  .drift = row.drift});
  }
  values().Add({.name = "state", .maximum = 1, .number = 1});
}

void DualProtoModbus::Refresh() {
  for (const auto& row : kFloats) {
    const auto number = static_cast<float>(values().Number(RegisterName(row.first_register)));
    const auto bits = std::bit_cast<std::uint32_t>(number);
    holding_registers_[row.first_register] = static_cast<WORD>(bits >> 16);
    holding_registers_[static_cast<WORD>(row.first_register + 1)] = static_cast<WORD>(bits & 0xFFFF);
  }
  coils_[kCoil] = values().Number("state") != 0;
}

DualProtoFrame::DualProtoFrame(BYTE address) : address_(address) {
  // The initial values differ, so that a value in the wrong place is noticed.
  for (const int place : kWords) {
    values().Add({.name = WordName(place), .maximum = 0xFFFF, .number = 220.0 + place, .drift = 5});
  }
  for (const int place : kSignedBytes) {
    values().Add({.name = ByteName(place), .minimum = -128, .maximum = 127, .number = -1.0 * place, .drift = 2});
  }
  for (const int place : kBytes) values().Add({.name = ByteName(place), .maximum = 255, .number = 1.0 * place});
  values().Add({.name = "state", .maximum = 1, .number = 1});
}

std::size_t DualProtoFrame::Receive(std::span<const BYTE> received, bool /*silent*/, std::vector<Reply>& replies) {
  constexpr std::size_t kRequestLength = 5;
  if (received.size() < kRequestLength || received[0] != address_ || received[1] != 1 || received[2] != 2) return 0;
  const unsigned sum = received[0] + received[1] + received[2] + received[3] + received[4] * 256u;
  if (sum % 0x10000 != 0) return 0;

  Bytes reply = {address_, 1, kBodyLength};
  const Bytes body = Body();
  reply.insert(reply.end(), body.begin(), body.end());
  replies.push_back({std::move(reply), kPause});
  return kRequestLength;
}

void DualProtoFrame::ChangeAddress(Bytes& reply) const { ++reply[0]; }

Bytes DualProtoFrame::Body() {
  Bytes body(kBodyLength);
  const auto put = [&body](int place, int value) { body[static_cast<std::size_t>(place)] = static_cast<BYTE>(value); };
  for (const int place : kWords) {
    const auto word = static_cast<int>(values().Number(WordName(place)));
    put(place, word & 0xFF);
    put(place + 1, word >> 8);
  }
  for (const int place : kSignedBytes) put(place, static_cast<int>(values().Number(ByteName(place))));
  for (const int place : kBytes) put(place, static_cast<int>(values().Number(ByteName(place))));
  if (values().Number("state") == 0) put(kStatusByte, kStateOff);
  return body;
}

}  // namespace fieldline::sim
