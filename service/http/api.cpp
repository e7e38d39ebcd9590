#include "service/http/api.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <utility>

#include "polling/kind_name.h"
#include "polling/record/poll_json.h"
#include "polling/text.h"
#include "polling/usage_error.h"
#include "service/alarm/alarm_json.h"
#include "service/history/events.h"
#include "service/history/plot.h"
#include "service/http/alarm_post.h"
#include "service/http/device_json.h"
#include "service/http/metrics.h"
#include "service/parse_time.h"

namespace fieldline::service {
namespace {

using nlohmann::ordered_json;
using Clock = DeviceState::Clock;
using Parameters = Api::Parameters;

constexpr std::chrono::milliseconds kBeat(5000);          // a listener that hears nothing for longer has lost us
constexpr std::chrono::milliseconds kBetweenEvents(250);  // what happens meanwhile is told at once

Reply JsonReply(const ordered_json& json) { return {200, "application/json", ToText(json) + '\n'}; }

void RequireKnown(const Parameters& parameters, std::initializer_list<std::string> known) {
  for (const auto& [name, value] : parameters) {
    if (std::ranges::find(known, name) != known.end()) continue;
    throw UsageError("there is no parameter '" + Escaped(name) + "'" +
                     (known.size() == 0 ? " here" : "; there are " + Join(std::vector<std::string>(known))));
  }
}

std::string Text(const Parameters& parameters, const std::string& name, const std::string& otherwise) {
  const auto found = parameters.find(name);
  return found != parameters.end() ? found->second : otherwise;
}

std::string RequireText(const Parameters& parameters, const std::string& name) {
  const auto found = parameters.find(name);
  if (found == parameters.end()) throw UsageError("the parameter '" + name + "' is needed");
  return found->second;
}

int Number(const Parameters& parameters, const std::string& name, int otherwise, int most) {
  const auto found = parameters.find(name);
  if (found == parameters.end()) return otherwise;
  const auto number = ParseInteger(found->second);
  if (!number || *number < 1 || *number > most) {
    throw UsageError("'" + name + "' is a number from 1 to " + std::to_string(most));
  }
  return static_cast<int>(*number);
}

struct Range {
  UnixTime from;
  UnixTime until;
};

// "from" and "to", by default the last day.
Range RequireRange(const Parameters& parameters) {
  const Time now = std::chrono::system_clock::now();
  const UnixTime from = ParseTime(Text(parameters, "from", "24h"), now);
  const UnixTime until = parameters.contains("to") ? ParseTime(RequireText(parameters, "to"), now) : ToUnixTime(now);
  if (from >= until) throw UsageError("'from' must be earlier than 'to'");
  return {from, until};
}

ordered_json FieldToJson(const RecordField& field) {
  ordered_json json;
  json["field"] = field.name;
  json["unit"] = field.unit;
  json["text"] = IsText(field);
  return json;
}

ordered_json LineToJson(const SiteLine& line) {
  ordered_json json;
  json["line"] = line.name;
  json["port"] = line.local ? ordered_json() : ordered_json(line.port.shown);
  for (const SiteDevice& device : line.devices) {
    ordered_json& entry = json["devices"].emplace_back();
    entry["device"] = device.name;
    entry["kind"] = device.kind->name;
    entry["description"] = device.kind->description;
    entry["address"] = device.kind->HasAddress() ? ordered_json(device.address) : ordered_json();
    entry["interval_ms"] = device.interval.count();
    entry["shown"] = device.fields[device.shown].name;
    for (const RecordField& field : device.fields) entry["fields"].push_back(FieldToJson(field));
  }
  return json;
}

ordered_json PointToJson(UnixTime time, const std::optional<Plot::Part>& part) {
  if (!part) return {time, nullptr, nullptr, nullptr};
  return {time, part->least, part->mean, part->most};
}

}  // namespace

Reply ErrorReply(int status, std::string_view code, const std::string& message) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["error"]["code"] = code;
  json["error"]["message"] = message;
  return {status, "application/json", ToText(json) + '\n'};
}

Api::Api(const Site& site, const LiveState& live, AlarmService& alarms, std::string history_path,
         const PictureShelf& shelf, std::function<bool()> is_alive)
    : site_(site),
      live_(live),
      alarms_(alarms),
      history_path_(std::move(history_path)),
      shelf_(shelf),
      is_alive_(std::move(is_alive)) {}

