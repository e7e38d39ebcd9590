#include "polling/line/reply_checker.h"

#include <algorithm>
#include <utility>

#include "fieldline/platform/console.h"

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr auto kLongestWait = 200ms;     // at most, between two checks for an interrupt
constexpr auto kShortestSilence = 20ms;  // an adapter may hold bytes back for 16 ms
constexpr auto kLongestNoise = 1s;

int CeilMs(std::chrono::steady_clock::duration time) {
  return static_cast<int>(
      std::chrono::ceil<milliseconds>(std::max(time, std::chrono::steady_clock::duration(0))).count());
}

}  // namespace

void ReplyChecker::Begin(const PollManner& manner) {
  manner_ = manner;
  report_ = {};
  request_.clear();
  received_.clear();
  ready_.clear();
  any_received_ = false;
  gone_ = false;
  if (const auto rest = silent_since_ + manner_.pause - Clock::now(); rest > 0ms) SleepUnlessInterrupted(CeilMs(rest));
}

LineReport ReplyChecker::End(bool good) {
  Bytes first = std::exchange(ready_, {});
  first.insert(first.end(), received_.begin(), received_.end());
  received_.clear();
  Clock::time_point first_at = Clock::now();
  silent_since_ = first_at;
  if (!request_.empty() && !gone_ && !Interrupted()) {
    const bool silent =
        DiscardUntilSilent(good ? Silence() : std::max<milliseconds>(Silence(), kShortestSilence), first, first_at);
    report_.noise = !silent;
  }
  if (good) {
    report_.trailing.insert(report_.trailing.end(), first.begin(), first.end());
  } else if (!any_received_ && !first.empty()) {
    report_.late = std::chrono::ceil<milliseconds>(first_at - sent_at_);
  }
  return report_;
}

int ReplyChecker::Write(const BYTE* data, int count) {
  const bool silent = !request_.empty() && AwaitSilence();
  received_.clear();
  ready_.clear();
  any_received_ = false;
  if (!silent && !device_.Purge()) return -1;
  request_.assign(data, data + count);
  const int written = device_.Write(data, count);
  sent_at_ = Clock::now();
  return written;
}

// Waits until nothing more follows the last reply of this poll. Few replies say which request they answer, so a second
// copy of that reply would be taken for the reply to the next request.
bool ReplyChecker::AwaitSilence() {
  if (manner_.protocol->find_frame == nullptr || gone_ || Interrupted()) return false;
  Bytes first = std::exchange(received_, {});
  Clock::time_point first_at;
  const bool silent = DiscardUntilSilent(std::max<milliseconds>(Silence(), kShortestSilence), first, first_at);
  if (!silent) report_.noise = true;
  report_.trailing.insert(report_.trailing.end(), first.begin(), first.end());
  return silent;
}

int ReplyChecker::Read(BYTE* data, int count) {
  if (count < 1) return 0;
  if (ready_.empty()) {
    const bool framed = manner_.protocol->find_frame != nullptr && !request_.empty();
    if (framed) {
      const auto standard = static_cast<int>(manner_.protocol->standard_length(request_));
      AwaitFrame(DeadlineOf(std::max(count, standard)));
    } else {
      AwaitBytes(static_cast<std::size_t>(count), DeadlineOf(count));
    }
  }
  const auto given = static_cast<std::ptrdiff_t>(std::min<std::size_t>(static_cast<std::size_t>(count), ready_.size()));
  std::copy_n(ready_.begin(), given, data);
  ready_.erase(ready_.begin(), ready_.begin() + given);
  return static_cast<int>(given);
}

ReplyChecker::Clock::time_point ReplyChecker::DeadlineOf(int count) const {
  const std::int64_t bytes = manner_.quick_silence && !any_received_ ? 1 : count;
  return Clock::now() + milliseconds(std::int64_t{manner_.timeout.per_byte} * bytes + manner_.timeout.constant);
}

milliseconds ReplyChecker::Silence() const { return std::chrono::ceil<milliseconds>(character_ * 7 / 2); }

