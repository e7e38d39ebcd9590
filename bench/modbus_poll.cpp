// The processor time of one poll of a probe, beside libmodbus reading the same two registers. The far end answers at
// once, so that only the overhead of the two is measured. They take turns, because what the machine does besides
// changes from second to second, and the median of the rounds' ratios is printed.
//
//   bench_modbus_poll [ROUNDS]

#include <benchmark/benchmark.h>
#include <modbus.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <thread>
#include <vector>

#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/pseudo_terminal.h"
#include "fieldline/serial/ser_base.h"

namespace fieldline {
namespace {

constexpr int kPollsARound = 200;

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
BENCHMARK(PollByDriver)->Iterations(kPollsARound)->UseRealTime();

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
BENCHMARK(PollByLibmodbus)->Iterations(kPollsARound)->UseRealTime();

// Keeps what each run of a benchmark costs.
class Costs : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
      processor_.push_back(run.GetAdjustedCPUTime());
      real_.push_back(run.GetAdjustedRealTime());
      failed_ |= run.error_occurred;
    }
  }

  bool Failed() const { return failed_; }
  const std::vector<double>& Processor() const { return processor_; }  // ns a poll, of the thread that polls
  const std::vector<double>& Real() const { return real_; }            // ns a poll

 private:
  std::vector<double> processor_;
  std::vector<double> real_;
  bool failed_ = false;
};

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

int Compare(int rounds) {
  Costs driver;
  Costs libmodbus;
  std::vector<double> ratios;
  for (int round = 0; round < rounds; ++round) {
    benchmark::RunSpecifiedBenchmarks(&driver, "PollByDriver");
    benchmark::RunSpecifiedBenchmarks(&libmodbus, "PollByLibmodbus");
    if (driver.Failed() || libmodbus.Failed()) return 1;
    ratios.push_back(driver.Processor().back() / libmodbus.Processor().back());
  }
  std::cout << std::fixed << std::setprecision(1);
  std::cout << "median of " << rounds << " rounds of " << kPollsARound << " polls   processor        real\n";
  const auto print = [](const char* name, const Costs& costs) {
    std::cout << std::left << std::setw(38) << name << std::right << std::setw(8) << Median(costs.Processor()) / 1000
              << " us" << std::setw(9) << Median(costs.Real()) / 1000 << " us\n";
  };
  print("fieldline", driver);
  print("libmodbus", libmodbus);
  const auto [least, most] = std::ranges::minmax(ratios);
  std::cout << std::setprecision(3) << "processor time, fieldline / libmodbus: " << Median(ratios) << " (" << least
            << " to " << most << ")\n";
  return 0;
}

}  // namespace
}  // namespace fieldline

int main(int argc, char** argv) {
  const int rounds = argc == 1 ? 201 : std::atoi(argv[1]);
  if (argc > 2 || rounds < 1) {
    std::cerr << "usage: bench_modbus_poll [ROUNDS]\n";
    return 2;
  }
  return fieldline::Compare(rounds);
}
