#include "tools/trace_option.h"

namespace fieldline::tool {

void AddTraceOption(CLI::App& command, std::string& trace) {
  command.add_flag(
      "--trace{-}", trace,
      "Show every block of bytes and what it means on standard error, or with --trace=FILE in a file; times "
      "are UTC");
}

}  // namespace fieldline::tool
