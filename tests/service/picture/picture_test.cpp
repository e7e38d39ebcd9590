#include <gmock/gmock.h>

#include <thread>

#include "polling/site/site.h"
#include "service/picture/picture_taker.h"
#include "sim/line.h"
#include "sim/models.h"
#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace std::chrono_literals;

constexpr Time kNow = Time(std::chrono::seconds(1'779'025'500));  // 2026-05-17T13:45:00Z

std::vector<std::string> TimesOf(const PictureShelf& shelf, const std::string& camera) {
  std::vector<std::string> times;
  for (const Picture& picture : shelf.List(camera, 100)) times.push_back(picture.time);
  return times;
}

TEST(PictureShelf, KeepsTheLastOnesAlsoWhenTheClockIsSetBack) {
  const TempDirectory directory;
  const PictureShelf shelf(directory.Path("pictures"), {.keep = 24h, .most = 2});
  const auto keep = [&](const std::string& camera, Time time, const std::string& content) {
    directory.WriteFile("new", content);
    shelf.Keep(camera, time, directory.Path("new"));
  };
  EXPECT_THAT(TimesOf(shelf, "door"), IsEmpty());
  EXPECT_EQ(shelf.Read("door", ""), std::nullopt);
  keep("door", kNow, "first");
  keep("door", kNow + 1h, "second");
  keep("door", kNow + 30min, "third");
  EXPECT_THAT(TimesOf(shelf, "door"), ElementsAre("2026-05-17T14:15:00.000Z", "2026-05-17T14:45:00.000Z"));
  EXPECT_EQ(shelf.Read("door", ""), "third");
  EXPECT_EQ(shelf.Read("door", "2026-05-17T14:45:00.000Z"), "second");
  EXPECT_EQ(shelf.Read("door", "2026-05-17T13:45:00.000Z"), std::nullopt);

  // A camera may have any name, and its pictures end with their time even when it left the site.
  keep("../door", kNow, "elsewhere");
  EXPECT_EQ(shelf.Read("../door", ""), "elsewhere");
  EXPECT_FALSE(std::filesystem::exists(directory.Path("door")));
  shelf.RemoveOld(kNow + 24h + 45min);
  EXPECT_THAT(TimesOf(shelf, "door"), ElementsAre("2026-05-17T14:45:00.000Z"));
  EXPECT_THAT(TimesOf(shelf, "../door"), IsEmpty());
}

constexpr sim::LineOptions kOptions = {.baud = 115200, .paced = false};

class PictureTaking : public testing::Test {
 protected:
  PictureTaking() {
    std::string lines;
    for (int i = 0; i < 2; ++i) {
      line_[i].Add(sim::Make(KindOf(SERDAT_CAMERA_3GE), 0)).values().PutNumber("size", 4096 + i);
      EXPECT_TRUE(line_[i].Start());
      const std::string number = std::to_string(i);
      lines += (i == 0 ? "\"A" : ", \"A") + number + R"(": {"path": ")" + line_[i].Path() +
               R"(", "settings": "115200,n,8,1", "timeout": "1,400", "devices": {"eye-)" + number +
               R"(": {"kind": "camera-3ge"}}})";
    }
    lines += R"(, "EIO1": {"path": "/dev/null", "devices": {"own": {"kind": "di"}}})";
    directory_.WriteFile("site.json", "{\"lines\": {" + lines + "}}");
    site_.emplace(ReadSite(directory_.Path("site.json")));
  }

  sim::Line line_[2]{sim::Line(kOptions), sim::Line(kOptions)};
  const TempDirectory directory_;
  std::optional<Site> site_;
  const PictureShelf shelf_{directory_.Path("pictures"), {}};
  PictureTaker taker_{directory_.Path("pictures"), shelf_};
};

TEST_F(PictureTaking, TwoCamerasNeverGetEachOthersPicture) {
  const auto take = [this](std::size_t camera) { EXPECT_NE(taker_.Take(site_->cameras[camera]).path, "") << camera; };
  {
    const std::jthread first(take, 0);
    const std::jthread second(take, 1);
  }
  for (int i = 0; i < 2; ++i) {
    const auto pictures = shelf_.List("eye-" + std::to_string(i), 10);
    ASSERT_EQ(pictures.size(), 1u);
    EXPECT_EQ(pictures[0].size, 4096u + static_cast<unsigned>(i));
  }
}

TEST_F(PictureTaking, SaysWhyThereIsNoPicture) {
  directory_.WriteFile("pictures", "a file where the directory should be");
  const PictureTaker::Taken unstored = taker_.Take(site_->cameras[0]);
  EXPECT_EQ(unstored.path, "");
  ASSERT_TRUE(unstored.result.failure);
  EXPECT_EQ(unstored.result.failure->code, "not_stored");
  EXPECT_THAT(unstored.result.failure->message, HasSubstr("pictures/incoming: the directory can't be created"));
  EXPECT_THAT(unstored.result.record, IsEmpty());

  std::filesystem::remove(directory_.Path("pictures"));
  line_[0].SetFaults(sim::Faults(1, {
                                        {.fault = sim::Fault::kDrop, .every = 1}
  }));
  EXPECT_EQ(taker_.Take(site_->cameras[0]).result.failure->code, "no_answer");
  // One camera that fails does not trouble the next.
  EXPECT_FALSE(taker_.Take(site_->cameras[1]).result.failure);
}

}  // namespace
}  // namespace fieldline::service
