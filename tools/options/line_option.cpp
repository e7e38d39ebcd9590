#include "tools/options/line_option.h"

namespace fieldline::tool {

void AddLineOptions(CLI::App& command, LineArguments& arguments, const std::string& usual_timeout) {
  command
      .add_option("--port", arguments.port,
                  "Line: a device name (COM1, ESL3) or a path, with or without :baud,parity,data bits,stop bits")
      ->type_name("DEFINITION");
  command.add_option("--map", arguments.maps, "Path that stands for a device name, such as COM1=/dev/ttyUSB0")
      ->type_name("DEVICE=PATH")
      ->allow_extra_args(false);
  command
      .add_option("--timeout", arguments.timeout,
                  "Read time-out in ms: per byte asked for, and constant [" + usual_timeout + ']')
      ->type_name("PER_BYTE,CONSTANT");
}

}  // namespace fieldline::tool
