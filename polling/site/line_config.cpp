#include "polling/site/line_config.h"

#include <algorithm>

#include "fieldline/platform/device_name.h"
#include "fieldline/platform/device_path.h"
#include "fieldline/serial/port_definition.h"
#include "fieldline/serial/ser_base.h"
#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {
namespace {

constexpr char kPathDevice[] = "LINE1:";
constexpr long kMostTimeout = 60'000;  // ms
constexpr std::uint32_t kMostBaud = 10'000'000;
constexpr std::string_view kSettingsForm = "write baud,parity,data bits,stop bits, such as 9600,n,8,1";

std::vector<std::string> Split(std::string_view text, char at) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == at) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

std::wstring Widen(std::string_view text) {
  std::wstring wide;
  for (const char c : text) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return wide;
}

std::string WithColon(std::string name) {
  if (!name.ends_with(':')) name += ':';
  return name;
}

std::string ToText(const LineSettings& settings) {
  constexpr char kParities[] = "noems";
  constexpr const char* kStopBits[] = {"1", "1.5", "2"};
  return std::to_string(settings.baud) + ',' + kParities[static_cast<int>(settings.parity)] + ',' +
         std::to_string(settings.data_bits) + ',' + kStopBits[static_cast<int>(settings.stop_bits)];
}

// Refuses settings that the library would silently replace with a default. Compares what the library read with what was
// given.
void CheckSettings(const std::string& settings) {
  const auto refuse = [&](const std::string& why) {
    throw UsageError("line settings \"" + settings + "\": " + why + "; " + std::string(kSettingsForm));
  };
  std::vector<std::string> given = Split(settings, ',');
  LineSettings read;
  if (given.size() != 4 || !ParseLineSettings(Widen("X:" + settings).c_str(), &read)) {
    refuse("four fields are needed, not " + std::to_string(given.size()));
  }
  if (given[1].size() == 1 && given[1][0] < 'a') given[1][0] = static_cast<char>(given[1][0] - 'A' + 'a');
  const std::vector<std::string> understood = Split(ToText(read), ',');
  if (given[0] != understood[0] || read.baud < 1 || read.baud > kMostBaud) refuse("the speed is a number of bit/s");
  if (given[1] != understood[1]) refuse("the parity is n, o, e, m or s");
  if (given[2] != understood[2] || read.data_bits < 5 || read.data_bits > 8) refuse("the data bits are 5, 6, 7 or 8");
  if (given[3] != understood[3]) refuse("the stop bits are 1, 1.5 or 2");
}

struct PortText {
  std::string device;
  std::string settings;  // empty when none are given
};

// "COM1:9600,n,8,1": the first colon ends a device name. A path may contain colons, as those in /dev/serial/by-path do:
// the last colon ends it, if the text after it looks like settings.
PortText SplitPort(const std::string& port) {
  const bool is_path = port.find('/') != std::string::npos;
  const std::size_t colon = is_path ? port.rfind(':') : port.find(':');
  if (colon == std::string::npos) return {port, {}};
  const std::string settings = port.substr(colon + 1);
  const bool digits_only = settings.find_first_not_of("0123456789") == std::string::npos;
  if (is_path && !digits_only && settings.find(',') == std::string::npos) return {port, {}};
  return {port.substr(0, colon), settings};
}

struct Mapping {
  std::string device;  // with its colon
  std::string path;
};

Mapping ParseMap(const std::string& map) {
  const std::size_t equals = map.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == map.size()) {
    throw UsageError("--map \"" + map + "\": write DEVICE=PATH, such as COM1=" + kUsualSerialPath);
  }
  return {WithColon(map.substr(0, equals)), map.substr(equals + 1)};
}

}  // namespace

std::chrono::microseconds CharacterTime(const LineSettings& settings) {
  const unsigned bits = 1 + settings.data_bits + (settings.parity == Parity::kNone ? 0 : 1) +
                        (settings.stop_bits == StopBits::kOne ? 1 : 2);
  return std::chrono::ceil<std::chrono::microseconds>(std::chrono::duration<double>(bits) / settings.baud);
}

PollOptions OptionsOf(const LineConfig& line) {
  using std::chrono::milliseconds;
  constexpr int kConstant = 100;  // ms
  constexpr milliseconds kShortestPause(5);
  const auto character = CharacterTime(line.settings);
  PollOptions options;
  const auto per_byte = std::chrono::ceil<milliseconds>(character * 3 / 2).count();
  options.timeout = line.timeout.value_or(ReadTimeout{static_cast<int>(per_byte), kConstant});
  options.pause = line.pause.value_or(std::max(kShortestPause, std::chrono::ceil<milliseconds>(character * 7 / 2)));
  options.retries = line.retries;
  options.any_address = line.any_address;
  return options;
}

ReadTimeout ParseTimeout(const std::string& text) {
  const std::vector<std::string> parts = Split(text, ',');
  if (parts.size() == 2) {
    const std::optional<long> per_byte = ParseInteger(parts[0]);
    const std::optional<long> constant = ParseInteger(parts[1]);
    const auto is_time = [](const std::optional<long>& ms) { return ms && *ms >= 0 && *ms <= kMostTimeout; };
    if (is_time(per_byte) && is_time(constant)) return {static_cast<int>(*per_byte), static_cast<int>(*constant)};
  }
  throw UsageError("--timeout \"" + text + "\": write PER_BYTE,CONSTANT in ms, such as 6,100; each is at most " +
                   std::to_string(kMostTimeout));
}

void ApplyMaps(const LineArguments& arguments) {
  for (const std::string& map : arguments.maps) {
    const Mapping mapping = ParseMap(map);
    MapDevice(Widen(mapping.device).c_str(), mapping.path.c_str());
  }
}

bool NamesSettings(const LineArguments& arguments) { return !SplitPort(arguments.port).settings.empty(); }

LineConfig ResolveLine(const LineArguments& arguments, std::string_view usual_settings) {
  ApplyMaps(arguments);
  if (arguments.port.empty()) {
    throw UsageError(std::string("which line? write --port DEFINITION, such as --port ") + kUsualSerialPath + ":" +
                     std::string(usual_settings));
  }
  PortText port = SplitPort(arguments.port);
  if (port.settings.empty()) port.settings = usual_settings;
  const bool speed_alone = port.settings.find_first_not_of("0123456789") == std::string::npos;
  if (speed_alone) port.settings += ",n,8,1";
  CheckSettings(port.settings);

  std::string device = WithColon(port.device);
  if (port.device.find('/') != std::string::npos) {
    device = kPathDevice;
    MapDevice(Widen(device).c_str(), port.device.c_str());
  } else if (DevicePath(Widen(device).c_str()).empty()) {
    throw UsageError("\"" + port.device + "\" is not a device name: write COM1, ESL1, a path such as " +
                     kUsualSerialPath + ", or a " + "name of your own with --map " +
                     (port.device.empty() ? "NAME" : port.device) + "=PATH");
  }

  LineConfig line;
  line.shown = port.device + ':' + port.settings;
  line.device = Widen(device);
  line.path = DevicePath(line.device.c_str());
  line.definition = Widen(device + port.settings);
  ParseLineSettings(line.definition.c_str(), &line.settings);
  if (!arguments.timeout.empty()) line.timeout = ParseTimeout(arguments.timeout);
  if (line.definition.size() >= CSerBase::kDefCapacity) {
    throw UsageError("\"" + line.shown +
                     "\" is too long for a port definition; give the device a short name with --map");
  }
  return line;
}

}  // namespace fieldline
