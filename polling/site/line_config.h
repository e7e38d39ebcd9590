#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/platform/serial_device.h"

namespace fieldline {

// The options that select a line, as they were given.
struct LineArguments {
  std::string port;
  std::vector<std::string> maps;
  std::string timeout;
};

struct ReadTimeout {
  int per_byte;  // ms
  int constant;  // ms
};

// How a line is opened, and the default options for polls of its devices.
struct LineConfig {
  std::string shown;        // for people: the device as given, with its settings
  std::string path;         // path that is opened
  std::wstring device;      // device name with the final colon
  std::wstring definition;  // port definition
  LineSettings settings;
  std::optional<ReadTimeout> timeout;
  std::optional<std::chrono::milliseconds> pause;
  int retries = 0;
  bool any_address = false;
};

// Options of polls, all resolved.
struct PollOptions {
  ReadTimeout timeout;
  std::chrono::milliseconds pause{0};  // from the last byte of a poll to the next request
  int retries = 0;                     // repetitions of a poll that nothing answers
  bool any_address = false;            // a reply may carry another address than its request
  bool quick_silence = false;          // see PollManner
};

constexpr int kMostRetries = 5;

// The options of a line. Defaults: time-outs that fit the speed (1.5 characters per byte, and 100 ms), and a pause of
// 3.5 characters, at least 5 ms.
PollOptions OptionsOf(const LineConfig& line);

// Duration of one character with its start, parity and stop bits.
std::chrono::microseconds CharacterTime(const LineSettings& settings);

// Reads "6,100". Throws UsageError.
ReadTimeout ParseTimeout(const std::string& text);

// Maps the device name of each --map in the library. Throws UsageError.
void ApplyMaps(const LineArguments& arguments);

// Whether --port has settings after the device.
bool NamesSettings(const LineArguments& arguments);

// Reads the options. A path is mapped to a device name, because a port definition has no room for a long path. A port
// without settings gets `usual_settings`. Throws UsageError.
LineConfig ResolveLine(const LineArguments& arguments, std::string_view usual_settings);

}  // namespace fieldline
