#include "service/alarm/device_hands.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "polling/alarm_board.h"
#include "polling/display_panel.h"
#include "polling/kind_name.h"
#include "polling/poller.h"
#include "polling/read_file.h"
#include "polling/snapshot.h"
#include "polling/usage_error.h"

namespace fieldline::service {
namespace {

using Result = TaskWorker::Result;
using Kind = AlarmTask::Kind;

constexpr std::size_t kMostPicture = 1 << 20;  // bytes
constexpr std::size_t kMostPictures = 100;     // that are kept

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

const ControlledDevice* FindCamera(const Site& site, const std::string& name) {
  const auto found = std::ranges::find(site.controlled, name, &ControlledDevice::name);
  return found != site.controlled.end() && IsCamera(*found->kind) ? &*found : nullptr;
}

void RemoveOldPictures(const std::filesystem::path& directory) {
  using Entry = std::filesystem::directory_entry;
  std::error_code error;
  std::vector<Entry> pictures;
  for (const Entry& entry : std::filesystem::directory_iterator(directory, error)) pictures.push_back(entry);
  if (pictures.size() <= kMostPictures) return;
  const auto age = [](const Entry& entry) {
    std::error_code ignored;
    return entry.last_write_time(ignored);
  };
  std::ranges::sort(pictures, {}, age);
  for (std::size_t i = 0; i + kMostPictures < pictures.size(); ++i) std::filesystem::remove(pictures[i], error);
}

Result TakePicture(const ControlledDevice& camera, const std::string& directory) {
  const std::unique_ptr<CSensorBase> driver = RequireDriver(*camera.kind);
  PolledPort<CSerBase> polled(nullptr, {}, SER_COM);
  if (const auto failure = polled.Open(camera.port)) return Refused(failure->message);
  PollResult result = Poll(*camera.kind, camera.kind->address, *driver, &polled, OptionsOf(camera.port));
  const auto picture = FindSnapshot(*camera.kind, directory, driver->m_pData, &result);
  if (!picture) return Refused(result.failure ? result.failure->message : "there is no picture");
  RemoveOldPictures(std::filesystem::path(picture->path).parent_path());
  return {Result::Kind::kDone, picture->path};
}

}  // namespace

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

TaskWorker::Hands CameraHands(const Site& site, const std::string& directory) {
  UseFlashRoot(directory);
  const auto execute = [&site, directory](const AlarmTask& task) {
    const ControlledDevice* const camera = FindCamera(site, task.target);
    return camera != nullptr ? TakePicture(*camera, directory) : Refused("the site has no such camera any more");
  };
  return {execute, {}};
}

}  // namespace fieldline::service
