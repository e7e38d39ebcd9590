// Computing time of a poll without its serial exchange. Each benchmark has a plain counterpart: the numbers of a
// battery reply are converted through text, which defines their values, and the checksum is computed bit by bit.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fieldline/sensor/modbus.h"
#include "tests/support/stub_port.h"

namespace {

constexpr int kReplyLength = 470;
constexpr int kInfoLength = kReplyLength - 18;
constexpr char kNumbers[] = "66660640CDCC4C4033338B40E17A943E3333BB41";  // 2.1, 3.2, 4.35, 0.29, 23.4

// Answers every read with the same reply.
class BatteryPort final : public fieldline::test::StubPort {
 public:
  BatteryPort() {
    BYTE info[kInfoLength];
    for (int i = 0; i < kInfoLength; ++i) info[i] = static_cast<BYTE>(kNumbers[(i + 36) % 40]);
    BuildFrame(reply_, 0x20, 0x01, 0x46, 0x00, info, kInfoLength);
  }

  int Read(BYTE* data, int count) override {
    std::memcpy(data, reply_, kReplyLength);
    return count;
  }

 private:
  BYTE reply_[kReplyLength];
};

double FloatByPowers(const BYTE* characters) {
  std::uint32_t bits = 0;
  for (int i = 6; i >= 0; i -= 2) bits = bits << 8 | GetHexByte(characters + i);
  const double fraction = bits & 0x7FFFFF;
  const double exponent = bits >> 23 & 0xFF;
  return (1 + fraction * (1 / std::pow(2.0, 23))) * std::pow(2.0, exponent - 127);
}

double ScaleByText(double value, int decimals) {
  char text[20];
  std::snprintf(text, sizeof text, decimals == 1 ? "%.1f" : "%.2f", value);
  return std::atof(text) * (decimals == 1 ? 10.0 : 100.0);
}

void BatteryPoll(benchmark::State& state) {
  BatteryPort port;
  CSensorBattery battery;
  for (auto _ : state) {
    if (battery.GetData(&port, 1) != 1) state.SkipWithError("refused");
    benchmark::DoNotOptimize(battery.m_pData);
  }
}
BENCHMARK(BatteryPoll);

void BatteryPollByText(benchmark::State& state) {
  BatteryPort port;
  BATTERY_DATA record;
  for (auto _ : state) {
    BYTE reply[kReplyLength];
    if (!CheckReply(reply, port.Read(reply, kReplyLength), kReplyLength)) state.SkipWithError("refused");
    record.cell_sum = 0;
    for (int i = 0; i < BATTERY_DATA::kCells; ++i) {
      record.cells[i] = static_cast<std::uint16_t>(FloatByPowers(reply + 17 + 8 * i) * 1000.0);
      record.cell_sum += record.cells[i];
    }
    record.group_1_second = static_cast<std::uint16_t>(ScaleByText(FloatByPowers(reply + 419), 2));
    record.group_2_first = static_cast<std::uint16_t>(ScaleByText(FloatByPowers(reply + 429), 2));
    record.group_2_second = static_cast<std::uint16_t>(ScaleByText(FloatByPowers(reply + 437), 2));
    record.group_3_first = static_cast<std::uint16_t>(ScaleByText(FloatByPowers(reply + 447), 1));
    record.group_3_second = static_cast<std::uint16_t>(ScaleByText(FloatByPowers(reply + 455), 1));
    benchmark::DoNotOptimize(record);
  }
}
BENCHMARK(BatteryPollByText);

void ScaledValue(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(GetScaledValue(GetHexFloat(reinterpret_cast<const BYTE*>(kNumbers) + 16), 2));
  }
}
BENCHMARK(ScaledValue);

void ScaledValueByText(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(ScaleByText(FloatByPowers(reinterpret_cast<const BYTE*>(kNumbers) + 16), 2));
  }
}
BENCHMARK(ScaledValueByText);

constexpr BYTE kLongestMeterReply = 119;

void Crc(benchmark::State& state) {
  BYTE reply[kLongestMeterReply] = {1, 3, 114};
  for (auto _ : state) {
    benchmark::DoNotOptimize(reply);
    benchmark::DoNotOptimize(CRC16(reply, kLongestMeterReply));
  }
}
BENCHMARK(Crc);

void CrcBitByBit(benchmark::State& state) {
  BYTE reply[kLongestMeterReply] = {1, 3, 114};
  for (auto _ : state) {
    benchmark::DoNotOptimize(reply);
    unsigned crc = 0xFFFF;
    for (const BYTE byte : reply) {
      crc ^= byte;
      for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    }
    benchmark::DoNotOptimize(crc);
  }
}
BENCHMARK(CrcBitByBit);

}  // namespace
