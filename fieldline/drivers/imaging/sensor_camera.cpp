#include "fieldline/drivers/imaging/sensor_camera.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>

#include "fieldline/drivers/imaging/snapshot_name.h"
#include "fieldline/platform/file.h"
#include "fieldline/platform/text.h"
#include "fieldline/sensor/modbus.h"

namespace {

constexpr int kAttempts = 5;
constexpr int kReplyAsked = 20;
constexpr int kImageCapacity = 102400;

struct Frame {
  std::size_t length;
  BYTE bytes[16];

  operator std::span<const BYTE>() const { return {bytes, length}; }  // NOLINT(google-explicit-constructor)
};

struct Step {
  Frame command;
  int ask;
  Frame expected;  // first bytes of the reply; later bytes are not compared
};

// clang-format off
constexpr Step kPreparation[] = {
    // reset
    {{4, {0x56, 0x00, 0x26, 0x00}},                               4,           {4, {0x76, 0x00, 0x26, 0x00}}},
    // resume frame updates
    {{5, {0x56, 0x00, 0x36, 0x01, 0x03}},                         kReplyAsked, {5, {0x76, 0x00, 0x36, 0x00, 0x00}}},
    // set compression: register 0x1204 = 0x80
    {{9, {0x56, 0x00, 0x31, 0x05, 0x01, 0x01, 0x12, 0x04, 0x80}}, kReplyAsked, {5, {0x76, 0x00, 0x31, 0x00, 0x00}}},
    // freeze the current frame
    {{5, {0x56, 0x00, 0x36, 0x01, 0x00}},                         kReplyAsked, {5, {0x76, 0x00, 0x36, 0x00, 0x00}}},
};
constexpr Step kGetLength =
    {{5, {0x56, 0x00, 0x34, 0x01, 0x00}}, kReplyAsked, {7, {0x76, 0x00, 0x34, 0x00, 0x04, 0x00, 0x00}}};
constexpr Frame kReadFrame =
    {16, {0x56, 0x00, 0x32, 0x0C, 0x00, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x0A}};
// clang-format on

// The reply with the length, here 0x1234 bytes. For a picture of 64 KiB or more the upper half is not 0, and the reply
// does not match.
//
//   76 00 34  00      04          00 00       12 34
//   head      status  byte count  upper half  lower half
constexpr int kLengthPosition = 7;
constexpr int kLengthReplyLength = 9;

// The read command contains the frame's length, high byte first. The reply:
//
//   76 00 32 00 00  FF D8 ... FF D9  76 00 32 00 00
//   head            picture          trailer
constexpr int kReadLengthPosition = 12;
constexpr int kHeadLength = 5;
constexpr int kTrailerLength = 5;
constexpr BYTE kFirstBytes[] = {0x76, 0x00, 0x32, 0x00, 0x00, 0xFF, 0xD8};
constexpr BYTE kLastBytes[] = {0xFF, 0xD9, 0x76, 0x00, 0x32, 0x00, 0x00};
static_assert(kHeadLength + 0xFFFF + kTrailerLength <= kImageCapacity);

// Whether a reply begins with the expected bytes. Compares only bytes that were received.
bool Begins(const BYTE* reply, int received, std::span<const BYTE> expected) {
  return received >= static_cast<int>(expected.size()) && std::equal(expected.begin(), expected.end(), reply);
}

}  // namespace

CSensorCamera::CSensorCamera() : RecordSensor(SERDAT_CAMERA) {}

int CSensorCamera::GetData(ISerBase* port, int) {
  if (!port->IsOpened()) return 0;
  const std::unique_ptr<BYTE[]> image(new (std::nothrow) BYTE[kImageCapacity]);
  if (!image) return 0;

  BYTE reply[kReplyAsked];
  for (const Step& step : kPreparation) {
    const auto matches = [&](int received) { return Begins(reply, received, step.expected); };
    if (!Exchange(port, step.command, reply, step.ask, matches)) return 0;
  }

  const auto announces = [&](int received) {
    return Begins(reply, received, kGetLength.expected) && received >= kLengthReplyLength;
  };
  if (!Exchange(port, kGetLength.command, reply, kGetLength.ask, announces)) return 0;
  m_data.length = GetWordBE(reply + kLengthPosition);

  Frame read_frame = kReadFrame;
  read_frame.bytes[kReadLengthPosition] = reply[kLengthPosition];
  read_frame.bytes[kReadLengthPosition + 1] = reply[kLengthPosition + 1];
  const int ask = kHeadLength + m_data.length + kTrailerLength;
  const BYTE* const last_bytes = image.get() + ask - sizeof kLastBytes;
  // A picture of less than four bytes has no room for both marks and never matches.
  const auto is_whole = [&](int received) {
    return received == ask && Begins(image.get(), received, kFirstBytes) &&
           std::equal(std::begin(kLastBytes), std::end(kLastBytes), last_bytes);
  };
  if (!Exchange(port, read_frame, image.get(), ask, is_whole)) return 0;

  const fieldline::SnapshotName snapshot(u"", u".JPEG");
  fieldline::Utf16ToUtf8(snapshot.name(), m_data.name, sizeof m_data.name);
  fieldline::File file;
  if (file.Create(snapshot.path())) {
    file.Write(image.get() + kHeadLength, m_data.length);
    file.Close();
  }
  return 1;
}

template <class Matches>
bool CSensorCamera::Exchange(ISerBase* port, std::span<const BYTE> command, BYTE* reply, int ask, Matches matches) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::copy(command.begin(), command.end(), m_byCmd);
    if (!SendCommand(port, static_cast<int>(command.size()))) return false;
    const int received = port->Read(reply, ask);
    if (received <= 0) return false;
    if (matches(received)) return true;
  }
  return false;
}
