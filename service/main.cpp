#include <CLI/CLI.hpp>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>

#include "fieldline/platform/console.h"
#include "fieldline/platform/directory_lock.h"
#include "polling/exit_code.h"
#include "polling/site/site.h"
#include "polling/text.h"
#include "polling/usage_error.h"
#include "service/alarm/test_request.h"
#include "service/demo_room.h"
#include "service/history/export.h"
#include "service/parse_time.h"
#include "service/say.h"
#include "service/service.h"

namespace fieldline::service {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldlined site.json --check\n"
    "  fieldlined site.json --state /var/lib/fieldlined\n"
    "  fieldlined site.json --test-alarm 'cold aisle too warm'\n"
    "  fieldlined --demo --listen 127.0.0.1:8080\n"
    "  fieldlined export site.json --device cold-aisle --from 24h --csv >cold-aisle.csv\n\n"
    "Exit codes:\n"
    "  0  it was told to end, or did what was asked\n"
    "  1  it can't go on\n"
    "  2  an argument or the site file is wrong; nothing was done\n"
    "  6  an output can't be written";

struct Arguments {
  std::string site;
  std::string state = "/var/lib/fieldlined";
  bool check = false;
  bool demo = false;
  std::string listen = "127.0.0.1:8080";
  std::string test_alarm;

  std::string device;
  std::string from = "24h";
  std::string until;
  bool csv = false;
  bool json = false;
};

Site RequireSite(const Arguments& arguments) {
  if (arguments.site.empty()) throw UsageError("a site file is needed; see fieldlined --help");
  return ReadSite(arguments.site);
}

ExitCode RunExport(const Arguments& arguments) {
  const Site site = RequireSite(arguments);
  if (arguments.csv == arguments.json) throw UsageError("either --csv or --json is needed");
  const Time now = std::chrono::system_clock::now();
  const UnixTime from = ParseTime(arguments.from, now);
  const UnixTime until = arguments.until.empty() ? ToUnixTime(now) : ParseTime(arguments.until, now);
  Database database(HistoryPath(arguments.state), Database::Mode::kRead);
  DeviceHistory history(database, arguments.device);
  if (!history.IsKnown()) throw UsageError("the history has no device '" + arguments.device + "'");
  Export(history, arguments.device, from, until, arguments.csv ? ExportForm::kCsv : ExportForm::kJson, std::cout);
  std::cout.flush();
  return std::cout ? ExitCode::kGood : ExitCode::kNoOutput;
}

ExitCode RunSite(const Arguments& arguments) {
  const Site site = RequireSite(arguments);
  if (arguments.check) return ExitCode::kGood;
  if (!arguments.test_alarm.empty()) {
    return RequestTest(site, HistoryPath(arguments.state), arguments.test_alarm, std::cout);
  }
  std::error_code error;
  std::filesystem::create_directories(arguments.state, error);
  DirectoryLock lock;
  if (!error) error = lock.Take(arguments.state);
  if (error == std::errc::operation_would_block) {
    throw UsageError(arguments.state + " is used by another fieldlined; give this one a --state of its own");
  }
  if (error) throw UsageError("--state " + arguments.state + ": " + error.message());
  return RunService(site, arguments.state);
}

ExitCode RunDemo(const Arguments& arguments) {
  const auto http = ParseListen(arguments.listen);
  if (!http) throw UsageError("--listen '" + arguments.listen + "': write an address and a port, 127.0.0.1:8080");
  if (!http->IsLoopback()) {
    throw UsageError("--listen '" + arguments.listen + "': other machines can reach it, and the demo has no token");
  }
  const DemoRoom room;
  Site site = room.MakeSite();
  site.service.http = http;
  return RunService(site, room.StateDirectory());
}

ExitCode RunProgram(int argc, char** argv) {
  CLI::App app("Watches the field devices of a machine room: polls them, and keeps the history of their readings.",
               "fieldlined");
  app.set_version_flag("--version", FIELDLINE_VERSION);
  app.footer(kExamples);
  Arguments arguments;
  app.add_option("SITE", arguments.site, "Site file, see docs/commissioning.md")->type_name("");
  app.add_flag("--check", arguments.check, "Only check the site file");
  app.add_option("--state", arguments.state, "Directory of the history [/var/lib/fieldlined]")->type_name("DIR");

  app.add_option("--test-alarm", arguments.test_alarm,
                 "Have the running service raise this alarm for a minute, marked as a test, and show what was done")
      ->type_name("NAME");

  app.add_flag("--demo", arguments.demo, "Watch a simulated room; needs no site file, and leaves nothing behind");
  app.add_option("--listen", arguments.listen, "Where the demo's page is [127.0.0.1:8080]")->type_name("ADDRESS:PORT");

  CLI::App& exporting = *app.add_subcommand("export", "Print the history of a device");
  exporting.add_option("SITE", arguments.site, "Site file")->type_name("")->required();
  exporting.add_option("--device", arguments.device, "The device")->type_name("NAME")->required();
  exporting.add_option("--from", arguments.from, "From this time on, or from so long ago [24h]")->type_name("TIME");
  exporting.add_option("--to", arguments.until, "Up to this time [now]")->type_name("TIME");
  exporting.add_option("--state", arguments.state, "Directory of the history [/var/lib/fieldlined]")->type_name("DIR");
  exporting.add_flag("--csv", arguments.csv, "A header, and a row for each change");
  exporting.add_flag("--json", arguments.json, "An object on a line for each change");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // 0 for --help and --version, which CLI11 reports as errors.
    if (error.get_exit_code() == 0) {
      app.exit(error);
      return ExitCode::kGood;
    }
    throw UsageError(error.what() + std::string("; see fieldlined --help"));
  }
  if (exporting.parsed()) return RunExport(arguments);
  return arguments.demo ? RunDemo(arguments) : RunSite(arguments);
}

}  // namespace
}  // namespace fieldline::service

int main(int argc, char** argv) {
  using fieldline::ExitCode;
  fieldline::PrepareStreams();
  fieldline::CatchInterrupts();
  ExitCode code = ExitCode::kSomeFailed;
  try {
    code = fieldline::service::RunProgram(argc, argv);
  } catch (const fieldline::UsageError& error) {
    fieldline::service::Say(error.what());
    code = ExitCode::kUsage;
  } catch (const std::exception& error) {
    fieldline::service::Say(error.what());
  }
  return fieldline::ToStatus(code);
}
