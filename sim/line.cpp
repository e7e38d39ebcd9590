#include "sim/line.h"

#include <algorithm>
#include <cstddef>
#include <system_error>

namespace fieldline::sim {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kShortestSilence = 5ms;  // allows for a near end that is scheduled late
constexpr std::chrono::milliseconds kIdleWait = 20ms;        // how soon a stop is noticed
constexpr std::chrono::milliseconds kChunkTime = 2ms;        // replies are sent in pieces of about this duration
constexpr std::chrono::milliseconds kFullWait = 1s;          // bytes not read within this time are lost

void WaitUntil(const std::stop_token& stop, std::chrono::steady_clock::time_point when) {
  for (auto now = std::chrono::steady_clock::now(); now < when && !stop.stop_requested();
       now = std::chrono::steady_clock::now()) {
    std::this_thread::sleep_until(std::min(when, now + kIdleWait));
  }
}

}  // namespace

void Line::SetFaults(Faults faults) {
  const std::lock_guard lock(faults_mutex_);
  faults_ = std::move(faults);
}

bool Line::Start() {
  if (!terminal_.Open()) return false;
  received_.clear();
  try {
    thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
  } catch (const std::system_error& error) {
    terminal_.Close();
    throw std::system_error(error.code(), "no thread can be made for a line");
  }
  return true;
}

void Line::Stop() {
  if (!thread_.joinable()) return;
  thread_.request_stop();
  thread_.join();
  terminal_.Close();
}

void Line::Run(const std::stop_token& stop) {
  const auto silence = std::max(kShortestSilence, std::chrono::ceil<std::chrono::milliseconds>(WireTime(3.5)));
  while (!stop.stop_requested()) {
    BYTE bytes_read[512];
    const auto wait = received_.empty() ? kIdleWait : silence;
    const int count = terminal_.Read(bytes_read, sizeof bytes_read, static_cast<int>(wait.count()));
    if (count < 0) return;
    if (count > 0) {
      const std::span bytes(bytes_read, static_cast<std::size_t>(count));
      if (!Understands()) {
        Notify(Traffic::kGarbled, bytes);
        continue;
      }
      WaitUntil(stop, Clock::now() + WireTime(count));
      received_.insert(received_.end(), bytes.begin(), bytes.end());
      Serve(stop, false);
    } else if (!received_.empty()) {
      Serve(stop, true);
      if (received_.empty()) continue;
      Notify(Traffic::kUnclaimed, received_);
      received_.clear();
      Deafen(nullptr);
    }
  }
}

void Line::Serve(const std::stop_token& stop, bool silent) {
  bool taken = true;
  while (taken && !received_.empty()) {
    taken = false;
    for (const auto& [device, deaf_until] : devices_) {
      std::vector<Reply> replies;
      const std::size_t count = device->Receive(received_, silent, replies);
      if (count == 0) continue;
      if (Clock::now() < deaf_until) replies.clear();
      Deafen(device.get());
      Notify(Traffic::kRequest, std::span(received_).first(count));
      received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(count));
      for (Reply& reply : replies) Send(stop, *device, std::move(reply));
      taken = true;
      break;
    }
  }
}

// Call after a request to `addressed`, null for a request that no device took. Makes all other devices deaf for a time.
void Line::Deafen(const Device* addressed) {
  const std::lock_guard lock(faults_mutex_);
  const std::chrono::milliseconds time = faults_.DeafTime();
  if (time == 0ms) return;
  for (auto& [device, deaf_until] : devices_) {
    if (device.get() != addressed) deaf_until = Clock::now() + time;
  }
}

void Line::Send(const std::stop_token& stop, const Device& device, Reply reply) {
  {
    const std::lock_guard lock(faults_mutex_);
    faults_.Apply(device, reply);
  }
  if (reply.bytes.empty()) return;
  Notify(Traffic::kReply, reply.bytes);
  std::span<const BYTE> rest = reply.bytes;
  const auto bytes_per_chunk = static_cast<std::size_t>(kChunkTime * options_.baud / 10s);
  const std::size_t chunk_size = options_.paced ? std::max<std::size_t>(1, bytes_per_chunk) : rest.size();
  auto passed = Clock::now() + reply.delay;
  while (!rest.empty() && !stop.stop_requested()) {
    const auto chunk = rest.first(std::min(rest.size(), chunk_size));
    passed += WireTime(static_cast<double>(chunk.size()));
    WaitUntil(stop, passed);
    Put(stop, chunk);
    rest = rest.subspan(chunk.size());
  }
}

void Line::Put(const std::stop_token& stop, std::span<const BYTE> bytes) {
  const auto lost = Clock::now() + kFullWait;
  while (!bytes.empty() && !stop.stop_requested() && Clock::now() < lost) {
    const int count = terminal_.Write(bytes.data(), static_cast<int>(bytes.size()));
    if (count < 0) return;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
    if (!bytes.empty()) std::this_thread::sleep_for(1ms);
  }
}

bool Line::Understands() const {
  const std::uint32_t baud = terminal_.Baud();
  return options_.any_baud || baud == 0 || baud == options_.baud;
}

Line::Clock::duration Line::WireTime(double characters) const {
  if (!options_.paced) return {};
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(characters * 10 / options_.baud));
}

void Line::Notify(Traffic traffic, std::span<const BYTE> bytes) const {
  if (listener_) listener_(traffic, bytes);
}

}  // namespace fieldline::sim
