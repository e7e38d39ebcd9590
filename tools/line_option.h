#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fieldline::tool {

// The options that say which line to use, as they were given.
struct LineArguments {
  std::string port;
  std::vector<std::string> maps;
  std::string timeout;
};

// Adds --port, --map and --timeout to a subcommand. `usual_timeout` is for the help.
void AddLineOptions(CLI::App& command, LineArguments& arguments, const std::string& usual_timeout = "6,100");

struct ReadTimeout {
  int per_byte;  // ms
  int constant;  // ms
};

// A line as the library's port is to open it.
struct Line {
  std::string shown;        // for people: the device as it was given, with its settings
  std::wstring device;      // its name, with the final colon
  std::wstring definition;  // of the port
  std::optional<ReadTimeout> timeout;
};

// Tells the library of each --map. Throws UsageError.
void ApplyMaps(const LineArguments& arguments);

// Whether --port has settings behind the device.
bool NamesSettings(const LineArguments& arguments);

// Reads the options; a path is mapped to a device name of its own, since a port's definition has no room for a long
// one. A port without settings gets `usual_settings`. Throws UsageError.
Line ResolveLine(const LineArguments& arguments, std::string_view usual_settings);

}  // namespace fieldline::tool
