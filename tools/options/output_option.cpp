#include "tools/options/output_option.h"

namespace fieldline::tool {

void AddOutputOptions(CLI::App& command, OutputArguments& arguments) {
  command.add_flag("--json", arguments.json, "One JSON object a line");
  command.add_flag("--quiet", arguments.quiet, "Nothing but errors on standard error");
  command.add_flag(
      "--trace{-}", arguments.trace,
      "Show every block of bytes and what it means on standard error, or with --trace=FILE in a file; times are UTC");
}

}  // namespace fieldline::tool
