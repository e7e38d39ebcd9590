#include "tools/options/output_option.h"

namespace fieldline::tool {

void AddOutputOptions(CLI::App& command, OutputArguments& arguments) {
  command.add_flag("--json", arguments.json, "One JSON object per line");
  command.add_flag("--quiet", arguments.quiet, "Only errors on standard error");
  command.add_flag(
      "--trace{-}", arguments.trace,
      "Show every block of bytes and what it means on standard error, or with --trace=FILE in a file; times are UTC");
}

}  // namespace fieldline::tool
