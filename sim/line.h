#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "fieldline/platform/pseudo_terminal.h"
#include "sim/device.h"
#include "sim/faults.h"

namespace fieldline::sim {

struct LineOptions {
  std::uint32_t baud = 9600;  // speed of the devices, bit/s
  bool any_baud = false;      // accept the near end at any speed
  bool paced = true;          // bytes take as long as on a real line: ten bits each, both ways
};

enum class Traffic {
  kRequest,    // taken by a device
  kUnclaimed,  // received, but taken by no device
  kGarbled,    // sent by the near end at another speed than the devices'
  kReply,      // as sent, after faults
};

// A serial line with devices on it, like an RS-485 bus: every device receives what the near end sends, and the first
// one that takes a request answers it. The near end is opened by its path like any serial line.
class Line {
 public:
  using Listener = std::function<void(Traffic, std::span<const BYTE>)>;

  explicit Line(LineOptions options = {}) : options_(options) {}
  ~Line() { Stop(); }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  // Adds a device to the line, which then owns it. Call it before Start().
  template <typename T>
  T& Add(std::unique_ptr<T> device) {
    T& added = *device;
    devices_.push_back({std::move(device)});
    return added;
  }

  // Sets a function that is called for all traffic, on the line's own thread. Call it before Start().
  void SetListener(Listener listener) { listener_ = std::move(listener); }

  // Thread-safe; can be called at any time.
  void SetFaults(Faults faults);

  // Opens the line and starts its thread. Returns false when the system has no pseudo-terminal left; throws
  // std::system_error when it has no thread left.
  bool Start();

  // Stops the thread and hangs up: the near end sees a pulled adapter. Does nothing when not started.
  void Stop();

  // Path of the near end; empty when not started.
  std::string Path() const { return terminal_.Path(); }

 private:
  using Clock = std::chrono::steady_clock;

  void Run(const std::stop_token& stop);
  void Serve(const std::stop_token& stop, bool silent);
  void Send(const std::stop_token& stop, const Device& device, Reply reply);
  void Deafen(const Device* addressed);
  void Put(const std::stop_token& stop, std::span<const BYTE> bytes);
  bool Understands() const;
  Clock::duration WireTime(double characters) const;
  void Notify(Traffic traffic, std::span<const BYTE> bytes) const;

  const LineOptions options_;
  struct Attached {
    std::unique_ptr<Device> device;
    Clock::time_point deaf_until{};  // see Fault::kDeaf
  };
  std::vector<Attached> devices_;
  Listener listener_;
  std::mutex faults_mutex_;
  Faults faults_;
  PseudoTerminal terminal_;
  Bytes received_;  // received and not taken yet
  std::jthread thread_;
};

}  // namespace fieldline::sim
