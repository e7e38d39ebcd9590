#include "tools/picture_progress.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "fieldline/sensor/modbus.h"

namespace fieldline::tool {
namespace {

constexpr std::string_view kStreamRequest = "UG3#";
constexpr int kHeadRead = 2;      // of a streamed picture: UP and the length
constexpr int kFirstPicture = 4;  // the read behind the acknowledgement, the head and the spare byte
constexpr int kReadFrameLength = 16;
constexpr BYTE kReadFrame = 0x32;

}  // namespace

// The first camera's picture comes in one read, so all that can be shown is that it is awaited.
void PictureProgress::OnSerWrite(const BYTE* data, int count) {
  const auto size = static_cast<std::size_t>(count);
  streams_ = std::equal(data, data + size, kStreamRequest.begin(), kStreamRequest.end());
  reads_ = 0;
  received_ = 0;
  if (count == kReadFrameLength && data[2] == kReadFrame) {
    Tell("a picture of " + std::to_string(GetWordBE(data + 12)) + " bytes is coming");
  }
}

void PictureProgress::OnSerRead(const BYTE* data, int count) {
  if (!streams_) return;
  ++reads_;
  if (reads_ == kHeadRead && count == 4) announced_ = GetWordLE(data + 2);
  if (reads_ < kFirstPicture) return;
  received_ += count;
  Tell(std::to_string(received_) + " of " + std::to_string(announced_) + " bytes");
}

}  // namespace fieldline::tool
