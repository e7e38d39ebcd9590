#include <algorithm>
#include <map>

#include "sim/line.h"
#include "tests/support/make_device.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using test::ToolResult;

constexpr int kLiving = 5;
constexpr int kDevices = 9;  // the last four are dead

// A line whose slaves ignore everything for half a second after a request to another one.
class DeafLine {
 public:
  DeafLine() {
    for (int address = 1; address <= kLiving; ++address) line_.Add(test::MakeDevice("envir", address));
    line_.SetFaults(sim::Faults(1, {
                                       {.fault = sim::Fault::kDeaf, .delay = 500ms}
    }));
    EXPECT_TRUE(line_.Start());
  }

  json Site() const {
    json site = {
        {"path",     line_.Path()},
        {"settings", "9600,n,8,1"}
    };
    for (int address = 1; address <= kDevices; ++address) {
      json& device = site["devices"][std::to_string(address)];
      device["kind"] = "envir";
      device["address"] = address;
    }
    return site;
  }

 private:
  sim::Line line_;
};

// Seconds from midnight: enough to compare times of one run, but for one that passes midnight.
double SecondsOf(const std::string& iso) {
  const std::size_t clock = iso.find('T') + 1;
  return 3600 * std::stod(iso.substr(clock, 2)) + 60 * std::stod(iso.substr(clock + 3, 2)) +
         std::stod(iso.substr(clock + 6));
}

TEST(DeafSlaves, AreReadInTimeBesideDeadOnesWithALongPause) {
  const DeafLine patient;
  const DeafLine hasty;
  json site;
  site["lines"]["patient"] = patient.Site();
  site["lines"]["patient"]["pause"] = 600;
  site["lines"]["hasty"] = hasty.Site();
  for (auto& [name, line] : site["lines"].items()) {
    json devices;
    for (auto& [device, description] : line["devices"].items()) devices[name + device] = description;
    line["devices"] = devices;
  }
  const TempDirectory directory;
  directory.WriteFile("site.json", site.dump());

  const ToolResult result = test::RunTool({"watch", directory.Path("site.json"), "--json", "--duration", "50s"});

  std::map<std::string, double> last;  // by device
  double longest = 0;                  // s between two readings of a living device
  int ignored = 0;                     // requests of the hasty line to living devices
  for (const json& poll : test::Lines(result.out)) {
    if (poll["address"] > kLiving) {
      EXPECT_FALSE(poll["ok"]) << poll;
    } else if (poll["line"] == "hasty") {
      ignored += poll["ok"] ? 0 : 1;
    } else if (poll["ok"]) {
      const double time = SecondsOf(poll["time"]);
      const auto [before, is_first] = last.try_emplace(poll["device"], time);
      longest = std::max(longest, time - before->second);
      before->second = time;
    }
  }
  EXPECT_EQ(last.size(), static_cast<std::size_t>(kLiving));
  EXPECT_LT(longest, 10);
  const auto [first, latest] = std::minmax_element(
      last.begin(), last.end(), [](const auto& one, const auto& other) { return one.second < other.second; });
  EXPECT_LT(latest->second - first->second, 10) << "a device was given up";
  EXPECT_GT(ignored, 10) << "the slaves are not deaf";
}

}  // namespace
}  // namespace fieldline
