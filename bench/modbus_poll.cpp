// One poll of a probe over a pseudo-terminal, compared with libmodbus reading the same two registers. The far end
// answers immediately, so that only the overhead of the two is measured.

#include <benchmark/benchmark.h>
#include <modbus.h>

#include <atomic>
#include <cstdint>
#include <thread>

#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/pseudo_terminal.h"
#include "fieldline/serial/ser_base.h"

namespace fieldline {
namespace {

// Answers every eight bytes with the reply of the probe.
class Probe {
 public:
  Probe() {
    open_ = far_.Open();
    answering_ = std::thread([this] { Answer(); });
  }
  ~Probe() {
    stop_ = true;
    answering_.join();
  }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;

  bool IsOpen() const { return open_; }
  const char* Path() const { return far_.Path(); }

 private:
  void Answer() {
    constexpr int kRequest = 8;
    constexpr BYTE kReply[] = {0x01, 0x03, 0x04, 0x01, 0x23, 0xFE, 0xDC, 0x4B, 0xFC};
    constexpr int kLookMs = 20;  // how soon a stop is noticed
    int received = 0;
    while (!stop_) {
      BYTE bytes[kRequest];
      const int came = far_.Read(bytes, kRequest - received, kLookMs);
      if (came > 0) received += came;
      if (received < kRequest) continue;
      far_.Write(kReply, sizeof kReply);
      received = 0;
    }
  }

  PseudoTerminal far_;
  bool open_ = false;
  std::atomic<bool> stop_ = false;
  std::thread answering_;
};

void PollByDriver(benchmark::State& state) {
  Probe probe;
  MapDevice(L"ESL1:", probe.Path());
  CSerBase port(SER_ESL1);
  CSensorEnvir driver;
  if (!probe.IsOpen() || port.Open(L"ESL1:115200,n,8,1") == 0) state.SkipWithError("no line");
  for (auto _ : state) {
    if (driver.GetData(&port, 1) != 0) continue;
    state.SkipWithError("no answer");
    break;
  }
  port.Close();
  MapDevice(L"ESL1:", nullptr);
}
BENCHMARK(PollByDriver)->UseRealTime();

void PollByLibmodbus(benchmark::State& state) {
  Probe probe;
  modbus_t* const master = modbus_new_rtu(probe.Path(), 115200, 'N', 8, 1);
  const bool connected = probe.IsOpen() && modbus_set_slave(master, 1) == 0 && modbus_connect(master) == 0;
  if (!connected) state.SkipWithError("no line");
  for (auto _ : state) {
    std::uint16_t registers[2];
    if (modbus_read_registers(master, 0, 2, registers) == 2) continue;
    state.SkipWithError("no answer");
    break;
  }
  modbus_close(master);
  modbus_free(master);
}
BENCHMARK(PollByLibmodbus)->UseRealTime();

}  // namespace
}  // namespace fieldline
