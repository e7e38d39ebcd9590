// A line on which only one device answers, a slave that this project did not write.

#include "polling/watch/line_worker.h"

#include "tests/peers/libmodbus_slave.h"
#include "tests/support/temp_directory.h"

namespace fieldline::test {
namespace {

using namespace std::chrono_literals;

TEST(LibmodbusPeer, IsReadRightBesideDeadAddresses) {
  const LibmodbusSlave slave(0xFED0, 0, 0, 2);
  const TempDirectory directory;
  directory.WriteFile("site.json", R"({"lines": {"peer": {
      "path": ")" + std::string(slave.Path()) +
                                       R"(", "settings": "115200,n,8,1", "timeout": "0,200", "pause": 150, "devices": {
        "dead-1": {"kind": "envir", "address": 1, "interval": 0},
        "alive":  {"kind": "envir", "address": 4, "interval": 0},
        "dead-2": {"kind": "elec",  "address": 5, "interval": 0},
        "dead-3": {"kind": "leak",  "address": 6, "interval": 0}}}}})");
  const Site site = ReadSite(directory.Path("site.json"));
  TraceOutput no_trace("");
  int good = 0;
  int silent = 0;
  const WatchLimits limits{.polls = 0, .end = Schedule::Clock::now() + 2s};
  LineWorker(site.lines[0], limits, no_trace, [&](const SiteDevice& device, const PollResult& result) {
    if (device.name != "alive") {
      ++silent;
      ASSERT_TRUE(result.failure) << device.name;
      EXPECT_EQ(result.failure->code, "no_answer");
      return;
    }
    ++good;
    ASSERT_FALSE(result.failure) << result.failure->message;
    EXPECT_EQ(RawNumber(device.fields[0], result.record.data()), 0xFED1);
    EXPECT_EQ(RawNumber(device.fields[1], result.record.data()), 0xFED0);
  }).Run();
  EXPECT_GE(silent, 3);
  EXPECT_GE(good, 3);
}

}  // namespace
}  // namespace fieldline::test
