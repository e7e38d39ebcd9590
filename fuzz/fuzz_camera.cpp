// Both cameras. The lowest bit of the first byte chooses one, the others are the room on the disk. What is stored is
// the picture that came, and the record agrees with it.

#include <optional>

#include "fieldline/drivers/imaging/sensor_camera.h"
#include "fieldline/drivers/imaging/sensor_camera_3ge.h"
#include "fieldline/platform/file.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

namespace {

std::size_t room = 0;  // bytes that a file may have; without room none is created
std::optional<std::string> stored;
int open_files = 0;

// The picture is asked for by its length, with a request of 16 bytes, and comes between a head and a trailer of 5.
void CheckCamera(const CAMERA_DATA& record, const ReplyPort& port, bool good) {
  const std::string& request = port.Requests().back();
  const bool is_announced = request.size() == 16;
  Require(record.length == (is_announced ? 256 * Byte(request[12]) + Byte(request[13]) : 0xA5A5));
  Require(good ? is_announced : !stored && record.name[0] == '\xA5');
  if (!good) return;
  const std::string_view reply = port.Replies().back();
  const std::string_view picture = reply.substr(5, record.length);
  Require(reply.size() == 5u + record.length + 5 && picture.starts_with("\xFF\xD8") && picture.ends_with("\xFF\xD9"));
  Require(stored.value_or("") == picture.substr(0, room));
}

// Acknowledgement, length and a spare byte come before the picture, which comes in blocks.
void CheckCamera3ge(const CAMERA_DATA& record, const ReplyPort& port, bool good) {
  const std::vector<std::string>& replies = port.Replies();
  if (replies.size() < 3) {
    Require(!good && !stored && record.length == 0xA5A5 && record.name[0] == '\xA5');
    return;
  }
  const unsigned announced = Byte(replies[1].at(2)) + 256 * Byte(replies[1].at(3));
  std::string picture;
  for (std::size_t i = 3; i < replies.size(); ++i) {
    Require(picture.size() < announced);
    picture += replies[i];
  }
  Require(picture.size() >= announced || replies.back().empty());
  Require(good == stored.has_value() && stored.value_or("") == picture.substr(0, room));
  Require(record.length == (good ? stored->size() : announced));
}

}  // namespace

// Takes the place of the platform's files, so that none is written.
namespace fieldline {

bool File::Create(const char16_t*) {
  Close();
  if (room == 0) return false;
  stored.emplace();
  handle_ = open_files++;
  return true;
}

int File::Write(const BYTE* data, int count) {
  if (handle_ == kInvalidHandle) return -1;
  const std::size_t taken = std::min(static_cast<std::size_t>(count), room - stored->size());
  stored->append(reinterpret_cast<const char*>(data), taken);
  return static_cast<int>(taken);
}

void File::Close() {
  if (handle_ != kInvalidHandle) --open_files;
  handle_ = kInvalidHandle;
}

}  // namespace fieldline

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  room = data[0] / 2 * std::size_t{64};
  stored.reset();
  ReplyPort port(data + 1, size - 1, ReplyPort::kCounted, nullptr);
  const auto poll = [&](auto camera, auto check) {
    const std::span record(camera.m_pData, sizeof camera.m_data);
    MakeOld(record);
    const bool good = Poll(camera, record, port);
    check(camera.m_data, port, good);
  };
  data[0] % 2 == 0 ? poll(CSensorCamera(), CheckCamera) : poll(CSensorCamera3ge(), CheckCamera3ge);
  Require(open_files == 0);
  return 0;
}
