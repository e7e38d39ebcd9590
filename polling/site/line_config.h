#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/platform/serial_device.h"

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

// A line as the library's port is to open it, and how its devices are polled where nothing else is said.
struct LineConfig {
  std::string shown;        // for people: the device as it was given, with its settings
  std::string path;         // what is opened
  std::wstring device;      // its name, with the final colon
  std::wstring definition;  // of the port
  LineSettings settings;
  std::optional<ReadTimeout> timeout;
  std::optional<std::chrono::milliseconds> pause;
  int retries = 0;
  bool any_address = false;
};

// How polls are made, with nothing left open.
struct PollOptions {
  ReadTimeout timeout;
  std::chrono::milliseconds pause{0};  // from the end of a poll to the next request
  int retries = 0;                     // of a poll that nothing answers
  bool any_address = false;            // a reply may carry another address than its request
  bool quick_silence = false;          // see PollManner
};

constexpr int kMostRetries = 5;

// Of a line: time-outs that fit its speed (per byte 1.5 characters, and 100 ms) and a pause of 3.5 characters, at least
// 5 ms, where it says nothing else.
PollOptions OptionsOf(const LineConfig& line);

// A character with its start, parity and stop bits.
std::chrono::microseconds CharacterTime(const LineSettings& settings);

// "6,100"; throws UsageError.
ReadTimeout ParseTimeout(const std::string& text);

// Tells the library of each --map. Throws UsageError.
void ApplyMaps(const LineArguments& arguments);

// Whether --port has settings behind the device.
bool NamesSettings(const LineArguments& arguments);

// Reads the options; a path is mapped to a device name of its own, since a port's definition has no room for a long
// one. A port without settings gets `usual_settings`. Throws UsageError.
LineConfig ResolveLine(const LineArguments& arguments, std::string_view usual_settings);

}  // namespace fieldline
