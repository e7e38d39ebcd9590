#include "polling/site/line_config.h"

#include <algorithm>

#include "fieldline/platform/device_name.h"
#include "fieldline/serial/port_definition.h"
#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {
namespace {

constexpr char kPathDevice[] = "LINE1:";
constexpr long kMostTimeout = 60'000;  // ms
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

// The port takes a default for what it can't read; a person is told.
void CheckSettings(const std::string& settings) {
  const auto refuse = [&](const std::string& why) {
    throw UsageError("line settings \"" + settings + "\": " + why + "; " + std::string(kSettingsForm));
  };
  const std::vector<std::string> fields = Split(settings, ',');
  if (fields.size() != 4) refuse("four fields are needed, not " + std::to_string(fields.size()));
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  const std::optional<long> baud = ParseInteger(fields[0]);
  if (!baud || *baud < 1 || *baud > 10'000'000 || !std::all_of(fields[0].begin(), fields[0].end(), is_digit)) {
    refuse("the speed is a number of bit/s");
  }
  if (fields[1].size() != 1 || std::string_view("nNoOeEmMsS").find(fields[1]) == std::string_view::npos) {
    refuse("the parity is n, o, e, m or s");
  }
  if (fields[2].size() != 1 || fields[2] < "5" || fields[2] > "8") refuse("the data bits are 5, 6, 7 or 8");
  if (fields[3] != "1" && fields[3] != "1.5" && fields[3] != "2") refuse("the stop bits are 1, 1.5 or 2");
}

struct PortText {
  std::string device;
  std::string settings;  // empty when none are given
};

// "COM1:9600,n,8,1": the first colon ends the device's name. A path may hold colons itself, as those below
// /dev/serial/by-path do: the last one ends it, if what follows looks like settings.
PortText SplitPort(const std::string& port) {
  const bool is_path = port.find('/') != std::string::npos;
  const std::size_t colon = is_path ? port.rfind(':') : port.find(':');
  if (colon == std::string::npos) return {port, {}};
  const std::string settings = port.substr(colon + 1);
  const bool digits_only = settings.find_first_not_of("0123456789") == std::string::npos;
  if (is_path && !digits_only && settings.find(',') == std::string::npos) return {port, {}};
  return {port.substr(0, colon), settings};
}

// ESL and COM lines have numbers from 1 on.
bool IsNumberedDevice(std::string_view name) {
  if (!name.starts_with("ESL") && !name.starts_with("COM")) return false;
  name.remove_prefix(3);
  return !name.empty() && name.size() <= 4 && name.front() != '0' &&
         name.find_first_not_of("0123456789") == std::string_view::npos;
}

struct Mapping {
  std::string device;  // with its colon
  std::string path;
};

Mapping ParseMap(const std::string& map) {
  const std::size_t equals = map.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == map.size()) {
    throw UsageError("--map \"" + map + "\": write DEVICE=PATH, such as COM1=/dev/ttyUSB0");
  }
  return {WithColon(map.substr(0, equals)), map.substr(equals + 1)};
}

bool IsMapped(const LineArguments& arguments, const std::string& device) {
  return std::any_of(arguments.maps.begin(), arguments.maps.end(),
                     [&](const std::string& map) { return ParseMap(map).device == device; });
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

}  // namespace

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
    throw UsageError("which line? write --port DEFINITION, such as --port /dev/ttyUSB0:" + std::string(usual_settings));
  }
  PortText port = SplitPort(arguments.port);
  if (port.settings.empty()) port.settings = usual_settings;
  CheckSettings(port.settings);

  std::string device = WithColon(port.device);
  if (port.device.find('/') != std::string::npos) {
    device = kPathDevice;
    MapDevice(Widen(device).c_str(), port.device.c_str());
  } else if (!IsNumberedDevice(port.device) && !IsMapped(arguments, device)) {
    throw UsageError("\"" + port.device + "\" is no device name: write COM1, ESL1, a path such as /dev/ttyUSB0, or a " +
                     "name of your own with --map " + (port.device.empty() ? "NAME" : port.device) + "=PATH");
  }

  LineConfig line;
  line.shown = port.device + ':' + port.settings;
  line.device = Widen(device);
  line.definition = Widen(device + port.settings);
  if (!arguments.timeout.empty()) line.timeout = ParseTimeout(arguments.timeout);
  LineSettings settings;
  if (line.definition.size() > 51 || !ParseLineSettings(line.definition.c_str(), &settings)) {
    throw UsageError("\"" + line.shown +
                     "\" is too long for a port definition; give the device a short name with --map");
  }
  return line;
}

}  // namespace fieldline
