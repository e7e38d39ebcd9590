#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "service/history/device_history.h"
#include "service/history/export.h"
#include "service/history/history_store.h"
#include "service/history/retention.h"
#include "service/history/summary.h"
#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;

constexpr UnixTime kStart = 1'700'000'100'000;  // the beginning of a slot: 2023-11-14T22:15:00Z

constexpr char kSite[] = R"({"lines": {"A": {"path": "/dev/null", "settings": "9600,n,8,1", "devices": {
  "probe": {"kind": "envir", "interval": "1s", "scale": {"register_1": {"signed": 16, "factor": 10, "unit": "°C"}}},
  "other": {"kind": "envir", "address": 2}}}}})";

class History : public testing::Test {
 protected:
  History() { Reopen(); }

  static Site WriteAndReadSite(const TempDirectory& directory) {
    directory.WriteFile("site.json", kSite);
    return ReadSite(directory.Path("site.json"));
  }

  void Reopen() {
    store_.reset();
    store_.emplace(Path(), devices_);
  }

  std::string Path() const { return directory_.Path("history.db"); }

  // The record of a probe: registers 1 and 0, as it stands in memory.
  static Bytes Record(int temperature, int humidity) {
    const auto low = [](int number) { return static_cast<BYTE>(number & 0xFF); };
    const auto high = [](int number) { return static_cast<BYTE>(number >> 8 & 0xFF); };
    return {low(temperature), high(temperature), 0, 0, low(humidity), high(humidity), 0, 0};
  }

  // `time` and the clock are so many ms after the start; the clock of the wall may be set.
  HistoryEntry Good(UnixTime time, int temperature, int humidity = 450) const {
    HistoryEntry entry;
    entry.time = kStart + time + clock_was_set_by_;
    entry.clock = std::chrono::steady_clock::time_point(milliseconds(1'000'000 + time));
    entry.record = Record(temperature, humidity);
    return entry;
  }
  HistoryEntry Failed(UnixTime time, const std::string& code, bool line_failed = false) const {
    HistoryEntry entry = Good(time, 0);
    entry.record.clear();
    entry.code = code;
    entry.message = "because of " + code;
    entry.line_failed = line_failed;
    return entry;
  }
  void Write(const std::vector<HistoryEntry>& entries) { store_->Write(entries); }

  std::int64_t Rows(const std::string& table) { return store_->database().Query("SELECT count(*) FROM " + table); }

  std::string Exported(ExportForm form = ExportForm::kCsv, UnixTime from = 0, UnixTime until = kStart * 2) {
    DeviceHistory history(store_->database(), "probe");
    std::ostringstream out;
    Export(history, "probe", from, until, form, out);
    return out.str();
  }

  const TempDirectory directory_;
  const Site site_ = WriteAndReadSite(directory_);
  const std::vector<WatchedDevice> devices_ = DevicesOf(site_);
  std::optional<HistoryStore> store_;
  UnixTime clock_was_set_by_ = 0;
};

TEST_F(History, KeepsWhatChangesAndForHowLongItHeld) {
  Write({Good(0, 235), Good(1000, 235), Good(2000, 0xFFCB)});
  Write({Good(3000, 0xFFCB, 460), Failed(4000, "no_answer"), Failed(5000, "no_answer"), Failed(6000, "checksum")});
  Write({Good(7000, 0xFFCB, 460)});
  EXPECT_EQ(Exported(),
            "time,until,ok,error,register_1 (°C),register_0\n"
            "2023-11-14T22:15:00.000Z,2023-11-14T22:15:02.000Z,1,,23.5,450\n"
            "2023-11-14T22:15:02.000Z,2023-11-14T22:15:03.000Z,1,,-5.3,450\n"
            "2023-11-14T22:15:03.000Z,2023-11-14T22:15:03.000Z,1,,-5.3,460\n"
            "2023-11-14T22:15:04.000Z,2023-11-14T22:15:05.000Z,0,no_answer,,\n"
            "2023-11-14T22:15:06.000Z,2023-11-14T22:15:06.000Z,0,checksum,,\n"
            "2023-11-14T22:15:07.000Z,2023-11-14T22:15:07.000Z,1,,-5.3,460\n");
  EXPECT_EQ(Rows("reading"), 4) << "what is like the reading before takes no row";
  EXPECT_EQ(store_->database().Query("SELECT polls FROM failure WHERE code = 'no_answer'"), 2);
  EXPECT_THAT(
      Exported(ExportForm::kJson, kStart + 2500, kStart + 4200),
      HasSubstr(R"({"schema":1,"device":"probe","time":"2023-11-14T22:15:02.500Z",)"
                R"("until":"2023-11-14T22:15:03.000Z","ok":true,"values":{"register_1":-5.3,"register_0":450}})"));
}

