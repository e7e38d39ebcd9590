// Polls a kind so many times on a line that takes no time, so that script/count-calls can count the system calls of
// the thread that polls: by the driver alone, or as the command does it. Pictures go below DIRECTORY.
//
//   bench_poll_calls                                prints the kinds that are polled on a line
//   bench_poll_calls driver KIND COUNT DIRECTORY
//   bench_poll_calls command KIND COUNT DIRECTORY

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "fieldline/platform/file.h"
#include "polling/poller.h"
#include "sim/line.h"
#include "sim/models.h"

namespace fieldline::bench {
namespace {

bool PollByDriver(const Kind& kind, const LineConfig& config, int count) {
  constexpr int kTimeout = 100;  // ms
  CSerBase port(SER_COM);
  port.SetTimeout(0, kTimeout);
  if (port.Open(config.definition.c_str()) == 0) return false;
  const auto driver = RequireDriver(kind);
  bool good = true;
  for (; good && count > 0; --count) good = driver->GetData(&port, kind.address) == 1;
  port.Close();
  return good;
}

bool PollAsTheCommand(const Kind& kind, const LineConfig& config, int count) {
  PolledPort<CSerBase> line(nullptr, {}, SER_COM);
  if (line.Open(config)) return false;
  const auto driver = RequireDriver(kind);
  bool good = true;
  for (; good && count > 0; --count) good = !Poll(kind, kind.address, *driver, &line, OptionsOf(config)).failure;
  return good;
}

}  // namespace
}  // namespace fieldline::bench

int main(int argc, char** argv) {
  using namespace fieldline;
  if (argc == 1) {
    for (const Kind& kind : kKinds) {
      if (kind.IsPolled() && kind.HasLine()) std::cout << kind.name << '\n';
    }
    return 0;
  }
  const std::string_view way = argv[1];
  const Kind* const kind = argc == 5 ? FindKind(argv[2]) : nullptr;
  if (kind == nullptr || !kind->IsPolled() || !kind->HasLine() || (way != "driver" && way != "command")) {
    std::cerr << "usage: bench_poll_calls [driver|command KIND COUNT DIRECTORY]\n";
    return 2;
  }
  SetFlashRoot(argv[4]);
  sim::Line simulated({.any_baud = true, .paced = false});
  simulated.Add(sim::Make(*kind, static_cast<BYTE>(kind->address)));
  if (!simulated.Start()) return 1;
  const LineConfig config = ResolveLine({simulated.Path(), {}, {}}, "115200,n,8,1");
  const int count = std::atoi(argv[3]);
  const bool good =
      way == "driver" ? bench::PollByDriver(*kind, config, count) : bench::PollAsTheCommand(*kind, config, count);
  if (!good) std::cerr << "bench_poll_calls: a poll of " << kind->name << " failed\n";
  return good ? 0 : 1;
}