std::optional<Reply> Api::Get(const std::string& path, const Parameters& parameters) const {
  const auto without_parameters = [&parameters](const Reply& reply) {
    RequireKnown(parameters, {});
    return reply;
  };
  try {
    if (path == "/healthz") return Health();
    if (path == "/metrics") return Reply{200, kMetricsType, Metrics(site_.service.unit, live_, alarms_, Clock::now())};
    if (path == "/api/v1/site") return without_parameters(SiteDescription());
    if (path == "/api/v1/devices") return without_parameters(Devices());
    if (path == "/api/v1/latest") return Latest(parameters);
    if (path == "/api/v1/history") return History(parameters);
    if (path == "/api/v1/events") return Events(parameters);
    if (path == "/api/v1/pictures") return Pictures(parameters);
    if (path == "/api/v1/picture") return OnePicture(parameters);
    if (path == "/api/v1/alarms") return without_parameters(Alarms());
  } catch (const UsageError& error) {
    return ErrorReply(400, "bad_request", error.what());
  } catch (const DatabaseError& error) {
    return ErrorReply(503, "no_history", "the history can't be read: " + std::string(error.what()));
  }
  return std::nullopt;
}

std::optional<Reply> Api::Post(const std::string& path, const std::string& body) const {
  try {
    return PostToAlarm(alarms_, path, body);
  } catch (const UsageError& error) {
    return ErrorReply(400, "bad_request", error.what());
  }
}

ordered_json Api::Head() const {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["time"] = IsoTime(std::chrono::system_clock::now());
  json["unit"] = site_.service.unit;
  return json;
}

std::size_t Api::RequireDevice(const std::string& name) const {
  const auto devices = live_.devices();
  const auto found = std::ranges::find(devices, name, [](const WatchedDevice& each) { return each.device->name; });
  if (found == devices.end()) throw UsageError("there is no device '" + Escaped(name) + "'");
  return static_cast<std::size_t>(found - devices.begin());
}

Reply Api::Health() const {
  if (!is_alive_()) return ErrorReply(503, "line_hangs", "a line hangs: its poll has not come back");
  return {200, "text/plain; charset=utf-8", "ok\n"};
}

Reply Api::SiteDescription() const {
  ordered_json json = Head();
  json["version"] = FIELDLINE_VERSION;
  for (const SiteLine& line : site_.lines) json["lines"].push_back(LineToJson(line));
  for (const SiteLine& camera : site_.cameras) json["lines"].push_back(LineToJson(camera));
  return JsonReply(json);
}

Reply Api::Devices() const {
  ordered_json json = Head();
  const auto devices = live_.devices();
  const Clock::time_point now = Clock::now();
  for (std::size_t i = 0; i < devices.size(); ++i) {
    const DeviceState state = live_.Get(i);
    ordered_json& entry = json["devices"].emplace_back(DeviceToJson(devices[i], state, now));
    ordered_json& recent = entry["recent"] = ordered_json::array();
    for (const std::optional<double>& number : state.recent) recent.push_back(number ? ordered_json(*number) : nullptr);
  }
  return JsonReply(json);
}

Reply Api::Latest(const Parameters& parameters) const {
  RequireKnown(parameters, {"device"});
  const std::size_t device = RequireDevice(RequireText(parameters, "device"));
  return JsonReply(LatestToJson(live_.devices()[device], live_.Get(device), Clock::now()));
}

Reply Api::History(const Parameters& parameters) const {
  constexpr int kUsualPoints = 300;
  RequireKnown(parameters, {"device", "field", "from", "to", "points"});
  const std::string device = RequireText(parameters, "device");
  const std::string field = RequireText(parameters, "field");
  const Range range = RequireRange(parameters);
  const int points = Number(parameters, "points", kUsualPoints, kMostParts);
  const std::unique_ptr<Database> database = OpenHistory();
  auto plot = database ? MakePlot(*database, device, field, range.from, range.until, points) : std::nullopt;
  if (!plot) {
    const SiteDevice& known = *live_.devices()[RequireDevice(device)].device;
    const auto found = std::ranges::find(known.fields, field, &RecordField::name);
    if (found == known.fields.end())
      throw UsageError("'" + Escaped(device) + "' has no field '" + Escaped(field) + "'");
    plot = Plot{.unit = std::string(found->unit), .from = range.from};  // nothing came of it yet
  }

  ordered_json json = Head();
  json["device"] = device;
  json["field"] = field;
  json["unit_of_measurement"] = plot->unit;
  json["from"] = IsoTime(ToTime(range.from));
  json["to"] = IsoTime(ToTime(range.until));
  json["step_ms"] = plot->step;
  ordered_json& all = json["points"] = ordered_json::array();
  UnixTime time = plot->from;
  for (const auto& part : plot->parts) {
    all.push_back(PointToJson(time, part));
    time += plot->step;
  }
  return JsonReply(json);
}