TEST_F(History, KnowsNothingOfTimesWithoutPolls) {
  Write({Good(0, 1), Good(59'000, 1), Good(180'000, 1)});
  Reopen();
  Write({Good(181'000, 1)});
  EXPECT_EQ(Rows("good"), 3) << "after a gap of two minutes, and after the service was down";
}

TEST_F(History, SurvivesAClockThatIsSet) {
  Write({Good(0, 100), Good(10'000, 200)});
  clock_was_set_by_ = -3'600'000;
  Write({Good(11'000, 300), Good(12'000, 300)});
  clock_was_set_by_ = 0;
  Write({Good(13'000, 400)});
  EXPECT_EQ(Rows("run"), 3);
  EXPECT_EQ(Exported(),
            "time,until,ok,error,register_1 (°C),register_0\n"
            "2023-11-14T22:15:00.000Z,2023-11-14T22:15:10.000Z,1,,10,450\n"
            "2023-11-14T22:15:10.000Z,2023-11-14T22:15:10.000Z,1,,20,450\n"
            "2023-11-14T21:15:11.000Z,2023-11-14T21:15:12.000Z,1,,30,450\n"
            "2023-11-14T22:15:13.000Z,2023-11-14T22:15:13.000Z,1,,40,450\n");
}

TEST_F(History, IsWholeAgainAfterAClockThatWasFarAhead) {
  constexpr UnixTime kDecade = 87'600 * kHour;
  constexpr std::chrono::hours kKeep(1);
  clock_was_set_by_ = kDecade;
  Write({Good(0, 100), Good(10'000, 200)});
  Summarise(store_->database(), kStart + kDecade + kHour);
  RemoveOld(store_->database(), kStart + kDecade + kHour, kKeep);
  clock_was_set_by_ = 0;
  Write({Good(20'000, 300), Good(70'000, 300)});
  Summarise(store_->database(), kStart + 60'000);
  Summarise(store_->database(), kStart + 2 * kSlot);
  RemoveOld(store_->database(), kStart + 2 * kSlot, kKeep);
  EXPECT_EQ(Rows("summary WHERE slot = " + std::to_string(kStart)), 2) << "a row for each number of the probe";
  EXPECT_LE(store_->database().Query("SELECT readings_from FROM progress"), kStart + 2 * kSlot);
}

TEST_F(History, TellsWhenALineIsLostAndBack) {
  Write({Good(0, 1), Failed(1000, "line_gone", true), Failed(2000, "no_such_device", true),
         Failed(3000, "no_such_device", true), Failed(4000, "no_answer")});
  EXPECT_EQ(Rows("line_change"), 4);
  EXPECT_EQ(Rows("line_change WHERE code IS NULL"), 2) << "at the start, and when something could be asked again";
}

TEST_F(History, SummarisesSlotsByTime) {
  std::vector<HistoryEntry> polls;
  for (UnixTime time = 0; time <= 900'000; time += 10'000) polls.push_back(Good(time, time < 75'000 ? 100 : 200));
  Write(polls);
  Summarise(store_->database(), kStart + 900'000);
  Statement rows(store_->database(),
                 "SELECT slot, least, mean, most FROM summary JOIN series ON series.id = series "
                 "WHERE field = 'register_1' ORDER BY slot");
  ASSERT_TRUE(rows.Step());
  EXPECT_EQ(rows.Integer(0), kStart);
  EXPECT_EQ(rows.Number(1), 10);
  EXPECT_NEAR(rows.Number(2), (80 * 10 + 220 * 20) / 300.0, 1e-9) << "seen from the poll at 80 s on";
  EXPECT_EQ(rows.Number(3), 20);
  ASSERT_TRUE(rows.Step());
  EXPECT_EQ(rows.Integer(0), kStart + kSlot);
  EXPECT_EQ(rows.Number(2), 20);
  EXPECT_FALSE(rows.Step()) << "the third slot is like the second";
}

TEST_F(History, RemovesTheOldestAndKeepsTheValueThatStillHolds) {
  std::vector<HistoryEntry> polls;
  for (UnixTime time = 0; time <= 6 * kHour; time += 10'000)
    polls.push_back(Good(time, 100, static_cast<int>(time / 10'000)));
  Write(polls);
  Summarise(store_->database(), kStart + 6 * kHour);
  RemoveOld(store_->database(), kStart + 6 * kHour, std::chrono::hours(3));
  const std::string from_then_on = Exported(ExportForm::kCsv, kStart + 3 * kHour);
  EXPECT_THAT(from_then_on, HasSubstr("\n2023-11-15T01:15:00.000Z,2023-11-15T01:15:10.000Z,1,,10,1080\n"));
  const std::int64_t readings = Rows("reading");
  EXPECT_LT(readings, 1100);

  const std::uint64_t used = UsedBytes(store_->database());
  const auto removed = Shrink(store_->database(), used - 8192);
  ASSERT_TRUE(removed);
  EXPECT_GE(*removed, kStart + 4 * kHour) << "an hour more at least";
  EXPECT_LE(UsedBytes(store_->database()), used - 8192);
  EXPECT_LT(Rows("reading"), readings);
  EXPECT_EQ(Rows("summary WHERE slot < " + std::to_string(kStart + kHour)), 13) << "five-minute values stay";
  EXPECT_EQ(Shrink(store_->database(), used), std::nullopt);
}

TEST_F(History, ADamagedFileIsToldAsSuch) {
  store_.reset();
  std::ofstream(Path(), std::ios::binary)
      << "this is no database, and never was one, whatever its name may say: " << kSite;
  try {
    Reopen();
    FAIL() << "it was opened";
  } catch (const DatabaseError& error) {
    EXPECT_TRUE(error.IsDamage()) << error.what();
  }
}

}  // namespace
}  // namespace fieldline::service
