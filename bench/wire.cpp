// What part of a poll's duration its bytes are on the wire: every kind's first poll at several speeds, with a device
// that answers at once, and with the time-outs that the command takes for the speed.
//
// A driver that asks for more than comes, or pauses, can't be faster than its time-outs and pauses. So beside the wire
// time stands the bound: the duration of the same reads, writes and pauses if the program itself took no time.
//
//   bench_wire [SPEED...]        2400 9600 19200 115200

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "fieldline/platform/device_name.h"
#include "fieldline/platform/file.h"
#include "fieldline/platform/pseudo_terminal.h"
#include "polling/poller.h"
#include "sim/line.h"
#include "sim/models.h"
#include "tests/support/temp_directory.h"

namespace fieldline::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// One call of the port.
struct Transfer {
  bool is_write;
  int asked;
  Bytes bytes;         // that passed
  Milliseconds pause;  // before it, where the driver paused
};

// Keeps what a driver does.
class RecordingPort : public CSerBase {
 public:
  RecordingPort() : CSerBase(SER_COM) {}

  int Read(BYTE* data, int count) override {
    const Milliseconds pause = PauseUntilNow();
    const int received = CSerBase::Read(data, count);
    transfers_.push_back({false, count, Bytes(data, data + std::max(received, 0)), pause});
    ended_ = Clock::now();
    return received;
  }
  int Write(const BYTE* data, int count) override {
    const Milliseconds pause = transfers_.empty() ? Milliseconds(0) : PauseUntilNow();
    const int written = CSerBase::Write(data, count);
    transfers_.push_back({true, count, Bytes(data, data + count), pause});
    ended_ = Clock::now();
    return written;
  }

  const std::vector<Transfer>& transfers() const { return transfers_; }

  // Since the last transfer. Drivers pause for whole ms; anything below is computing.
  Milliseconds PauseUntilNow() const { return std::chrono::floor<std::chrono::milliseconds>(Clock::now() - ended_); }

 private:
  std::vector<Transfer> transfers_;
  Clock::time_point ended_;
};

// What a driver does during a poll.
struct Recording {
  std::vector<Transfer> transfers;
  Milliseconds rest{0};  // after the last
};

struct Exchange {
  Bytes request;
  Bytes reply;
};

std::vector<Exchange> ExchangesOf(const std::vector<Transfer>& transfers) {
  std::vector<Exchange> exchanges;
  for (const Transfer& transfer : transfers) {
    if (transfer.is_write) {
      exchanges.push_back({transfer.bytes, {}});
    } else {
      exchanges.back().reply.insert(exchanges.back().reply.end(), transfer.bytes.begin(), transfer.bytes.end());
    }
  }
  return exchanges;
}

