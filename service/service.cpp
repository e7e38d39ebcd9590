#include "service/service.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>
#include <vector>

#include "fieldline/platform/console.h"
#include "fieldline/platform/service_manager.h"
#include "polling/text.h"
#include "service/alarm/alarm_service.h"
#include "service/change_log.h"
#include "service/history/history_writer.h"
#include "service/http/http_service.h"
#include "service/live_state.h"
#include "service/mqtt/mqtt_service.h"
#include "service/picture/camera_watch.h"
#include "service/room_watch.h"
#include "service/say.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;

// How often to tell the service manager that all is well: well before it loses patience.
int BeatInterval() {
  constexpr std::chrono::milliseconds kMost = 10s;
  const std::chrono::milliseconds patience = ServiceWatchdogTime();
  return static_cast<int>((patience > 0ms ? std::min(patience / 3, kMost) : kMost).count());
}

}  // namespace

std::string HistoryPath(const std::string& state_directory) { return state_directory + "/history.db"; }

ExitCode RunService(const Site& site, const std::string& state_directory) {
  const std::vector<WatchedDevice> devices = DevicesOf(site);
  ChangeLog changes(devices);
  LiveState live(devices);
  HistoryWriter history(HistoryPath(state_directory), devices, site.service.history, Say);
  const std::string picture_directory = state_directory + "/pictures";
  const PictureShelf shelf(picture_directory, site.service.pictures);
  PictureTaker taker(picture_directory, shelf);
  AlarmService alarms(site, HistoryPath(state_directory), HandsOf(site, taker), Say,
                      [&history] { return history.TimesSetAside(); });
  alarms.WhenChanged([&live] { live.Wake(); });
  std::optional<MqttService> mqtt;
  if (site.service.mqtt) {
    mqtt.emplace(
        site, live, HistoryPath(state_directory), Say, [&history] { return history.TimesSetAside(); },
        [&alarms](const std::string& alarm, const std::string& who) { alarms.Acknowledge(alarm, who); });
  }
  const auto report = [&](std::size_t device, const PollResult& result) {
    alarms.Add(device, result);
    changes.Add(device, result);
    live.Add(device, result);
    history.Add(EntryOf(device, result));
    if (mqtt) mqtt->Add(device, result);
  };
  CameraWatch cameras(site, taker, report);
  RoomWatch room(site, report);
  const Api api(site, live, alarms, HistoryPath(state_directory), shelf, [&room] { return room.IsAlive(); });
  std::optional<HttpService> http;
  if (site.service.http) http.emplace(*site.service.http, site.service.unit, api, live, Say);
  try {
    room.Start();
    cameras.Start();
  } catch (const std::system_error& error) {
    Interrupt();
    Say("no thread can be made for each line: " + std::string(error.what()));
    return ExitCode::kSomeFailed;
  }
  if (mqtt) alarms.Listen([&mqtt](const AlarmView& alarm) { mqtt->Show(alarm); });
  NotifyServiceManager("READY=1");
  Say("unit " + site.service.unit + ": " + std::to_string(devices.size()) + " devices on " +
      std::to_string(site.lines.size() + site.cameras.size()) + " lines");
  bool was_alive = true;
  do {
    const bool is_alive = room.IsAlive();
    if (is_alive) NotifyServiceManager("WATCHDOG=1");
    if (was_alive && !is_alive) Say("a line hangs: its poll has not come back");
    was_alive = is_alive;
  } while (SleepUnlessInterrupted(BeatInterval()));
  NotifyServiceManager("STOPPING=1");
  alarms.Listen({});
  return ExitCode::kGood;
}

}  // namespace fieldline::service
