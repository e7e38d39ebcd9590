#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "fieldline/sensor/sensor_factory.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "tools/alarm.h"
#include "tools/demo.h"
#include "tools/display.h"
#include "tools/exit_code.h"
#include "tools/poll.h"
#include "tools/raw.h"
#include "tools/scan.h"
#include "tools/show_kinds.h"
#include "tools/show_record.h"
#include "tools/sim.h"
#include "tools/test_port.h"
#include "tools/text.h"
#include "tools/verb.h"
#include "tools/watch.h"

namespace fieldline::tool {
namespace {

constexpr char kExitCodes[] =
    "Exit codes:\n"
    "  0  every poll was answered and accepted\n"
    "  1  some polls failed, or all for different reasons\n"
    "  2  an argument is wrong; nothing was done\n"
    "  3  the line can't be opened, or it vanished\n"
    "  4  nothing answered\n"
    "  5  what came is not the reply that was asked for";

// CLI11 writes "--trace{-}", for what the option is without a value.
class HelpFormatter final : public CLI::Formatter {
 public:
  std::string make_option_name(const CLI::Option* option, bool is_positional) const override {
    std::string name = CLI::Formatter::make_option_name(option, is_positional);
    if (const std::size_t value = name.find("{-}"); value != std::string::npos) name.replace(value, 3, "[=FILE]");
    return name;
  }
};

int Main(int argc, char** argv) {
  CLI::App app("Talks to the field devices of a machine-room monitoring unit, and simulates them.", "fieldline");
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_version_flag("--version", FIELDLINE_VERSION);
  app.require_subcommand(1);
  app.footer(kExitCodes);
  const std::vector<Verb> verbs = {AddPoll(app),  AddWatch(app),   AddRaw(app),      AddScan(app),
                                   AddAlarm(app), AddDisplay(app), AddTestPort(app), AddSim(app),
                                   AddDemo(app),  AddKinds(app),   AddRecord(app)};
  for (const Verb& verb : verbs) {
    verb.command->footer(verb.command->get_footer() + "\n\n" + kExitCodes);
  }

  try {
    app.parse(argc, argv);
    for (const Verb& verb : verbs) {
      if (verb.command->parsed()) return ToStatus(verb.run());
    }
  } catch (const CLI::ParseError& error) {
    // 0 for --help and --version, which CLI11 reports as errors.
    return app.exit(error) == 0 ? ToStatus(ExitCode::kGood) : ToStatus(ExitCode::kUsage);
  } catch (const UsageError& error) {
    std::cerr << "fieldline: " << Alert(error.what()) << '\n';
  }
  return ToStatus(ExitCode::kUsage);
}

}  // namespace
}  // namespace fieldline::tool

int main(int argc, char** argv) {
  int status = fieldline::tool::ToStatus(fieldline::tool::ExitCode::kSomeFailed);
  try {
    status = fieldline::tool::Main(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "fieldline: " << error.what() << '\n';
  }
  CSensorFactory::FreeInstance();
  CHubSerFactory::FreeInstance();
  return status;
}
