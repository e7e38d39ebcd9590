#include "fieldline/drivers/power/sensor_dual_proto.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "fieldline/platform/clock.h"
#include "fieldline/sensor/modbus.h"
#include "fieldline/sensor/truncate.h"

namespace {

constexpr int kHead = 3;
constexpr int kBody = 141;
constexpr int kFrame = kHead + kBody;

// Indexes of DUAL_PROTO_DATA::values.
constexpr int kFirstFrameOnly = 9;  // the Modbus variant does not supply 9 to 12 and 15 to 32
constexpr int kEndFrameOnly = 13;
constexpr int kSecondFrameOnly = 15;

constexpr BYTE kFrameCommand[] = {0x01, 0x02};
constexpr int kFrameRequest = 5;
// Time that the unit needs to assemble its reply.
constexpr std::uint32_t kFramePauseMs = 500;

enum class Form {
  kWord,         // two bytes, low byte first
  kWordOrNone,   // the same, but FF FF means no value and gives 0
  kUnsigned,     // one byte
  kSigned,       // one byte, sign-extended
  kUnsignedTen,  // one byte, times 10
  kSignedTen,
};

// The frame variant: position of each value in the body, and its encoding.
struct BodyValue {
  int index;  // in DUAL_PROTO_DATA::values
  int body;
  Form form;
};

constexpr BodyValue kFields[] = {
  // index  body  form
    {0,  0,  Form::kWord       },
    {1,  2,  Form::kWord       },
    {2,  4,  Form::kWord       },
    {3,  6,  Form::kWord       },
    {4,  8,  Form::kWord       },
    {5,  10, Form::kWordOrNone },
    {6,  12, Form::kWordOrNone },
    {7,  14, Form::kSigned     },
    {8,  15, Form::kSigned     },
    {9,  22, Form::kUnsigned   },
    {10, 23, Form::kUnsigned   },
    {11, 30, Form::kUnsigned   },
    {12, 31, Form::kUnsigned   },
    {13, 45, Form::kUnsigned   },
    {14, 46, Form::kUnsigned   },
    {15, 52, Form::kUnsignedTen},
    {16, 53, Form::kUnsignedTen},
    {17, 54, Form::kUnsignedTen},
    {18, 55, Form::kUnsignedTen},
    {19, 56, Form::kUnsignedTen},
    {20, 57, Form::kSignedTen  },
    {21, 58, Form::kUnsignedTen},
    {22, 59, Form::kUnsignedTen},
    {23, 60, Form::kUnsignedTen},
    {24, 61, Form::kUnsignedTen},
    {25, 66, Form::kUnsignedTen},
    {26, 67, Form::kUnsignedTen},
    {27, 68, Form::kUnsigned   },
    {28, 69, Form::kUnsignedTen},
    {29, 80, Form::kUnsignedTen},
    {30, 81, Form::kUnsignedTen},
    {31, 82, Form::kUnsignedTen},
    {32, 83, Form::kUnsignedTen},
};
constexpr int kStateByte = 131;
constexpr int kStateBit = 0x10;  // set when the state is 0

static_assert(std::size(kFields) == std::size(DUAL_PROTO_DATA{}.values));
static_assert(std::all_of(std::begin(kFields), std::end(kFields),
                          [](const BodyValue& field) { return field.body + 1 < kStateByte; }));

WORD DecodeField(const BYTE* p, Form form) {
  const auto byte_as_signed = static_cast<signed char>(*p);
  switch (form) {
    case Form::kWord:
      return GetWordLE(p);
    case Form::kWordOrNone:
      return GetWordLE(p) == 0xFFFF ? WORD{0} : GetWordLE(p);
    case Form::kUnsigned:
      return *p;
    case Form::kSigned:
      return static_cast<WORD>(byte_as_signed);
    case Form::kUnsignedTen:
      return static_cast<WORD>(*p * 10);
    case Form::kSignedTen:
      return static_cast<WORD>(byte_as_signed * 10);
  }
  return 0;
}

// Float k of a reply times `factor`, truncated; the low 16 bits of the result. The device sends a float most
// significant byte first.
WORD DecodeFloat(const BYTE* frame, int k, float factor) {
  const float value = std::bit_cast<float>(GetDwordBE(frame + kHead + 4 * k));
  return static_cast<WORD>(fieldline::Truncate<std::int64_t>(value * factor) & 0xFFFF);
}

}  // namespace