Reply Api::Events(const Parameters& parameters) const {
  constexpr int kUsualEvents = 100;
  constexpr int kMostEvents = 1000;
  RequireKnown(parameters, {"device", "from", "to", "limit"});
  const Range range = RequireRange(parameters);
  const int limit = Number(parameters, "limit", kUsualEvents, kMostEvents);
  const std::string device = Text(parameters, "device", "");
  if (parameters.contains("device")) RequireDevice(device);
  const std::unique_ptr<Database> database = OpenHistory();

  ordered_json json = Head();
  ordered_json& events = json["events"] = ordered_json::array();
  if (!database) return JsonReply(json);
  for (const HistoryEvent& event : ReadEvents(*database, device, range.from, range.until, limit)) {
    if (!event.alarm.empty()) {
      events.push_back(AlarmEventToJson(event));
      continue;
    }
    ordered_json& entry = events.emplace_back();
    if (event.device.empty()) {
      entry["line"] = event.line;
      entry["time"] = IsoTime(ToTime(event.began));
    } else {
      entry["device"] = event.device;
      entry["from"] = IsoTime(ToTime(event.began));
      entry["to"] = IsoTime(ToTime(event.ended));
      entry["polls"] = event.polls;
    }
    entry["error"] = event.code.empty() ? ordered_json() : FailureToJson(event.code, event.message);
  }
  return JsonReply(json);
}

std::string Api::RequireCamera(const Parameters& parameters) const {
  std::string name = RequireText(parameters, "device");
  if (IsCamera(*live_.devices()[RequireDevice(name)].device->kind)) return name;
  throw UsageError("'" + Escaped(name) + "' is no camera");
}

Reply Api::Pictures(const Parameters& parameters) const {
  constexpr int kUsualPictures = 20;
  constexpr int kMostPictures = 1000;
  RequireKnown(parameters, {"device", "limit"});
  const std::string camera = RequireCamera(parameters);
  const int limit = Number(parameters, "limit", kUsualPictures, kMostPictures);
  ordered_json json = Head();
  json["device"] = camera;
  ordered_json& pictures = json["pictures"] = ordered_json::array();
  for (const Picture& picture : shelf_.List(camera, static_cast<std::size_t>(limit))) {
    ordered_json& entry = pictures.emplace_back();
    entry["time"] = picture.time;
    entry["bytes"] = picture.size;
  }
  return JsonReply(json);
}

Reply Api::OnePicture(const Parameters& parameters) const {
  RequireKnown(parameters, {"device", "time"});
  const std::string camera = RequireCamera(parameters);
  auto picture = shelf_.Read(camera, Text(parameters, "time", ""));
  if (!picture) return ErrorReply(404, "no_picture", "there is no such picture, or it is kept no more");
  return {200, "image/jpeg", *std::move(picture)};
}

Reply Api::Alarms() const {
  ordered_json json = Head();
  ordered_json& actors = json["actors"] = ordered_json::array();
  for (const ActorView& actor : alarms_.ActorStates()) actors.push_back(ActorToJson(actor));
  ordered_json& alarms = json["alarms"] = ordered_json::array();
  for (const AlarmView& alarm : alarms_.Alarms()) alarms.push_back(AlarmToJson(alarm));
  return JsonReply(json);
}

// Null before the first write of all.
std::unique_ptr<Database> Api::OpenHistory() const {
  std::error_code error;
  if (!std::filesystem::exists(history_path_, error)) return nullptr;
  auto database = std::make_unique<Database>(history_path_, Database::Mode::kRead);
  return database->Query("PRAGMA user_version") != 0 ? std::move(database) : nullptr;
}

std::string Api::Follower::Next() {
  const std::uint64_t version = api_.live_.Version();
  const std::vector<std::size_t> changed = api_.live_.ChangedSince(version_);
  const auto devices = api_.live_.devices();
  const Clock::time_point now = Clock::now();
  ordered_json told = ordered_json::array();
  for (std::size_t i = 0; i < devices.size(); ++i) {
    const DeviceState state = api_.live_.Get(i);
    // A device whose polls do not come back is overdue without any change.
    const Condition condition = state.ConditionAt(now, *devices[i].device);
    const bool has_changed = is_first_ || condition != sent_[i] || std::ranges::binary_search(changed, i);
    if (has_changed) told.push_back(DeviceToJson(devices[i], state, now));
    sent_[i] = condition;
  }
  version_ = version;
  is_first_ = false;
  std::string event = "data: " + ToText(told) + "\n\n";
  const std::uint64_t alarms_version = api_.alarms_.IsEmpty() ? 0 : api_.alarms_.Version();
  if (std::exchange(alarms_version_, alarms_version) != alarms_version) event += "event: alarms\ndata: {}\n\n";
  return event;
}

bool Api::Follower::Wait() const {
  api_.live_.WaitForClose(kBetweenEvents);
  api_.live_.WaitForChange(version_, kBeat);
  return !api_.live_.IsClosed();
}

}  // namespace fieldline::service
