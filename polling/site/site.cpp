#include "polling/site/site.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "fieldline/platform/device_path.h"
#include "polling/kind_name.h"
#include "polling/record/kind_fields.h"
#include "polling/site/alarm_rules.h"
#include "polling/site/json_file.h"
#include "polling/site/service_settings.h"
#include "polling/usage_error.h"

namespace fieldline {
namespace {

constexpr std::string_view kInputs = "EIO1";  // device of the unit's own inputs
constexpr std::chrono::milliseconds kUsualInterval(1000);
constexpr std::chrono::milliseconds kUsualCameraInterval = std::chrono::hours(1);
constexpr std::chrono::milliseconds kLeastCameraInterval(10'000);  // more than a picture of 64 KiB takes
constexpr std::size_t kMostCameraName = 64;                        // it becomes the name of a directory
constexpr long kMostPause = 60'000;                                // ms

// Names are short because a line's name is part of its port definition, which has little room.
bool IsLineName(std::string_view name) {
  constexpr std::size_t kMost = 20;
  constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";
  return !name.empty() && name.size() <= kMost && name.find_first_not_of(kAllowed) == std::string_view::npos;
}

class Reader {
 public:
  Site ReadSite(const JsonNode& node) {
    node.RequireObject({kUnitKey, kHistoryKey, kPicturesKey, kHttpKey, kMqttKey, "lines", "alarms", "alarm_settings"});
    site_.service = ReadServiceSettings(node);
    const JsonNode lines = node.Get("lines");
    for (const auto& [name, description] : lines.Members()) {
      SiteLine line = ReadLine(name, description);
      if (line.devices.empty()) continue;
      (IsCamera(*line.devices[0].kind) ? site_.cameras : site_.lines).push_back(std::move(line));
    }
    if (site_.lines.empty()) lines.Refuse("a line with a device that is polled is needed");
    site_.alarms = ReadAlarmRules(node.Find("alarms"), node.Find("alarm_settings"), site_);
    return std::move(site_);
  }

 private:
  SiteLine ReadLine(const std::string& name, const JsonNode& node) {
    if (!IsLineName(name)) node.Refuse("the name of a line has 1 to 20 letters, digits, dots and dashes");
    SiteLine line{name, name == kInputs, {}, {}};
    if (line.local) {
      node.RequireObject({"path", "devices"});
      ApplyMaps({.port = {}, .maps = {name + '=' + ReadPath(name, node)}, .timeout = {}});
    } else {
      node.RequireObject({"path", "settings", "timeout", "pause", "retries", "any_address", "devices"});
      line.port = ReadPort(name, node);
    }
    const JsonNode devices = node.Get("devices");
    const auto members = devices.Members();
    if (members.empty()) devices.Refuse("a device is needed");
    for (const auto& [device, description] : members) {
      const Kind* const kind = ControlledKind(description);
      if (kind != nullptr && members.size() > 1) {
        description.Refuse(std::string(kind->name) + " needs a line of its own");
      }
      if (kind != nullptr && !IsCamera(*kind)) {
        CheckControlled(device, *kind, line, description);
      } else {
        line.devices.push_back(ReadDevice(device, line, description));
      }
      if (kind != nullptr) site_.controlled.push_back({device, kind, line.port});
    }
    return line;
  }

  // Null for a device that is only watched, and for a wrong kind.
  static const Kind* ControlledKind(const JsonNode& node) {
    const auto kind = node.Find("kind");
    const Kind* const found = kind ? FindKind(kind->Text()) : nullptr;
    return found != nullptr && (!found->IsPolled() || IsCamera(*found)) ? found : nullptr;
  }

  // The alarm board or the display.
  void CheckControlled(const std::string& name, const Kind& kind, const SiteLine& line, const JsonNode& node) {
    node.RequireObject({"kind"});
    if (line.local) node.Get("kind").Refuse("only di is at " + line.name);
    ClaimName(name, line, node);
    // The library has one controller and one display.
    const auto same = std::ranges::find(site_.controlled, &kind, &ControlledDevice::kind);
    if (same == site_.controlled.end()) return;
    node.Refuse("duplicate of " + same->name + ": a site has one device of kind " + std::string(kind.name));
  }

  LineConfig ReadPort(const std::string& name, const JsonNode& node) {
    LineArguments arguments;
    arguments.maps = {name + '=' + ReadPath(name, node)};
    const JsonNode settings = node.Get("settings");
    arguments.port = name + ':' + settings.Text();
    LineConfig line = Resolved(arguments, settings);
    line.shown = name + ':' + settings.Text() + " (" + line.path + ')';
    PollOptions options = OptionsOf(line);
    ReadOptions(node, options);
    line.timeout = options.timeout;
    line.pause = options.pause;
    line.retries = options.retries;
    line.any_address = options.any_address;
    return line;
  }

  static LineConfig Resolved(const LineArguments& arguments, const JsonNode& node) {
    try {
      return ResolveLine(arguments, {});
    } catch (const UsageError& error) {
      node.Refuse(error.what());
    }
  }

  // The options of a line, or those of a device that replace them.
  static void ReadOptions(const JsonNode& node, PollOptions& options) {
    if (const auto timeout = node.Find("timeout")) {
      try {
        options.timeout = ParseTimeout(timeout->Text());
      } catch (const UsageError& error) {
        timeout->Refuse(error.what());
      }
    }
    if (const auto pause = node.Find("pause")) options.pause = std::chrono::milliseconds(pause->Integer(0, kMostPause));
    if (const auto retries = node.Find("retries")) {
      options.retries = static_cast<int>(retries->Integer(0, kMostRetries));
    }
    if (const auto any = node.Find("any_address")) options.any_address = any->Flag();
  }

  std::string ReadPath(const std::string& line, const JsonNode& node) {
    const JsonNode path = node.Get("path");
    if (path.Text().empty()) path.Refuse(std::string("the path of the device is needed, such as ") + kUsualSerialPath);
    const auto [first, is_new] = lines_by_path_.try_emplace(path.Text(), line);
    if (!is_new) path.Refuse("duplicate path: " + first->second + " has the same");
    return path.Text();
  }

  void ClaimName(const std::string& name, const SiteLine& line, const JsonNode& node) {
    if (name.empty()) node.Refuse("a device needs a name");
    const auto [first, is_new] = lines_by_device_.try_emplace(name, line.name);
    if (!is_new) node.Refuse("duplicate name: a device on " + first->second + " has the same");
  }

  SiteDevice ReadDevice(const std::string& name, const SiteLine& line, const JsonNode& node) {
    node.RequireObject(
        {"kind", "address", "interval", "show", "scale", "publish", "timeout", "pause", "retries", "any_address"});
    ClaimName(name, line, node);
    const Kind& kind = ReadKind(node.Get("kind"));
    if (line.local != (kind.protocol == Protocol::kInputs)) {
      node.Get("kind").Refuse(line.local ? "only di is at " + line.name
                                         : std::string(kind.name) + " is on no line, but at " + std::string(kInputs));
    }
    const bool is_camera = IsCamera(kind);
    if (is_camera && name.size() > kMostCameraName) {
      node.Refuse("the name of a camera has at most " + std::to_string(kMostCameraName) + " bytes");
    }
    const auto usual_interval = is_camera ? kUsualCameraInterval : kUsualInterval;
    SiteDevice device{name, &kind, kind.address, usual_interval, OptionsOf(line.port), SplitRuns(FieldsOf(kind)), 0};
    ReadOptions(node, device.options);
    if (const auto address = node.Find("address")) {
      if (kind.address == 0) address->Refuse(std::string(kind.name) + " has no address; leave it out");
      device.address = static_cast<int>(address->Integer(0, 255));
    }
    for (const SiteDevice& other : line.devices) {
      if (other.kind != &kind || other.address != device.address) continue;
      node.Refuse("duplicate of " + other.name + ": the same kind at the same address of the line");
    }
    if (const auto interval = node.Find("interval")) {
      device.interval = interval->Duration();
      if (is_camera && device.interval < kLeastCameraInterval) interval->RefuseAsNot("at least 10s, for a picture");
    }
    if (const auto publish = node.Find("publish")) device.publish = ReadPublish(*publish);
    if (const auto show = node.Find("show")) device.shown = FindNumber(show->Text(), device, *show);
    if (const auto scales = node.Find("scale")) {
      for (const auto& [number, scale] : scales->Members()) {
        Rescale(device.fields[FindNumber(number, device, scale)], scale);
      }
    }
    return device;
  }

  static const Kind& ReadKind(const JsonNode& node) {
    try {
      return RequirePolledKind(node.Text());
    } catch (const UsageError& error) {
      node.Refuse(error.what());
    }
  }

  // Splits runs into single fields, so that each number can have its own scale.
  std::vector<RecordField> SplitRuns(Fields fields) {
    std::vector<RecordField> numbers;
    for (const RecordField& field : fields) {
      if (field.count == 1 || IsText(field)) {
        numbers.push_back(field);
        continue;
      }
      for (int i = 0; i < field.count; ++i) {
        RecordField number = field;
        number.name = site_.texts.emplace_back(FieldName(field, i));
        number.position += static_cast<std::size_t>(i) * FieldWidth(field.type);
        number.count = 1;
        numbers.push_back(number);
      }
    }
    return numbers;
  }

  static std::size_t FindNumber(const std::string& name, const SiteDevice& device, const JsonNode& node) {
    const auto found = std::ranges::find(device.fields, name, &RecordField::name);
    if (found == device.fields.end() || IsText(*found)) {
      const std::string kind(device.kind->name);
      node.Refuse(kind + " has no number \"" + name + "\"; `fieldline record " + kind + "` shows those that it has");
    }
    return static_cast<std::size_t>(found - device.fields.begin());
  }

  void Rescale(RecordField& field, const JsonNode& node) {
    constexpr double kMost = 1e9;
    node.RequireObject({"factor", "offset", "signed", "unit", "minimum", "maximum"});
    if (const auto factor = node.Find("factor")) {
      field.factor = factor->Number(-kMost, kMost);
      if (field.factor <= 0) {
        factor->Refuse("a number above 0 is needed: the record holds so many times the value in its unit");
      }
    }
    if (const auto offset = node.Find("offset")) field.offset = offset->Number(-kMost, kMost);
    if (const auto bits = node.Find("signed")) {
      field.signed_bits = static_cast<int>(bits->Integer(8, 32));
      if (field.signed_bits != 8 && field.signed_bits != 16 && field.signed_bits != 32) {
        bits->Refuse("8, 16 or 32 is needed: the bits of the number with a sign");
      }
    }
    if (const auto unit = node.Find("unit")) field.unit = site_.texts.emplace_back(unit->Text());
    if (const auto minimum = node.Find("minimum")) field.minimum = minimum->Number(-kMost, kMost);
    if (const auto maximum = node.Find("maximum")) {
      field.maximum = maximum->Number(-kMost, kMost);
      if (field.minimum.value_or(*field.maximum) > *field.maximum) maximum->Refuse("it is below the minimum");
    }
  }

  Site site_;
  std::map<std::string, std::string> lines_by_path_;
  std::map<std::string, std::string> lines_by_device_;
};

}  // namespace

Site ReadSite(const std::string& path) {
  const JsonFile file(path);
  return Reader().ReadSite(file.Root());
}

}  // namespace fieldline