CSensorDualProto::CSensorDualProto() : RecordSensor(SERDAT_DUAL_PROTO) {}

int CSensorDualProto::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;
  return addr % 2 == 0 ? PollModbus(port, addr) : PollFrame(port, addr);
}

int CSensorDualProto::PollModbus(ISerBase* port, int addr) {
  constexpr float kTenths = 10.0f;
  constexpr float kWhole = 1.0f;
  constexpr BYTE kHolding = fieldline::kReadHoldingRegisters;

  port->Purge();
  BYTE frame[kFrame];

  if (!Transact(port, addr, kHolding, 2348, 6, frame)) return 0;
  m_data.values[7] = DecodeFloat(frame, 1, kWhole);
  m_data.values[13] = DecodeFloat(frame, 0, kTenths);
  m_data.values[14] = DecodeFloat(frame, 2, kWhole);

  if (!Transact(port, addr, kHolding, 2356, 2, frame)) return 0;
  m_data.values[8] = DecodeFloat(frame, 0, kWhole);

  if (!Transact(port, addr, kHolding, 2382, 14, frame)) return 0;
  for (int k = 0; k < 7; ++k) m_data.values[k] = DecodeFloat(frame, k, kTenths);
  std::fill(m_data.values + kFirstFrameOnly, m_data.values + kEndFrameOnly, WORD{0});
  std::fill(m_data.values + kSecondFrameOnly, std::end(m_data.values), WORD{0});

  if (!Transact(port, addr, fieldline::kReadCoils, 1013, 1, frame)) return 0;
  m_data.state = frame[kHead];
  return 1;
}

int CSensorDualProto::Transact(ISerBase* port, int addr, int function, int start, int count, unsigned char* frame) {
  const int request = ModBusCmd(fieldline::DeviceAddress(addr), static_cast<BYTE>(function), static_cast<WORD>(start),
                                static_cast<WORD>(count));
  if (!SendCommand(port, request)) return 0;

  if (port->Read(frame, kHead) != kHead) return 0;
  const int data = frame[2];
  const int rest = data + fieldline::kModbusCrcLength;
  if (rest > kBody) return 0;
  if (port->Read(frame + kHead, rest) != rest) return 0;

  const int asked =
      function == fieldline::kReadCoils ? fieldline::BitReplyLength(count) : fieldline::RegisterReplyLength(count);
  return kHead + rest >= asked ? 1 : 0;
}

// The request to device 5, and the head of its reply:
//
//   05      01 02    F8 FF
//   device  command  negated sum of the three, low byte first
//
//   ..  ..       8D
//   not checked  body length, here 141
int CSensorDualProto::PollFrame(ISerBase* port, int addr) {
  m_byCmd[0] = fieldline::DeviceAddress(addr);
  std::copy(std::begin(kFrameCommand), std::end(kFrameCommand), m_byCmd + 1);
  const int checksum = -(m_byCmd[0] + m_byCmd[1] + m_byCmd[2]);
  m_byCmd[3] = static_cast<BYTE>(checksum & 0xFF);
  m_byCmd[4] = static_cast<BYTE>(checksum >> 8 & 0xFF);
  if (!SendCommand(port, kFrameRequest)) return 0;
  fieldline::SleepMs(kFramePauseMs);

  BYTE frame[kFrame];
  if (port->Read(frame, kHead) != kHead) return 0;
  const int length = frame[2];
  if (length > kBody) return 0;
  const BYTE* const body = frame + kHead;
  if (port->Read(frame + kHead, length) != length) return 0;
  if (length <= kStateByte) return 0;

  for (const BodyValue& field : kFields) m_data.values[field.index] = DecodeField(body + field.body, field.form);
  m_data.state = body[kStateByte] & kStateBit ? 0 : 1;
  return 1;
}
