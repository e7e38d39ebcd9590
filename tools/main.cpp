#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "fieldline/platform/console.h"
#include "fieldline/platform/device_path.h"
#include "fieldline/sensor/sensor_factory.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "polling/exit_code.h"
#include "polling/line_file.h"
#include "sim/clean_up.h"
#include "tools/options/arguments.h"
#include "tools/output/report.h"
#include "tools/output/standard_output.h"
#include "tools/verbs/verbs.h"
#include "tools/watchdog.h"

namespace fieldline::tool {
namespace {

constexpr char kExitCodes[] =
    "Exit codes:\n"
    "  0  every poll was answered and accepted\n"
    "  1  some polls failed, or all for different reasons, or the verb was interrupted\n"
    "  2  an argument is wrong; nothing was done\n"
    "  3  the line can't be opened, or it is gone\n"
    "  4  nothing answered\n"
    "  5  the reply is not the one that was asked for\n"
    "  6  an output can't be written";

// Leaves out the default of an option whose value is optional: CLI11 would write "--trace{-}".
class HelpFormatter final : public CLI::Formatter {
 public:
  // Lines have other names on other systems.
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    constexpr std::string_view kWritten = "/dev/ttyUSB0";
    const std::string_view usual = kUsualSerialPath;
    std::string help = CLI::Formatter::make_help(app, std::move(name), mode);
    for (std::size_t at = help.find(kWritten); at != help.npos; at = help.find(kWritten, at + usual.size())) {
      help.replace(at, kWritten.size(), usual);
    }
    return help;
  }

  std::string make_option_name(const CLI::Option* option, bool is_positional) const override {
    std::string name = CLI::Formatter::make_option_name(option, is_positional);
    if (const std::size_t value = name.find("{-}"); value != std::string::npos) name.replace(value, 3, "[=FILE]");
    return name;
  }
};

ExitCode RunVerb(int argc, char** argv) {
  CLI::App app("Talks to the field devices of a machine-room monitoring unit, and simulates them.", "fieldline");
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_version_flag("--version", FIELDLINE_VERSION);
  app.require_subcommand(1);
  app.footer(kExitCodes);
  const std::vector<Verb> verbs = {AddPoll(app), AddWatch(app), AddAlarms(app),  AddRaw(app),
                                   AddScan(app), AddAlarm(app), AddDisplay(app), AddTestPort(app),
                                   AddSim(app),  AddDemo(app),  AddKinds(app),   AddRecord(app)};
  for (const Verb& verb : verbs) {
    verb.command->footer(verb.command->get_footer() + "\n\n" + kExitCodes);
  }
  const Verb* const verb = ParseArguments(app, verbs, argc, argv);
  return verb != nullptr ? verb->run() : ExitCode::kGood;
}

ExitCode RunAndComplain(int argc, char** argv) {
  try {
    return RunVerb(argc, argv);
  } catch (const UsageError& error) {
    Complain(error.what());
    return ExitCode::kUsage;
  } catch (const std::bad_alloc&) {
    Complain("out of memory");
  } catch (const std::exception& error) {
    Complain(error.what());
  }
  return ExitCode::kSomeFailed;
}

// Exit status of the program. A failed output takes precedence over the result of the verb.
int Conclude(ExitCode code) {
  const std::optional<std::string> failure = OutputFailure();
  if (failure) Complain(*failure);
  return ToStatus(failure ? ExitCode::kNoOutput : code);
}

// Ends the process without releasing what the verb uses, because the verb is still running.
void GiveUp() {
  sim::CleanUpNow();
  std::_Exit(Conclude(ExitCode::kSomeFailed));
}

}  // namespace
}  // namespace fieldline::tool

int main(int argc, char** argv) {
  fieldline::PrepareStreams();
  fieldline::CatchInterrupts();
  fieldline::ExitCode code;
  {
    const fieldline::tool::Watchdog watchdog(fieldline::tool::GiveUp);
    const fieldline::tool::StandardOutput output;
    code = fieldline::tool::RunAndComplain(argc, argv);
    CSensorFactory::FreeInstance();
    CHubSerFactory::FreeInstance();
  }
  return fieldline::tool::Conclude(code);
}
