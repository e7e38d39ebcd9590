// The Modbus drivers: a short or damaged reply ends the poll, and what it and those after it carry leaves the record
// alone.

#include <cstring>
#include <iterator>

#include "fieldline/sensor/sensor_factory.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

namespace {

using Sizes = std::vector<std::size_t>;

struct Kind {
  ENUM_SERDATKIND kind;
  std::size_t size;  // of the record
  Sizes least;       // bytes that each reply must have
  Sizes parts;       // where the part of the record begins that each reply writes
  Sizes zeros;       // bytes of the record that are 0 after a good poll
};

const Kind kKinds[] = {
    {SERDAT_ENVIR,   8,   {9},                  {0},                     {2, 3, 6, 7}          },
    {SERDAT_LEAK,    16,  {7, 7, 7, 7},         {0, 4, 8, 12},           {6, 7, 10, 11, 14, 15}},
    {SERDAT_ONOFF,   12,  {17},                 {0},                     {}                    },
    {SERDAT_ELEC,    96,  {119},                {0},                     {7, 51, 55, 71}       },
    {SERDAT_ELEC_Y,  96,  {67, 9},              {0, 0},                  {7, 51, 55, 95}       },
    {SERDAT_AIRC,    32,  {57},                 {0},                     {7, 21}               },
    {SERDAT_EMERSON, 293, {19, 79, 65, 47, 63}, {2, 111, 173, 209, 247}, {}                    },
};

}  // namespace

// The first byte chooses the kind.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Kind& kind = kKinds[data[0] % std::size(kKinds)];
  ReplyPort port(data + 1, size - 1, ReplyPort::kCounted, SealModbus);
  CSensorBase& driver = *CSensorFactory::GetInstance()->GetSensor(kind.kind);
  const std::span record(driver.m_pData, kind.size);
  MakeOld(record);
  const bool good = Poll(driver, record, port);

  Require(port.Writes() <= kind.least.size());
  const std::size_t accepted = port.Writes() - (good ? 0 : 1);
  const bool is_leak = kind.kind == SERDAT_LEAK;
  for (std::size_t i = 0; i < accepted; ++i) {
    const std::string& reply = port.Replies()[i];
    Require(reply.size() >= kind.least[i]);
    // Only the water-leak controller may send bytes after its frame.
    const std::size_t frame = is_leak ? Byte(reply[2]) + 5 : reply.size();
    Require(frame >= kind.least[i] && frame <= reply.size());
    const unsigned crc = fieldline::test::ModbusCrc(reply.substr(0, frame - 2));
    Require(crc == Byte(reply[frame - 2]) + 256 * Byte(reply[frame - 1]));
  }

  // Without a leak there is no second exchange.
  const std::size_t skipped = is_leak && record[1] == 0 ? 1 : 0;
  if (!good) Require(IsOld(record.subspan(kind.parts[accepted + skipped])));
  if (good) Require(std::ranges::all_of(kind.zeros, [&](std::size_t at) { return record[at] == 0; }));
  if (is_leak && accepted > 0) Require(std::ranges::max(record.first(4)) <= 1 && record[2] == record[3]);
  if (kind.kind == SERDAT_EMERSON) {
    if (accepted > 0) Require(std::ranges::max(record.subspan(2, 109)) <= 1);
    if (accepted < 4) Require(IsOld(record.first(2)));
  }
  if (kind.kind == SERDAT_ELEC && good) {
    std::uint32_t guarded[3];
    std::memcpy(guarded, &record[72], sizeof guarded);
    Require(std::ranges::max(guarded) <= 10000 || IsOld(record.subspan(72)));
  }
  return 0;
}
