#include "tools/options/line_option.h"

#include "tools/options/number_option.h"

namespace fieldline::tool {

void AddLineOptions(CLI::App& command, LineArguments& arguments, const std::string& usual_timeout) {
  command
      .add_option("--port", arguments.port,
                  "Line: a device name (COM1, ESL3) or a path, with or without :baud,parity,data bits,stop bits")
      ->type_name("DEFINITION");
  command.add_option("--map", arguments.maps, "Path for a device name, such as COM1=/dev/ttyUSB0")
      ->type_name("DEVICE=PATH")
      ->allow_extra_args(false);
  command
      .add_option("--timeout", arguments.timeout,
                  "Read time-out in ms: per requested byte, and constant [" + usual_timeout + ']')
      ->type_name("PER_BYTE,CONSTANT");
}

void AddPollOptions(CLI::App& command, PollArguments& arguments) {
  constexpr int kMostPause = 60'000;
  AddNumber(command, "--pause", 0, kMostPause, "Silence in ms before each request [3.5 characters, at least 5 ms]",
            [&arguments](int pause) { arguments.pause = pause; });
  AddNumber(command, "--retries", 0, kMostRetries, "Repetitions of a poll that nothing answers [0]",
            [&arguments](int retries) { arguments.retries = retries; });
  command.add_flag("--any-address", arguments.any_address, "Accept replies that carry another address");
}

LineConfig WithOptions(LineConfig line, const PollArguments& arguments) {
  if (arguments.pause) line.pause = std::chrono::milliseconds(*arguments.pause);
  line.retries = arguments.retries;
  line.any_address = arguments.any_address;
  return line;
}

}  // namespace fieldline::tool
