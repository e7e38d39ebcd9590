#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "fieldline/sensor/sensor_factory.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "polling/exit_code.h"
#include "polling/text.h"
#include "tools/output/alert.h"
#include "tools/verbs/verb.h"
#include "tools/verbs/verbs.h"

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
  int status = fieldline::ToStatus(fieldline::ExitCode::kSomeFailed);
  try {
    status = fieldline::tool::Main(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "fieldline: " << error.what() << '\n';
  }
  CSensorFactory::FreeInstance();
  CHubSerFactory::FreeInstance();
  return status;
}
