// Replies of other devices, noise and late replies, and how they are handled.

#include "polling/line/reply_checker.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "polling/poller.h"
#include "sim/line.h"
#include "tests/drivers/ascii/frames.h"
#include "tests/support/modbus_frames.h"

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using test::Hex;
using test::Seal;
using test::Text;
using test::WithCrc;

using Replies = std::vector<sim::Reply>;

const Bytes kGood = Hex("01 03 04 01 23 FE DC 4B FC");
const Bytes kOther = WithCrc("02 03 04 00 00 00 01");

Bytes operator+(Bytes front, const Bytes& back) {
  front.insert(front.end(), back.begin(), back.end());
  return front;
}

// Answers its first requests with the given replies, and later ones as a probe does.
class Script final : public sim::Device {
 public:
  explicit Script(std::deque<Replies> answers, Bytes usual) : answers_(std::move(answers)), usual_(std::move(usual)) {}

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<sim::Reply>& replies) override {
    if (!silent) return 0;
    if (answers_.empty()) {
      replies.push_back({usual_});
    } else {
      replies = std::move(answers_.front());
      answers_.pop_front();
    }
    return received.size();
  }

 private:
  std::deque<Replies> answers_;
  const Bytes usual_;
};

// A device on its own line, polled with a time-out of 300 ms.
class Bench {
 public:
  Bench(const Kind& kind, std::deque<Replies> answers, Bytes usual) : kind_(kind) {
    line_.Add(std::make_unique<Script>(std::move(answers), std::move(usual)));
    EXPECT_TRUE(line_.Start());
    LineConfig config = ResolveLine({.port = line_.Path() + ":9600", .maps = {}, .timeout = "0,300"}, {});
    EXPECT_FALSE(polled_.Open(config));
    options_ = OptionsOf(config);
  }

  PollResult Poll() { return fieldline::Poll(kind_, 1, *driver_, &polled_, options_); }
  PollOptions& options() { return options_; }

 private:
  const Kind& kind_;
  sim::Line line_{
      {.any_baud = true, .paced = false}
  };
  PolledPort<CSerBase> polled_{nullptr, "", SER_COM};
  std::unique_ptr<CSensorBase> driver_ = RequireDriver(kind_);
  PollOptions options_;
};

std::string CodeOf(const PollResult& result) {
  if (result.failure) return std::string(result.failure->code);
  return result.warning ? "warning " + std::string(result.warning->code) : "good";
}

TEST(ReplyChecker, KnowsWhoseReplyItIsAndRecoversByTheNextPoll) {
  const struct {
    Replies replies;
    const char* code;
  } cases[] = {
      {{{kGood}},                                             "good"                  },
      {{{kOther}, {kGood, 30ms}},                             "warning foreign_frame" },
      {{{kOther}},                                            "other_device"          },
      {{{kOther, 350ms}},                                     "no_answer"             },
      {{{WithCrc("01 04 04 00 00 00 01")}},                   "other_device"          },
      {{{Hex("00") + kGood}},                                 "warning stray_bytes"   },
      {{{Hex("01 03 FF"), 0ms}, {kGood, 40ms}},               "warning stray_bytes"   },
      {{{Hex("01 03 00 00 00 02 C4 0B") + kGood}},            "warning echo"          },
      {{{kGood + Hex("00 00")}},                              "warning trailing_bytes"},
      {{{kGood + kGood}},                                     "warning trailing_bytes"},
      {{{Hex("01 03 04 01")}, {Hex("23 FE DC 4B FC"), 60ms}}, "good"                  },
      {{{Hex("01 03 04 01 23")}},                             "short_reply"           },
      {{{Hex("01 03 04 01 23 FE DD 4B FC")}},                 "checksum"              },
      {{{Hex("01 83 02 C0 F1")}},                             "modbus_exception"      },
      {{{kGood, 305ms}},                                      "late_reply"            },
      {{},                                                    "no_answer"             },
  };
  for (const auto& c : cases) {
    Bench bench(KindOf(SERDAT_ENVIR), {c.replies}, kGood);
    EXPECT_EQ(CodeOf(bench.Poll()), c.code) << c.code;
    const std::string next = CodeOf(bench.Poll());
    // A reply that comes after the line was read until silent differs from the next reply only in its address.
    EXPECT_EQ(next, c.replies.size() == 1 && c.replies[0].delay == 350ms ? next : "good") << "after " << c.code;
  }
}

