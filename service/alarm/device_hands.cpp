#include "service/alarm/device_hands.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "polling/alarm_board.h"
#include "polling/display_panel.h"
#include "polling/poller.h"
#include "polling/read_file.h"
#include "polling/usage_error.h"

namespace fieldline::service {
namespace {

using Result = TaskWorker::Result;
using Kind = AlarmTask::Kind;

constexpr std::size_t kMostPicture = 1 << 20;  // bytes

Result Refused(const std::string& reason) { return {Result::Kind::kRefused, reason}; }

// The board, opened with the first use.
class Board {
 public:
  explicit Board(const ControlledDevice& device) : board_(device.port, nullptr) {}

  Result Check() {
    DEVICE_STATUS status{};
    const PollResult result = Run([&](IHubAlarm& board) { return board.Alm_get_status(&status); });
    return result.failure ? Result{Result::Kind::kAbsent, result.failure->message} : Result{};
  }

  Result Execute(const AlarmTask& task) {
    std::string picture;
    if (task.kind == Kind::kMms) {
      try {
        picture = ReadFile(task.text, kMostPicture);
      } catch (const UsageError& error) {
        return Refused(error.what());
      }
    }
    BYTE verdict = 0;
    const PollResult result = Run([&](IHubAlarm& board) { return Call(board, task, picture, &verdict); });
    if (verdict != 0) return Refused("the board refuses it with result " + std::to_string(verdict));
    if (!result.failure) return {};
    // A board that answers other requests must not keep all tasks behind one that it does not answer.
    return Check().kind == Result::Kind::kDone ? Refused(result.failure->message)
                                               : Result{Result::Kind::kAbsent, result.failure->message};
  }

 private:
  // A line that is gone is closed at once, so that its adapter gets the same name when it is plugged in again.
  PollResult Run(const std::function<int(IHubAlarm& board)>& operation) {
    PollResult result = board_.Run(operation);
    if (result.failure) board_.port().Close();
    return result;
  }

  // 0 for success, as the library has it.
  static int Call(IHubAlarm& board, const AlarmTask& task, std::string& picture, BYTE* verdict) {
    std::string target = task.target;
    std::string text = task.text;
    switch (task.kind) {
      case Kind::kSms:
        return board.Alm_send_sms(target.data(), text.data(), verdict);
      case Kind::kMms:
        return board.Alm_send_mms(target.data(), reinterpret_cast<BYTE*>(picture.data()), picture.size());
      case Kind::kDial:
        return board.Alm_pstn_dial(target.data(), text.data());
      case Kind::kSpeech:
        return board.Alm_tts_local(text.data());
      default:
        return board.Alm_ctrl_relay(static_cast<BYTE>(ParseInteger(target).value_or(0)),
                                    static_cast<BYTE>(task.number));
    }
  }

  AlarmBoard board_;
};

Result TakePicture(const std::vector<SiteLine>& cameras, const std::string& name, PictureTaker& taker) {
  const auto camera = std::ranges::find(cameras, name, [](const SiteLine& line) { return line.devices[0].name; });
  if (camera == cameras.end()) return Refused("the site has no such camera any more");
  const PictureTaker::Taken taken = taker.Take(*camera);
  return taken.result.failure ? Refused(taken.result.failure->message) : Result{Result::Kind::kDone, taken.path};
}

TaskWorker::Hands BoardHands(const ControlledDevice& device) {
  const auto board = std::make_shared<Board>(device);
  return {[board](const AlarmTask& task) { return board->Execute(task); }, [board] { return board->Check(); }};
}

TaskWorker::Hands DisplayHands(const ControlledDevice& device) {
  const auto panel = std::make_shared<DisplayPanel>(device.port, nullptr);
  const auto execute = [panel](const AlarmTask& task) -> Result {
    const auto page = static_cast<unsigned short>(ParseInteger(task.target).value_or(0));
    const PollResult result = panel->Run([page](CHubMonitor& display) { return display.diwen_set_display(page); });
    return result.failure ? Result{Result::Kind::kAbsent, result.failure->message} : Result{};
  };
  return {execute, {}};
}

TaskWorker::Hands CameraHands(const Site& site, PictureTaker& taker) {
  const auto execute = [&site, &taker](const AlarmTask& task) { return TakePicture(site.cameras, task.target, taker); };
  return {execute, {}};
}

const ControlledDevice* FindControlled(const Site& site, ENUM_SERDATKIND kind) {
  const auto found = std::ranges::find(site.controlled, kind, [](const auto& device) { return device.kind->number; });
  return found != site.controlled.end() ? &*found : nullptr;
}

}  // namespace

ActingHands HandsOf(const Site& site, PictureTaker& taker) {
  ActingHands hands;
  if (site.alarms.rules.empty()) return hands;
  auto& [board, display, cameras] = hands;
  if (const auto* const device = FindControlled(site, SERDAT_ALARM)) board = {device->name, BoardHands(*device)};
  if (const auto* const device = FindControlled(site, SERDAT_MONITOR)) display = {device->name, DisplayHands(*device)};
  if (!site.cameras.empty()) cameras = {"cameras", CameraHands(site, taker)};
  return hands;
}

}  // namespace fieldline::service