Milliseconds CharacterTime(int baud) { return Milliseconds(10'000.0 / baud); }

Milliseconds WireTime(const std::vector<Exchange>& exchanges, int baud) {
  std::size_t characters = 0;
  for (const Exchange& exchange : exchanges) characters += exchange.request.size() + exchange.reply.size();
  return static_cast<double>(characters) * CharacterTime(baud);
}

// A pseudo-terminal takes a request at once, so that the read's time-out runs while the request is on the wire.
Milliseconds Bound(const Recording& recording, int baud, const ReadTimeout& timeout) {
  Milliseconds now(0);
  Milliseconds arrived(0);  // when the bytes that were read so far had come
  for (const Transfer& transfer : recording.transfers) {
    now += transfer.pause;
    const Milliseconds on_wire = static_cast<double>(transfer.bytes.size()) * CharacterTime(baud);
    if (transfer.is_write) {
      arrived = now + on_wire;
      continue;
    }
    arrived += on_wire;
    const bool whole = static_cast<int>(transfer.bytes.size()) == transfer.asked;
    now = whole ? std::max(now, arrived) : now + Milliseconds(timeout.per_byte * transfer.asked + timeout.constant);
  }
  return now + recording.rest;
}

// The far end of a line that takes as long as a real one. Answers the requests in their order, over and over.
class PacedFarEnd {
 public:
  PacedFarEnd(const std::vector<Exchange>& exchanges, int baud) : exchanges_(exchanges), baud_(baud) {
    if (far_.Open()) answering_ = std::thread([this] { Answer(); });
  }
  ~PacedFarEnd() {
    stop_ = true;
    if (answering_.joinable()) answering_.join();
  }
  PacedFarEnd(const PacedFarEnd&) = delete;
  PacedFarEnd& operator=(const PacedFarEnd&) = delete;

  std::string Path() const { return far_.Path(); }

 private:
  void Answer() {
    constexpr int kLookMs = 20;  // how soon a stop is noticed
    for (std::size_t next = 0;; next = (next + 1) % exchanges_.size()) {
      const Exchange& exchange = exchanges_[next];
      std::size_t received = 0;
      Clock::time_point begun;
      while (received < exchange.request.size()) {
        BYTE bytes[64];
        const std::size_t missing = exchange.request.size() - received;
        const int came = far_.Read(bytes, static_cast<int>(std::min(missing, sizeof bytes)), kLookMs);
        if (stop_) return;
        if (came > 0 && received == 0) begun = Clock::now();
        received += static_cast<std::size_t>(std::max(came, 0));
      }
      Send(exchange, begun);
    }
  }

  void Send(const Exchange& exchange, Clock::time_point begun) {
    constexpr Milliseconds kPieceTime(2);
    const auto piece = std::max<std::size_t>(1, static_cast<std::size_t>(kPieceTime / CharacterTime(baud_)));
    for (std::size_t sent = 0; sent < exchange.reply.size() && !stop_;) {
      const std::size_t count = std::min(piece, exchange.reply.size() - sent);
      const auto passed = static_cast<double>(exchange.request.size() + sent + count) * CharacterTime(baud_);
      WaitUntil(begun + std::chrono::duration_cast<Clock::duration>(passed));
      far_.Write(exchange.reply.data() + sent, static_cast<int>(count));
      sent += count;
    }
  }

  // A thread that sleeps wakes up late.
  static void WaitUntil(Clock::time_point when) {
    std::this_thread::sleep_until(when - std::chrono::microseconds(200));
    while (Clock::now() < when) {
    }
  }

  const std::vector<Exchange>& exchanges_;
  const int baud_;
  PseudoTerminal far_;
  std::atomic<bool> stop_ = false;
  std::thread answering_;
};

// A new driver's first poll. Nothing when it failed.
std::optional<Milliseconds> Poll(const Kind& kind, CSerBase& port) {
  const auto driver = RequireDriver(kind);
  const auto began = Clock::now();
  const bool good = driver->GetData(&port, kind.address) == 1;
  const Milliseconds duration = Clock::now() - began;
  return good ? std::optional(duration) : std::nullopt;
}

bool OpenPort(CSerBase& port, const std::string& path, int baud, const ReadTimeout& timeout) {
  MapDevice(L"COM2:", path.c_str());
  port.SetTimeout(timeout.per_byte, timeout.constant);
  const std::string definition = "COM2:" + std::to_string(baud) + ",n,8,1";
  return port.Open(std::wstring(definition.begin(), definition.end()).c_str()) == 1;
}

// With a simulated device on a line that takes no time. Nothing when the poll failed.
std::optional<Recording> RecordOnce(const Kind& kind) {
  sim::Line line({.any_baud = true, .paced = false});
  line.Add(sim::Make(kind, static_cast<BYTE>(kind.address)));
  RecordingPort port;
  const bool good = line.Start() && OpenPort(port, line.Path(), 115200, {0, 100}) && Poll(kind, port);
  const Milliseconds rest = port.PauseUntilNow();
  port.Close();
  return good ? std::optional(Recording{port.transfers(), rest}) : std::nullopt;
}

// With the shortest pauses of some polls: a busy machine makes them longer.
std::optional<Recording> Record(const Kind& kind) {
  std::optional<Recording> recording = RecordOnce(kind);
  for (int i = 0; i < 2 && recording; ++i) {
    const std::optional<Recording> again = RecordOnce(kind);
    if (!again || again->transfers.size() != recording->transfers.size()) return std::nullopt;
    recording->rest = std::min(recording->rest, again->rest);
    for (std::size_t t = 0; t < again->transfers.size(); ++t) {
      recording->transfers[t].pause = std::min(recording->transfers[t].pause, again->transfers[t].pause);
    }
  }
  return recording;
}

// The median of some polls. Nothing when one failed.
std::optional<Milliseconds> Measure(const Kind& kind, const std::vector<Exchange>& exchanges, int baud,
                                    const ReadTimeout& timeout, Milliseconds bound) {
  constexpr Milliseconds kEnough(2000);
  const int polls = std::clamp(static_cast<int>(kEnough / bound), 1, 9);
  PacedFarEnd far_end(exchanges, baud);
  CSerBase port(SER_COM);
  std::vector<Milliseconds> durations;
  if (OpenPort(port, far_end.Path(), baud, timeout)) {
    for (int i = 0; i < polls; ++i) {
      if (const auto duration = Poll(kind, port)) durations.push_back(*duration);
    }
  }
  port.Close();
  if (static_cast<int>(durations.size()) != polls) return std::nullopt;
  std::ranges::sort(durations);
  return durations[durations.size() / 2];
}

bool MeasureAt(const Kind& kind, int baud, const ReadTimeout& timeout) {
  std::cout << std::left << std::setw(13) << kind.name << std::right;
  const std::optional<Recording> recording = Record(kind);
  const std::vector<Exchange> exchanges = recording ? ExchangesOf(recording->transfers) : std::vector<Exchange>();
  const Milliseconds bound = recording ? Bound(*recording, baud, timeout) : Milliseconds(0);
  const auto poll = recording ? Measure(kind, exchanges, baud, timeout, bound) : std::nullopt;
  if (!poll) {
    std::cout << "  failed" << std::endl;
    return false;
  }
  const Milliseconds wire = WireTime(exchanges, baud);
  std::cout << std::fixed << std::setprecision(1) << std::setw(12) << wire.count() << std::setw(12) << bound.count()
            << std::setw(12) << poll->count() << std::setprecision(3) << std::setw(12) << wire / *poll << std::setw(12)
            << bound / *poll << std::endl;
  return true;
}

bool MeasureAt(int baud) {
  LineConfig line;
  line.settings.baud = static_cast<std::uint32_t>(baud);
  const ReadTimeout timeout = OptionsOf(line).timeout;
  std::cout << baud << " bit/s, time-outs " << timeout.per_byte << "," << timeout.constant << " ms\n"
            << "kind              wire ms    bound ms     poll ms   wire/poll  bound/poll" << std::endl;
  bool good = true;
  for (const Kind& kind : kKinds) {
    if (kind.IsPolled() && kind.HasLine()) good = MeasureAt(kind, baud, timeout) && good;
  }
  return good;
}

}  // namespace
}  // namespace fieldline::bench

int main(int argc, char** argv) {
  std::vector<int> speeds;
  for (int i = 1; i < argc; ++i) speeds.push_back(std::atoi(argv[i]));
  if (std::ranges::any_of(speeds, [](int speed) { return speed < 50; })) {
    std::cerr << "usage: bench_wire [SPEED...]\n";
    return 2;
  }
  if (speeds.empty()) speeds = {2400, 9600, 19200, 115200};
  const fieldline::TempDirectory pictures;
  std::filesystem::create_directories(pictures.Path() / "NandFlash/www/wwwpub/images");
  fieldline::SetFlashRoot(pictures.Path().c_str());
  bool good = true;
  for (const int speed : speeds) good = fieldline::bench::MeasureAt(speed) && good;
  return good ? 0 : 1;
}
