#include "polling/watch/line_worker.h"

#include <algorithm>
#include <utility>

#include "fieldline/platform/console.h"

namespace fieldline {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kFirstPause = 250ms;  // before opening is tried again
constexpr std::chrono::milliseconds kLongestPause = 2s;
constexpr std::chrono::milliseconds kLookInterval = 1s;  // how often an idle line is checked

std::vector<std::chrono::milliseconds> Intervals(const SiteLine& line) {
  std::vector<std::chrono::milliseconds> intervals;
  for (const SiteDevice& device : line.devices) intervals.push_back(device.interval);
  return intervals;
}

}  // namespace

LineWorker::LineWorker(const SiteLine& line, const WatchLimits& limits, TraceOutput& trace, Report report)
    : line_(line),
      limits_(limits),
      report_(std::move(report)),
      polled_(&trace, line.name, SER_COM),
      schedule_(Intervals(line), Clock::now()) {
  for (const SiteDevice& device : line.devices) devices_.push_back({RequireDriver(*device.kind)});
}

void LineWorker::Run() {
  auto pause = kFirstPause;
  for (auto turn = schedule_.Next(Clock::now()); turn && !Stopped(); turn = schedule_.Next(Clock::now())) {
    if (!line_.local && polled_.port().IsOpened() == 0) {
      if (!OpenPort()) {
        Sleep(pause);
        pause = std::min(2 * pause, kLongestPause);
        continue;
      }
      pause = kFirstPause;
      schedule_.Restart(Clock::now());
    } else if (const auto now = Clock::now(); turn->due > now) {
      Sleep(std::min<Clock::duration>(turn->due - now, kLookInterval));
      if (LineIsGone()) polled_.port().Close();
    } else {
      Poll(turn->device);
    }
  }
}

bool LineWorker::Stopped() const { return Interrupted() || Clock::now() >= limits_.end; }

void LineWorker::Sleep(Clock::duration time) const {
  const auto allowed = std::min(time, limits_.end - Clock::now());
  if (allowed > 0ms)
    SleepUnlessInterrupted(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(allowed).count()));
}

bool LineWorker::OpenPort() {
  const std::optional<Failure> failure = polled_.Open(line_.port);
  if (!failure) return true;
  polled_.port().Close();  // the device may be open although its settings were refused
  for (std::size_t i = 0; i < line_.devices.size(); ++i) ReportPoll(i, FailedToOpen(*failure));
  return false;
}

// Purge is the test for a lost line. It discards nothing that matters: no exchange is running.
bool LineWorker::LineIsGone() { return !line_.local && polled_.port().Purge() == 0; }

void LineWorker::Poll(std::size_t index) {
  const SiteDevice& device = line_.devices[index];
  PolledLine* const line = line_.local ? nullptr : &polled_;
  const PollResult result =
      ::fieldline::Poll(*device.kind, device.address, *devices_[index].driver, line, device.options);
  const auto ended = Clock::now();
  if (result.failure && result.failure->code == "interrupted") return;
  if (result.failure && result.failure->code == "line_gone") {
    polled_.port().Close();  // while it is open, an adapter that is plugged in again gets another name
  } else if (result.failure && result.failure->exit == ExitCode::kNoAnswer) {
    schedule_.Silent(index, ended, std::chrono::ceil<Clock::duration>(result.duration));
  } else {
    schedule_.Answered(index, ended);
  }
  ReportPoll(index, result);
}

void LineWorker::ReportPoll(std::size_t index, const PollResult& result) {
  int& polls = devices_[index].polls;
  if (polls == limits_.polls && limits_.polls != 0) return;
  report_(line_.devices[index], result);
  if (++polls == limits_.polls) schedule_.Leave(index);
}

}  // namespace fieldline
