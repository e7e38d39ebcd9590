// Replies of the alarm board: whatever comes, an operation that fails leaves its result untouched, and none reads or
// sends more than a frame.

#include "fieldline/alarm/alarm_link.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

namespace {

constexpr int kLongestFrame = 512;
constexpr int kLongestBody = 32;

// Serves the input byte by byte to read after read.
class BoardPort final : public fieldline::test::StubPort {
 public:
  explicit BoardPort(std::span<const BYTE> input) : input_(input) {}

  int Read(BYTE* data, int count) override {
    Require(count > 0 && count <= kLongestBody);
    const auto served = input_.first(std::min(input_.size(), static_cast<std::size_t>(count)));
    std::ranges::copy(served, data);
    input_ = input_.subspan(served.size());
    return static_cast<int>(served.size());
  }

  int Write(const BYTE*, int count) override {
    Require(count > 0 && count <= kLongestFrame);
    return count;
  }

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

// The first byte chooses the operation, the others are what the board sends.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  BoardPort port({data + 1, size - 1});
  fieldline::InstallAlarmPort(&port);

  Results results;
  const std::span bytes(reinterpret_cast<BYTE*>(&results), sizeof results);
  MakeOld(bytes);
  unsigned long inputs = kOld;
  const int result = Run(data[0], &results, &inputs);
  Require(result == 0 || (result == 1 && IsOld(bytes) && inputs == kOld));
  Require(inputs <= 0xFFFFFFFF);

  fieldline::InstallAlarmPort(nullptr);
  return 0;
}
