#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/sensor/sensor_base.h"
#include "tests/support/modbus_crc.h"
#include "tests/support/stub_port.h"

namespace fieldline::fuzz {

inline void Require(bool condition) {
  if (!condition) std::abort();
}

// What records hold before a poll, to see what it writes.
constexpr BYTE kOld = 0xA5;

inline void MakeOld(std::span<BYTE> bytes) { std::ranges::fill(bytes, kOld); }

inline bool IsOld(std::span<const BYTE> bytes) {
  return std::ranges::all_of(bytes, [](BYTE byte) { return byte == kOld; });
}

inline unsigned Byte(char c) { return static_cast<unsigned char>(c); }

// Puts the checksum into a hex-ASCII frame.
inline void SealHexAscii(std::string& frame) {
  if (frame.size() < 6) return;
  const std::size_t checksum = frame.size() - 5;
  unsigned rest = 0;
  for (std::size_t i = 1; i < checksum; ++i) rest -= Byte(frame[i]);
  for (std::size_t i = 0; i < 4; ++i) frame[checksum + i] = "0123456789ABCDEF"[rest >> (12 - 4 * i) & 0xF];
}

// Puts the CRC into a Modbus reply: where its byte count says, or at the end of a reply that does not reach so far.
inline void SealModbus(std::string& reply) {
  if (reply.size() < 5) return;
  const std::size_t covered = std::min<std::size_t>(3 + Byte(reply[2]), reply.size() - 2);
  const unsigned crc = test::ModbusCrc(std::string_view(reply).substr(0, covered));
  reply[covered] = static_cast<char>(crc & 0xFF);
  reply[covered + 1] = static_cast<char>(crc >> 8);
}

// Serves a fuzzer's input: each read gets one reply of it, and -1 when there is none left. The rest of the buffer that
// the read was given is overwritten, which shows a driver that asks for more than it has room for.
class ReplyPort final : public test::StubPort {
 public:
  // How the input holds a reply: up to a line feed, which is not served, or after a byte with its length, where 255
  // means as many bytes as are asked for.
  enum Form { kLine, kCounted };

  // With `seal` the first character of the input says what becomes of the replies: with an odd one ('1') each gets the
  // checksum that its other bytes need, or little would come past the checksum of the drivers; with an even one ('0')
  // they are served as they are.
  ReplyPort(const std::uint8_t* data, std::size_t size, Form form = kLine, void (*seal)(std::string&) = SealHexAscii)
      : rest_(reinterpret_cast<const char*>(data), size),
        form_(form),
        seal_(size > 0 && data[0] % 2 == 1 ? seal : nullptr),
        filler_(form == kLine ? '0' : 0) {
    if (seal) rest_.remove_prefix(std::min<std::size_t>(1, size));
  }

  int Read(BYTE* data, int count) override {
    std::fill_n(data, count, filler_);
    std::string& reply = replies_.emplace_back();
    if (AtEnd()) return -1;
    reply = Take(static_cast<std::size_t>(count));
    if (seal_) seal_(reply);
    reply.resize(std::min(reply.size(), static_cast<std::size_t>(count)));
    std::ranges::copy(reply, data);
    return static_cast<int>(reply.size());
  }

  int Write(const BYTE* data, int count) override {
    requests_.emplace_back(data, data + count);
    return count;
  }

  bool AtEnd() const { return rest_.empty(); }

  // What was written, and what each read got, so far.
  const std::vector<std::string>& Requests() const { return requests_; }
  const std::vector<std::string>& Replies() const { return replies_; }
  std::size_t Writes() const { return requests_.size(); }

  // The bytes after a reply in the driver's buffer from now on.
  void FillWith(BYTE filler) { filler_ = filler; }

 private:
  std::string Take(std::size_t asked) {
    std::size_t length = rest_.find('\n');
    if (form_ == kCounted) {
      length = Byte(rest_[0]) == 255 ? asked : Byte(rest_[0]);
      rest_.remove_prefix(1);
    }
    const std::string reply(rest_.substr(0, length));
    rest_.remove_prefix(std::min(reply.size() + (form_ == kLine ? 1 : 0), rest_.size()));
    return reply;
  }

  std::string_view rest_;
  Form form_;
  void (*seal_)(std::string&);
  BYTE filler_;
  std::vector<std::string> requests_;
  std::vector<std::string> replies_;
};

// Polls twice from the same state, with other bytes after the replies in the driver's buffers: they must make no
// difference. True when the poll succeeded.
inline bool Poll(CSensorBase& driver, std::span<BYTE> record, ReplyPort& port, int addr = 1) {
  const std::vector<BYTE> before(record.begin(), record.end());
  const int flags = driver.m_nFlags;
  ReplyPort other(port);
  other.FillWith(0xFF);
  const int result = driver.GetData(&other, addr);
  const std::vector<BYTE> after(record.begin(), record.end());

  std::ranges::copy(before, record.begin());
  driver.m_nFlags = flags;
  Require(driver.GetData(&port, addr) == result && std::ranges::equal(record, after));
  return result == 1;
}

}  // namespace fieldline::fuzz
