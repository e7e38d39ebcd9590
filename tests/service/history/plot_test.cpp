#include "service/history/plot.h"

#include <gtest/gtest.h>

#include "service/history/history_store.h"
#include "service/history/retention.h"
#include "service/history/summary.h"
#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;

constexpr UnixTime kStart = 1'700'000'100'000;  // the beginning of a slot: 2023-11-14T22:15:00Z

constexpr char kSite[] = R"({"lines": {"A": {"path": "/dev/null", "settings": "9600,n,8,1", "devices": {
  "probe": {"kind": "envir", "scale": {"register_1": {"factor": 10, "unit": "°C"}}}}}}})";

class PlotOfAProbe : public testing::Test {
 protected:
  static Site WriteAndReadSite(const TempDirectory& directory) {
    directory.WriteFile("site.json", kSite);
    return ReadSite(directory.Path("site.json"));
  }

  // A poll so many seconds after the start; the record begins with register 1.
  void Poll(int second, BYTE tenths) { Write(second, Bytes{tenths, 0, 0, 0, 0, 0, 0, 0}, ""); }
  void Fail(int second) { Write(second, {}, "no_answer"); }

  std::optional<Plot> Make(int from, int until, int parts, const std::string& field = "register_1") {
    return MakePlot(store_.database(), "probe", field, kStart + from * 1000, kStart + until * 1000, parts);
  }

  static void ExpectPart(const std::optional<Plot::Part>& part, double least, double mean, double most) {
    ASSERT_TRUE(part);
    EXPECT_DOUBLE_EQ(part->least, least);
    EXPECT_NEAR(part->mean, mean, 1e-9);
    EXPECT_DOUBLE_EQ(part->most, most);
  }

  const TempDirectory directory_;
  const Site site_ = WriteAndReadSite(directory_);
  const std::vector<WatchedDevice> devices_ = DevicesOf(site_);
  HistoryStore store_{directory_.Path("history.db"), devices_};

 private:
  void Write(int second, Bytes record, const std::string& code) {
    HistoryEntry entry;
    entry.time = kStart + second * 1000;
    entry.clock = std::chrono::steady_clock::time_point(milliseconds(1000 * second));
    entry.record = std::move(record);
    entry.code = code;
    store_.Write(std::span(&entry, 1));
  }
};

TEST_F(PlotOfAProbe, WeighsByTimeAndLeavesGaps) {
  Poll(0, 200);
  Poll(6, 240);
  Poll(10, 240);
  Poll(12, 250);
  Fail(20);
  Poll(35, 100);
  const auto plot = Make(0, 40, 4);
  ASSERT_TRUE(plot);
  EXPECT_EQ(plot->unit, "°C");
  EXPECT_EQ(plot->step, 10'000);
  ASSERT_EQ(plot->parts.size(), 4u);
  ExpectPart(plot->parts[0], 20, (6 * 20 + 4 * 24) / 10.0, 24);
  // The last good poll was at 12 s: what it brought holds for a moment.
  ExpectPart(plot->parts[1], 24, (2000 * 24 + 1 * 25) / 2001.0, 25);
  EXPECT_FALSE(plot->parts[2]);
  ExpectPart(plot->parts[3], 10, 10, 10);
  EXPECT_FALSE(Make(0, 40, 4, "no_such_field"));
}

TEST_F(PlotOfAProbe, TakesFiveMinuteValuesWhereReadingsAreGone) {
  for (int second = 0; second <= 1200; second += 30) Poll(second, second < 300 ? 200 : second < 900 ? 220 : 230);
  Summarise(store_.database(), kStart + 900'000);
  // Slots: 20, 22, 22 (which has no row), and then readings.
  for (const bool readings_are_gone : {false, true}) {
    if (readings_are_gone) RemoveOld(store_.database(), kStart + 4'500'000, std::chrono::hours(1));
    const auto coarse = Make(0, 1200, 4);
    ASSERT_EQ(coarse->parts.size(), 4u);
    ExpectPart(coarse->parts[0], 20, 20, 20);
    ExpectPart(coarse->parts[2], 22, 22, 22);
    ExpectPart(coarse->parts[3], 23, 23, 23);
    const auto fine = Make(600, 900, 10);
    ASSERT_EQ(fine->parts.size(), 10u);
    for (const auto& part : fine->parts) ExpectPart(part, 22, 22, 22);
  }
}

}  // namespace
}  // namespace fieldline::service
