#include "tools/output/progress.h"

#include <iostream>
#include <system_error>

#include "fieldline/platform/console.h"
#include "polling/text.h"
#include "tools/output/table.h"

namespace fieldline::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kQuietStart = 1s;
constexpr auto kRedraw = 200ms;

}  // namespace

Progress::Progress(ISerBase* port, bool wanted) : port_(port) {
  if (port_ != nullptr) port_->InsertObserver(this);
  if (!wanted || !IsTerminal(Stream::kError)) return;
  try {
    drawer_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
    // No thread can be created. The work goes on without a progress line.
  }
}

Progress::~Progress() {
  if (port_ != nullptr) port_->RemoveObserver(this);
  if (!drawer_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  drawer_.join();
}

void Progress::Begin(const std::string& what) {
  const std::lock_guard lock(mutex_);
  what_ = what;
  detail_.clear();
  began_ = Clock::now();
}

void Progress::End() {
  const std::lock_guard lock(mutex_);
  what_.clear();
  EraseLocked();
}

void Progress::Erase() {
  const std::lock_guard lock(mutex_);
  EraseLocked();
}

void Progress::SetDetail(const std::string& detail) {
  const std::lock_guard lock(mutex_);
  detail_ = detail;
}

std::string Progress::Detail() const {
  const std::lock_guard lock(mutex_);
  return detail_;
}

void Progress::Run() {
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, kRedraw, [this] { return ending_; })) {
    if (!what_.empty() && Clock::now() - began_ >= kQuietStart) Draw();
  }
  EraseLocked();
}

void Progress::Draw() {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(Clock::now() - began_).count();
  std::string line = what_ + ": " + std::to_string(seconds) + " s";
  if (!detail_.empty()) line += ", " + detail_;
  const int columns = SizeOfTerminal(Stream::kError).columns - 1;  // some terminals wrap after the last column
  line = "\r\033[K" + Clipped(ForTerminal(line), columns);
  std::cerr << line;
  drawn_ = true;
}

void Progress::EraseLocked() {
  if (drawn_) std::cerr << "\r\033[K" << std::flush;
  drawn_ = false;
}

}  // namespace fieldline::tool
