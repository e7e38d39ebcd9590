#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fieldline {

// The options that say which line to use, as they were given.
struct LineArguments {
  std::string port;
  std::vector<std::string> maps;
  std::string timeout;
};

struct ReadTimeout {
  int per_byte;  // ms
  int constant;  // ms
};

// A line as the library's port is to open it.
struct LineConfig {
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
LineConfig ResolveLine(const LineArguments& arguments, std::string_view usual_settings);

}  // namespace fieldline
