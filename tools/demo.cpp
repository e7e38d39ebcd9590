#include "tools/demo.h"

#include <iostream>
#include <string>

#include "fieldline/platform/device_name.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "sim/catalog.h"
#include "sim/line.h"
#include "tools/kinds.h"
#include "tools/poller.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

constexpr char kExamples[] =
    "Nothing needs to be attached: the devices are simulated, each on a line of its own, and polled through the\n"
    "library's first port as an application would poll them.\n\n"
    "Examples:\n"
    "  fieldline demo";

constexpr std::size_t kMostBytes = 64;  // shown of a request or reply

// Read time-outs in ms. The constant part is longer than usual, since the devices share the processor with the polls.
constexpr int kPerByte = 6;
constexpr int kConstant = 300;

bool ShowDevice(const Kind& kind, const sim::Kind& simulated, ISerBase& port, Recorder& recorder) {
  CSensorBase* const driver = DriverOf(kind);
  if (driver == nullptr) throw std::bad_alloc();
  const auto address = static_cast<BYTE>(simulated.address);
  sim::Line device({.baud = simulated.baud});
  device.Add(simulated.make(address));
  if (!device.Start()) {
    std::cerr << "fieldline: " << kind.name << ": " << Alert("the system has no pseudo-terminal left") << '\n';
    return false;
  }

  MapDevice(L"ESL1:", device.Path().c_str());
  const std::string settings = std::to_string(simulated.baud) + ",n,8,1";
  Line line;
  line.shown = "ESL1:" + settings;
  line.device = L"ESL1:";
  line.timeout = ReadTimeout{kPerByte, kConstant};
  line.definition = line.device + std::wstring(settings.begin(), settings.end());
  std::cout << kind.name << " (" << kind.description << "), " << kind.driver << " on " << line.shown << " = "
            << device.Path() << std::endl;

  OpenLine open_line(port, recorder);
  if (const std::optional<Failure> failure = open_line.Open(line)) {
    std::cerr << "fieldline: " << kind.name << ": " << Alert(failure->message) << '\n';
    return false;
  }
  const PollResult result = PollOnce(kind, *driver, &port, simulated.address, recorder);
  for (const Exchange& exchange : result.exchanges) {
    std::cout << "  -> " << Hex(exchange.request, kMostBytes) << "\n  <- " << Hex(exchange.reply, kMostBytes) << '\n';
  }
  if (result.failure) {
    std::cout << std::flush;
    std::cerr << "fieldline: " << kind.name << ": " << Alert(result.failure->message) << '\n';
    return false;
  }
  PrintRecord(std::cout, kind.fields, driver->m_pData);
  std::cout << "  " << Fixed(result.duration.count(), 1) << " ms\n" << std::endl;
  return true;
}

ExitCode Run() {
  CHubSerFactory* const ports = CHubSerFactory::GetInstance();
  ISerBase* const port = ports != nullptr ? ports->GetHubSer(SER_ESL1) : nullptr;
  if (port == nullptr) throw std::bad_alloc();
  Recorder recorder;
  int good = 0;
  int devices = 0;
  for (const sim::Kind& simulated : sim::Catalog()) {
    const Kind* const kind = FindKind(simulated.name);
    if (kind == nullptr) continue;
    ++devices;
    if (ShowDevice(*kind, simulated, *port, recorder)) ++good;
  }
  std::cout << good << " of " << devices << " devices answered as they should" << std::endl;
  return good == devices ? ExitCode::kGood : ExitCode::kSomeFailed;
}

}  // namespace

Verb AddDemo(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("demo", "Poll every kind of simulated device once, and show what passes");
  command.footer(kExamples);
  return {&command, Run};
}

}  // namespace fieldline::tool