bool ReplyChecker::Receive(Clock::time_point deadline, Clock::duration longest) {
  const auto now = Clock::now();
  if (now >= deadline || gone_ || Interrupted()) return false;
  const Clock::duration wait = std::min({deadline - now, longest, Clock::duration(kLongestWait)});
  BYTE bytes[512];
  const int count = device_.ReadSome(bytes, sizeof bytes, CeilMs(wait));
  gone_ = count < 0;
  if (count > 0) {
    received_.insert(received_.end(), bytes, bytes + count);
    any_received_ = true;
  }
  return true;
}

void ReplyChecker::AwaitBytes(std::size_t count, Clock::time_point deadline) {
  const auto began = Clock::now();
  while (received_.size() < count) {
    const bool silent_so_far = !any_received_;
    if (!Receive(deadline, kLongestWait)) break;
    if (silent_so_far && any_received_ && manner_.quick_silence) {
      deadline = began + (DeadlineOf(static_cast<int>(count)) - Clock::now());
    }
  }
  const auto given = static_cast<std::ptrdiff_t>(std::min(count, received_.size()));
  ready_.assign(received_.begin(), received_.begin() + given);
  received_.erase(received_.begin(), received_.begin() + given);
}

void ReplyChecker::AwaitFrame(Clock::time_point deadline) {
  std::size_t searched = 0;  // bytes already searched without finding a whole frame
  for (;;) {
    const bool silent_so_far = !any_received_;
    const std::size_t before = received_.size();
    // Once part of a frame is there, waits no longer than a pause within a frame may last.
    const Clock::duration pause = std::max<milliseconds>(Silence(), kShortestSilence);
    const bool waiting = Receive(deadline, before == 0 ? kLongestWait : pause);
    if (silent_so_far && any_received_ && manner_.quick_silence) {
      deadline = DeadlineOf(static_cast<int>(manner_.protocol->standard_length(request_)));
    }
    // Waits for the rest of a frame that has begun. After a pause, the frame may also begin at a later byte.
    const bool paused = received_.size() == before;
    if (received_.size() != searched || (paused && !received_.empty())) {
      while (TakeFrame(paused || !waiting)) {
        if (!ready_.empty()) return;
      }
      searched = received_.size();
    }
    if (!waiting) break;
  }
  ready_ = std::exchange(received_, {});
}

// Removes the first whole frame, and the bytes before it, from received_. The frame goes to ready_ if it is the reply,
// and is dropped if not. Returns false when there is no whole frame.
bool ReplyChecker::TakeFrame(bool no_more) {
  const std::optional<FoundFrame> found = manner_.protocol->find_frame(request_, received_, no_more);
  if (!found) return false;
  if (found->begin > 0) Drop(found->begin, report_.stray, "stray");
  const ByteSpan frame(received_.data(), found->length);
  const std::string mismatch = manner_.protocol->mismatch(request_, frame, manner_.any_address);
  if (!mismatch.empty()) {
    report_.mismatch = mismatch;
    report_.foreign.clear();
    Drop(found->length, report_.foreign, "another's");
    return true;
  }
  ready_.assign(frame.begin(), frame.end());
  received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(found->length));
  return true;
}

void ReplyChecker::Drop(std::size_t count, Bytes& kept, std::string_view what) {
  const auto end = received_.begin() + static_cast<std::ptrdiff_t>(count);
  kept.insert(kept.end(), received_.begin(), end);
  recorder_.Dropped({received_.data(), count}, what);
  received_.erase(received_.begin(), end);
}

bool ReplyChecker::DiscardUntilSilent(milliseconds silence, Bytes& first, Clock::time_point& first_at) {
  constexpr std::size_t kMostKept = 64;
  const auto limit = Clock::now() + kLongestNoise;
  while (Clock::now() < limit) {
    silent_since_ = Clock::now();
    BYTE bytes[512];
    const int count = device_.ReadSome(bytes, sizeof bytes, CeilMs(silence));
    if (count <= 0) return true;
    if (first.empty()) first_at = Clock::now();
    const auto kept =
        std::min<std::size_t>(static_cast<std::size_t>(count), kMostKept - std::min(kMostKept, first.size()));
    first.insert(first.end(), bytes, bytes + kept);
    recorder_.Dropped({bytes, static_cast<std::size_t>(count)}, "after the reply");
    silence = std::max<milliseconds>(silence, kShortestSilence);  // more may follow
  }
  return false;
}

}  // namespace fieldline
