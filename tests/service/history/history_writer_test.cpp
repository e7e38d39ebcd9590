#include "service/history/history_writer.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <future>

#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using testing::HasSubstr;

TEST(HistoryWriter, SetsADamagedDatabaseAsideAndKeepsWhatCame) {
  const TempDirectory directory;
  directory.WriteFile("site.json", R"({"lines": {"EIO1": {"path": "/dev/null", "devices": {"own": {"kind": "di"}}}}})");
  const Site site = ReadSite(directory.Path("site.json"));
  const std::vector<WatchedDevice> devices = DevicesOf(site);
  const std::string path = directory.Path("history.db");
  std::ofstream(path, std::ios::binary) << std::string(4096, 'x');
  std::promise<std::string> told;
  {
    HistoryWriter writer(path, devices, {}, [&told](const std::string& notice) { told.set_value(notice); });
    HistoryEntry entry;
    entry.time = 1'700'000'000'000;
    entry.record = Bytes(8, 1);
    writer.Add(entry);
    EXPECT_THAT(told.get_future().get(), HasSubstr("the history is damaged"));
    EXPECT_EQ(writer.Dropped(), 0u);
  }
  Database database(path, Database::Mode::kRead);
  EXPECT_EQ(database.Query("SELECT count(*) FROM reading"), 8);
  const auto files = std::filesystem::directory_iterator(directory.Path(""));
  EXPECT_EQ(std::count_if(
                begin(files), end(files),
                [](const auto& file) { return file.path().string().find("history.db.damaged-") != std::string::npos; }),
            1);
}

}  // namespace
}  // namespace fieldline::service