TEST(ReplyChecker, SaysSoWhenTheLineDoesNotFallSilent) {
  Replies noise = {{Hex("FF FF")}};
  for (int i = 0; i < 1000; ++i) noise.push_back({Hex("FF"), 2ms});
  Bench bench(KindOf(SERDAT_ENVIR), {noise}, kGood);
  EXPECT_EQ(CodeOf(bench.Poll()), "line_noise");
}

TEST(ReplyChecker, TakesAnotherAddressWhenAsked) {
  Bench bench(KindOf(SERDAT_ENVIR), {{{kOther}}}, kGood);
  bench.options().any_address = true;
  const PollResult result = bench.Poll();
  EXPECT_EQ(CodeOf(result), "warning other_address");
  EXPECT_EQ(result.warning->message, "device 2 answered a request to device 1");
  EXPECT_EQ(result.record, Hex("01 00 00 00 00 00 00 00"));
}

TEST(ReplyChecker, RepeatsAnUnansweredPollAsOftenAsAsked) {
  Bench bench(KindOf(SERDAT_ENVIR), {{}, {}}, kGood);
  bench.options().retries = 1;
  EXPECT_EQ(CodeOf(bench.Poll()), "no_answer");
  EXPECT_EQ(CodeOf(bench.Poll()), "good");
}

TEST(ReplyChecker, LooksAtTheChecksumAndTheAddressForDriversThatDoNot) {
  const std::string info = "01000200030004000500";
  const std::string good = Seal("~21016000B014" + info);
  std::string damaged = good;
  damaged[20] = damaged[20] == '0' ? '1' : '0';
  Bench foreign(KindOf(SERDAT_CYBERMATE), {{{Text(Seal("~21026000B014" + info))}}}, Text(good));
  EXPECT_EQ(CodeOf(foreign.Poll()), "other_device");
  Bench noisy(KindOf(SERDAT_CYBERMATE), {{{Text(damaged)}}}, Text(good));
  EXPECT_NE(CodeOf(noisy.Poll()), "good");
}

TEST(ReplyChecker, IsNotTakenInByARepliesCopyAtTheNextStep) {
  // Four requests for one register each. The replies to the first two can differ only in their value.
  const Bytes status = WithCrc("01 04 02 00 01");
  Bench leak(KindOf(SERDAT_LEAK),
             {
                 {{status}, {status, 10ms}},
                 {{WithCrc("01 04 02 00 07")}       },
                 {{WithCrc("01 03 02 00 08")}}
  },
             WithCrc("01 04 02 00 09"));
  const PollResult result = leak.Poll();
  EXPECT_EQ(CodeOf(result), "warning trailing_bytes");
  EXPECT_EQ(result.record, Hex("01 01 00 00 07 00 00 00 08 00 00 00 09 00 00 00"));
}

TEST(ReplyChecker, TrustsAUnitWithoutAChecksumOnASilentLineOnly) {
  const Bytes values = Hex("01 01 84") + Bytes(132, 7);
  Bench unit(KindOf(SERDAT_DUAL_PROTO), {{{values + Hex("00")}}}, values);
  const PollResult result = unit.Poll();
  EXPECT_EQ(CodeOf(result), "trailing_bytes");
  EXPECT_TRUE(result.record.empty());
  EXPECT_EQ(CodeOf(unit.Poll()), "good");
}

TEST(ReplyChecker, SaysHowFarAPollOfSeveralStepsCame) {
  const Bytes status = Text("(208.4 140.0 208.4 034 59.9 2.05 35.0 00110000\r");
  Bench silent(KindOf(SERDAT_UPS), {{{status}}, {}}, status);
  const PollResult result = silent.Poll();
  EXPECT_EQ(CodeOf(result), "partly_answered");
  EXPECT_EQ(result.failure->message, "answered 1 of 3: status yes, identification no");
  Bench unknown(KindOf(SERDAT_UPS), {{{Hex("00 FF") + status}}, {{Text("I\r")}}, {{Text("F\r")}}}, status);
  EXPECT_EQ(CodeOf(unknown.Poll()), "device_refused") << "a UPS that does not know the command returns it";
}

}  // namespace
}  // namespace fieldline
