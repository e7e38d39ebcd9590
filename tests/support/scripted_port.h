#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/stub_port.h"

namespace fieldline::test {

using Bytes = std::vector<BYTE>;

// "01 03 00" to bytes.
Bytes Hex(const std::string& text);

// The characters of `text`, without a terminator.
Bytes Text(const std::string& text);

std::string ToHex(const Bytes& bytes);

// A port that plays a script: the writes it expects, in order, and the reads it serves. A write that differs from the
// script, a read that is not scripted, and a script that is not played to its end fail the test.
class ScriptedPort final : public StubPort {
 public:
  ScriptedPort() = default;
  ~ScriptedPort();

  // The next write must be `bytes`; it reports all of them, or `result`.
  ScriptedPort& Expect(Bytes bytes);
  ScriptedPort& ExpectButReport(Bytes bytes, int result);

  // The next read must ask for `ask` bytes. It gets `bytes`, or its first `ask`; the rest is lost as in a purge.
  ScriptedPort& Reply(int ask, Bytes bytes);

  // Any expectation that is left over is dropped without failing the test.
  void Forget() { script_.clear(); }

  bool Done() const { return script_.empty(); }

  int Open(const wchar_t* def) override;
  int Close() override;
  int IsOpened() override { return open; }
  int Purge() override;
  int Read(BYTE* data, int count) override;
  int Write(const BYTE* data, int count) override;

  int open = 1;                   // what IsOpened reports; Open sets and Close clears it
  int can_open = 1;               // what Open reports
  std::function<void()> on_read;  // called at the start of every read
  std::string calls;              // one letter a call: p(urge), o(pen), c(lose), w(rite), r(ead)

 private:
  struct Step {
    bool is_write;
    Bytes bytes;
    int count;  // of a write: the result; of a read: the bytes asked for
  };

  std::deque<Step> script_;
};

}  // namespace fieldline::test
