#include "tests/support/scripted_port.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace fieldline::test {

Bytes Hex(const std::string& text) {
  Bytes bytes;
  std::istringstream in(text);
  for (unsigned value; in >> std::hex >> value;) bytes.push_back(static_cast<BYTE>(value));
  EXPECT_TRUE(in.eof()) << "not hexadecimal: " << text;
  return bytes;
}

Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

std::string ToHex(const Bytes& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const BYTE byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

ScriptedPort::~ScriptedPort() {
  EXPECT_TRUE(script_.empty()) << script_.size() << " steps of the script were not played";
}

ScriptedPort& ScriptedPort::Expect(Bytes bytes) {
  const int length = static_cast<int>(bytes.size());
  return ExpectButReport(std::move(bytes), length);
}

ScriptedPort& ScriptedPort::ExpectButReport(Bytes bytes, int result) {
  script_.push_back({true, std::move(bytes), result});
  return *this;
}

ScriptedPort& ScriptedPort::Reply(int ask, Bytes bytes) {
  script_.push_back({false, std::move(bytes), ask});
  return *this;
}

int ScriptedPort::Open(const wchar_t*) {
  calls += 'o';
  open = can_open;
  return can_open;
}

int ScriptedPort::Close() {
  calls += 'c';
  open = 0;
  return 1;
}

int ScriptedPort::Purge() {
  calls += 'p';
  return open;
}

int ScriptedPort::Read(BYTE* data, int count) {
  calls += 'r';
  if (on_read) on_read();
  if (!open) return -1;
  if (script_.empty() || script_.front().is_write) {
    ADD_FAILURE() << "a read of " << count << " bytes that is not in the script";
    return 0;
  }
  const Step step = std::move(script_.front());
  script_.pop_front();
  EXPECT_EQ(count, step.count) << "bytes asked for";
  const int given = std::min(count, static_cast<int>(step.bytes.size()));
  std::copy_n(step.bytes.begin(), given, data);
  return given;
}

int ScriptedPort::Write(const BYTE* data, int count) {
  calls += 'w';
  if (!open) return -1;
  const Bytes written(data, data + count);
  if (script_.empty() || !script_.front().is_write) {
    ADD_FAILURE() << "a write that is not in the script: " << ToHex(written);
    return -1;
  }
  const Step step = std::move(script_.front());
  script_.pop_front();
  EXPECT_EQ(ToHex(written), ToHex(step.bytes)) << "bytes written";
  return step.count;
}

}  // namespace fieldline::test
