// What watching a site costs as the site grows: polls a second, processor time a poll, memory and threads a line. The
// lines are simulated in a process of their own, so that only the polling is measured. script/bench-site runs both.
//
//   bench_site simulate LINES DIRECTORY         until its input ends; makes a link to each line
//   bench_site watch LINES DIRECTORY SECONDS    prints a row of the table

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "fieldline/platform/console.h"
#include "polling/watch/line_worker.h"
#include "sim/line.h"
#include "sim/models.h"

namespace fieldline::bench {
namespace {

constexpr int kDevices = 8;  // of each line
constexpr std::uint32_t kBaud = 2400;
constexpr const Kind& kKind = KindOf(SERDAT_ENVIR);

std::string LinkOf(const std::string& directory, int line) { return directory + "/line-" + std::to_string(line); }

int Simulate(int lines, const std::string& directory) {
  std::deque<sim::Line> simulated;
  for (int i = 0; i < lines; ++i) {
    sim::Line& line = simulated.emplace_back(sim::LineOptions{.baud = kBaud});
    for (int address = 1; address <= kDevices; ++address) line.Add(sim::Make(kKind, static_cast<BYTE>(address)));
    if (!line.Start()) return 1;
    std::filesystem::create_symlink(line.Path(), LinkOf(directory, i));
  }
  std::cout << "ready" << std::endl;
  while (std::cin.get() != std::char_traits<char>::eof()) {
  }
  return 0;
}

SiteLine MakeLine(const std::string& directory, int number) {
  SiteLine line{"line-" + std::to_string(number), false, {}, {}};
  const std::string device = "BENCH" + std::to_string(number);
  line.port = ResolveLine({device, {device + '=' + LinkOf(directory, number)}, {}}, std::to_string(kBaud) + ",n,8,1");
  for (int address = 1; address <= kDevices; ++address) {
    line.devices.push_back({std::to_string(address), &kKind, address, {}, OptionsOf(line.port), {}, 0});
  }
  return line;
}

// A number of the system's about this process; 0 where it says none.
long Status(std::string_view name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name)) return std::atol(line.c_str() + name.size());
  }
  return 0;
}

constexpr std::string_view kResident = "VmRSS:";  // kB
constexpr std::string_view kThreads = "Threads:";

int Watch(int lines, const std::string& directory, int seconds) {
  using Clock = std::chrono::steady_clock;
  std::atomic<long> polls = 0;
  std::atomic<long> failures = 0;
  std::deque<SiteLine> site;
  TraceOutput trace{std::string()};
  // What the first poll of all takes is no line's.
  const SiteLine first = MakeLine(directory, 0);
  LineWorker(first, {.polls = 1}, trace, [](const SiteDevice&, const PollResult&) {}).Run();
  const long resident_before = Status(kResident);
  const long threads_before = Status(kThreads);
  for (int i = 0; i < lines; ++i) site.push_back(MakeLine(directory, i));
  std::deque<LineWorker> workers;
  for (const SiteLine& line : site) {
    workers.emplace_back(line, WatchLimits{}, trace, [&](const SiteDevice&, const PollResult& result) {
      ++polls;
      if (result.failure) ++failures;
    });
  }
  std::vector<std::jthread> threads;
  for (LineWorker& worker : workers) threads.emplace_back([&worker] { worker.Run(); });

  std::this_thread::sleep_for(std::chrono::seconds(1));  // until all lines are open
  const long polls_before = polls;
  const std::clock_t processor_before = std::clock();
  const auto began = Clock::now();
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const long made = polls - polls_before;
  const double processor = static_cast<double>(std::clock() - processor_before) / CLOCKS_PER_SEC;
  const std::chrono::duration<double> real = Clock::now() - began;
  const double resident = static_cast<double>(Status(kResident) - resident_before) / lines;
  const double threads_a_line = static_cast<double>(Status(kThreads) - threads_before) / lines;
  Interrupt();
  threads.clear();

  const double rate = static_cast<double>(made) / real.count();
  std::cout << std::fixed << std::setw(5) << lines << std::setprecision(1) << std::setw(12) << rate << std::setw(12)
            << std::setprecision(2) << rate / lines << std::setw(12) << std::setprecision(0)
            << processor * 1e6 / static_cast<double>(std::max(made, 1L)) << std::setw(12) << resident << std::setw(12)
            << std::setprecision(1) << threads_a_line << std::setw(10) << failures << std::endl;
  return made > 0 ? 0 : 1;
}

}  // namespace
}  // namespace fieldline::bench

int main(int argc, char** argv) {
  const std::string_view role = argc > 1 ? argv[1] : "";
  const int lines = argc > 3 ? std::atoi(argv[2]) : 0;
  fieldline::CatchInterrupts();
  if (role == "simulate" && argc == 4 && lines > 0) return fieldline::bench::Simulate(lines, argv[3]);
  if (role == "watch" && argc == 5 && lines > 0) return fieldline::bench::Watch(lines, argv[3], std::atoi(argv[4]));
  std::cerr << "usage: bench_site simulate LINES DIRECTORY | watch LINES DIRECTORY SECONDS\n";
  return 2;
}
