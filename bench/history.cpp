// A day's plot of one field, polled each second with a value that never stays, from readings and from five-minute
// values.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "service/history/history_store.h"
#include "service/history/plot.h"
#include "service/history/summary.h"

namespace fieldline::service {
namespace {

constexpr UnixTime kStart = 1'700'000'100'000;
constexpr int kSecondsADay = 86'400;
constexpr char kSite[] = R"({"lines": {"A": {"path": "/dev/null", "settings": "9600,n,8,1", "devices": {
  "probe": {"kind": "envir"}, "meter": {"kind": "elec"}}}}})";

// A database with a day of a probe and a meter.
std::string MakeDay() {
  const auto directory = std::filesystem::temp_directory_path() / "fieldline-bench-history";
  std::filesystem::remove_all(directory);
  std::filesystem::create_directory(directory);
  const std::string site_path = directory / "site.json";
  std::ofstream(site_path) << kSite;
  const Site site = ReadSite(site_path);
  const std::vector<WatchedDevice> devices = DevicesOf(site);
  const std::string path = directory / "history.db";
  HistoryStore store(path, devices);
  std::vector<HistoryEntry> entries;
  for (int second = 0; second < kSecondsADay; ++second) {
    const auto value = static_cast<BYTE>(100 + 100 * std::sin(second / 1000.0) + second % 2);
    for (std::size_t device = 0; device < devices.size(); ++device) {
      HistoryEntry entry;
      entry.device = device;
      entry.time = kStart + second * 1000LL;
      entry.clock = std::chrono::steady_clock::time_point(std::chrono::seconds(second));
      entry.record.assign(static_cast<std::size_t>(devices[device].device->kind->record_size), value);
      entries.push_back(std::move(entry));
    }
    if (second % 60 != 59) continue;
    store.Write(entries);
    entries.clear();
  }
  Summarise(store.database(), kStart + kSecondsADay * 1000LL);
  return path;
}

// 287 parts are longer than five minutes, 300 shorter.
void PlotOfADay(benchmark::State& state) {
  static const std::string path = MakeDay();
  for (auto _ : state) {
    Database database(path, Database::Mode::kRead);
    const auto plot = MakePlot(database, "probe", "register_1", kStart, kStart + kSecondsADay * 1000LL,
                               static_cast<int>(state.range(0)));
    if (!plot || !plot->parts[150]) state.SkipWithError("the plot has a gap");
  }
}
BENCHMARK(PlotOfADay)->ArgName("parts")->Arg(287)->Arg(300)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fieldline::service
