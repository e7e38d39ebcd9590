#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "fieldline/kinds.h"
#include "fieldline/platform/clock.h"
#include "polling/display_panel.h"
#include "polling/kind_name.h"
#include "polling/line/trace_output.h"
#include "polling/text.h"
#include "tools/options/line_option.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Success does not mean that a display is connected: it never answers.\n\n"
    "Examples:\n"
    "  fieldline display set 0x1000 258 --port /dev/ttyUSB0\n"
    "  fieldline display page 3 --port /dev/ttyUSB0\n"
    "  fieldline display clock --port /dev/ttyUSB0\n"
    "  fieldline display clock \"2024-05-17 13:45:00\" --port COM2:9600,n,8,1";

struct Arguments {
  LineArguments line;
  OutputArguments output;
  int address = 0;
  int value = 0;
  int page = 0;
  bool now = false;
  std::string time;
};

struct Operation {
  std::string name;
  std::function<unsigned long(CHubMonitor& display)> run;  // 1 for success
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

CalendarTime ParseTime(const std::string& text) {
  constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd";
  bool right = text.size() == kForm.size();
  for (std::size_t i = 0; right && i < kForm.size(); ++i) {
    if (kForm[i] == 'd') {
      right = IsDigit(text[i]);
    } else {
      right = text[i] == kForm[i] || (kForm[i] == ' ' && text[i] == 'T');
    }
  }
  if (right) {
    const auto number = [&](std::size_t position, std::size_t digits) {
      return std::stoi(text.substr(position, digits));
    };
    const CalendarTime time = {number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2), number(17, 2)};
    const std::chrono::year_month_day date{std::chrono::year(time.year),
                                           std::chrono::month(static_cast<unsigned>(time.month)),
                                           std::chrono::day(static_cast<unsigned>(time.day))};
    const bool in_century = time.year >= 2000 && time.year <= 2099;
    if (date.ok() && in_century && time.hour < 24 && time.minute < 60 && time.second < 60) return time;
  }
  throw UsageError("\"" + text + "\" is not a time: write YYYY-MM-DD HH:MM:SS, from 2000 to 2099");
}

BYTE Bcd(int number) { return static_cast<BYTE>(number / 10 % 10 * 16 + number % 10); }

// The day of the week is 0 for Sunday.
DIWEN_RTC_DATA DisplayClock(const CalendarTime& time) {
  const std::chrono::sys_days date{std::chrono::year(time.year) / time.month / time.day};
  const auto weekday = static_cast<int>(std::chrono::weekday(date).c_encoding());
  return {Bcd(time.year), Bcd(time.month),  Bcd(time.day),   Bcd(weekday),
          Bcd(time.hour), Bcd(time.minute), Bcd(time.second)};
}

ExitCode Run(const Arguments& arguments, const Operation& operation) {
  const LineConfig line = ResolveLine(arguments.line, UsualSettings(KindOf(SERDAT_MONITOR)));
  TraceOutput trace(arguments.output.trace);
  const PollResult result = DisplayPanel(line, &trace).Run(operation.run);
  const std::optional<Failure>& failure = result.failure;

  if (arguments.output.json) {
    PrintJson(OperationHead("display", operation.name, line, result));
  } else if (failure) {
    ShowFailure("display " + operation.name, *failure);
  } else {
    std::cout << "display " << operation.name << " sent on " << Escaped(line.shown) << std::endl;
  }
  return failure ? failure->exit : ExitCode::kGood;
}

}  // namespace

Verb AddDisplay(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("display", "Write to the serial display: variables, page, clock");
  command.footer(kExamples);
  command.require_subcommand(1);
  AddLineOptions(command, arguments->line);
  AddOutputOptions(command, arguments->output);

  CLI::App& set = *command.add_subcommand("set", "Write a variable")->fallthrough();
  AddNumber(set, "ADDRESS", 0, 0xFFFF, "Address of the variable", [arguments](int address) {
    arguments->address = address;
  })->required();
  AddNumber(set, "VALUE", -0x8000, 0xFFFF, "Its new value", [arguments](int value) {
    arguments->value = value;
  })->required();

  CLI::App& page = *command.add_subcommand("page", "Show a page")->fallthrough();
  AddNumber(page, "PAGE", 0, 0xFFFF, "Number of the page", [arguments](int number) {
    arguments->page = number;
  })->required();

  CLI::App& clock = *command.add_subcommand("clock", "Set the clock")->fallthrough();
  CLI::Option* const now = clock.add_flag("--now", arguments->now, "To this machine's local time (default)");
  clock.add_option("TIME", arguments->time, "To this time, YYYY-MM-DD HH:MM:SS")->excludes(now);

  return {&command, [&set, &page, arguments] {
            if (set.parsed()) {
              return Run(*arguments, {"set", [&](CHubMonitor& display) {
                                        return display.diwen_set_data(
                                            static_cast<unsigned short>(arguments->address),
                                            static_cast<unsigned short>(arguments->value & 0xFFFF));
                                      }});
            }
            if (page.parsed()) {
              return Run(*arguments, {"page", [&](CHubMonitor& display) {
                                        return display.diwen_set_display(static_cast<unsigned short>(arguments->page));
                                      }});
            }
            const CalendarTime time = arguments->time.empty() ? LocalTime() : ParseTime(arguments->time);
            return Run(*arguments,
                       {"clock", [&](CHubMonitor& display) { return display.diwen_set_rtc(DisplayClock(time)); }});
          }};
}

}  // namespace fieldline::tool
