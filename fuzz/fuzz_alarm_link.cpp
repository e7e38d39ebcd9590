// Replies of the alarm board: whatever comes, an operation that fails leaves its result untouched, and none reads or
// sends more than a frame.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "fieldline/alarm/alarm_link.h"

namespace {

constexpr BYTE kOld = 0xEE;
constexpr std::size_t kLongestFrame = 512;
constexpr std::size_t kLongestBody = 32;

void Require(bool condition) {
  if (!condition) std::abort();
}

// Serves the input to read after read.
class InputPort final : public ISerBase {
 public:
  explicit InputPort(std::span<const BYTE> input) : input_(input) {}

  ENUM_SERTYPE GetSerType() override { return SER_ESL1; }
  wchar_t* GetSerNote() override { return nullptr; }
  int Open(const wchar_t*) override { return 1; }
  int Close() override { return 1; }
  int IsOpened() override { return 1; }
  int SetDef(const wchar_t*) override { return 0; }
  int SetPort(int) override { return 1; }
  int SetBaud(int) override { return 1; }
  int SetTimeout(int, int) override { return 1; }
  int Purge() override { return 1; }
  int Read(BYTE* data, int count) override {
    Require(count >= 0 && static_cast<std::size_t>(count) <= kLongestBody);
    const auto served = input_.first(std::min(input_.size(), static_cast<std::size_t>(count)));
    std::copy(served.begin(), served.end(), data);
    input_ = input_.subspan(served.size());
    return static_cast<int>(served.size());
  }
  int Write(const BYTE*, int count) override {
    Require(count > 0 && static_cast<std::size_t>(count) <= kLongestFrame);
    return count;
  }
  int InsertObserver(ISerObserver*) override { return -1; }
  int RemoveObserver(ISerObserver*) override { return -1; }
  int GetData(int, int) override { return 0; }

 private:
  std::span<const BYTE> input_;
};

struct Results {
  DEVICE_ID id;
  DEVICE_STATUS status;
  DEVICE_REQ requests;
  char quality;
  BYTE sms;
};

int Run(BYTE operation, Results* results, unsigned long* inputs) {
  static const BYTE kData[600] = {};
  switch (operation % 9) {
    case 0:
      return alm_get_device_id(&results->id);
    case 1:
      return alm_get_status(&results->status);
    case 2:
      return alm_get_rmt_req(&results->requests);
    case 3:
      return alm_get_sig_qty(&results->quality);
    case 4:
      return alm_send_sms("1", "text", &results->sms);
    case 5:
      return alm_read_io(inputs);
    case 6:
      return alm_send_mms("text", kData, sizeof kData);
    case 7:
      return alm_pstn_dial("1", "text");
    default:
      return alm_set_snapshot("1");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  InputPort port({data + 1, size - 1});
  fieldline::InstallAlarmPort(&port);

  Results results;
  std::fill_n(reinterpret_cast<BYTE*>(&results), sizeof results, kOld);
  unsigned long inputs = kOld;
  const int result = Run(data[0], &results, &inputs);
  Require(result == 0 || result == 1);
  if (result == 1) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(&results);
    Require(std::all_of(bytes, bytes + sizeof results, [](BYTE byte) { return byte == kOld; }) && inputs == kOld);
  }
  Require(inputs <= 0xFFFFFFFF);

  fieldline::InstallAlarmPort(nullptr);
  return 0;
}
