#include "fieldline/alarm/alarm_link.h"

#include <algorithm>
#include <cstring>

AlmLinkOps alm_link_ops = {};

namespace {

constexpr BYTE kStartMark = 0xAA;
constexpr BYTE kEndMark = 0x55;

constexpr int kHeadLength = 3;     // start mark, payload length
constexpr int kFrameOverhead = 6;  // head, command, checksum, end mark
constexpr int kBodyOverhead = 3;   // command, checksum, end mark

constexpr int kFrameCapacity = 512;
constexpr int kPayloadCapacity = kFrameCapacity - kFrameOverhead;
constexpr int kBodyCapacity = 32;
constexpr int kReplyPayloadCapacity = kBodyCapacity - kBodyOverhead;

constexpr unsigned long kMmsBlock = 256;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

// How the head of a reply (start mark and payload length) is checked.
enum class Head {
  kAnnounces,  // the payload has the announced length; the start mark is not checked
  kCapped,     // the same, but a length above `taken` counts as `taken`
  kExact,      // must be AA and exactly the length `taken`
};

struct Command {
  BYTE code;
  int taken;  // number of payload bytes used, from the first on; a reply with fewer fails
  Head head = Head::kAnnounces;
};

// clang-format off
//                                 code  taken
constexpr Command kGetDeviceId  = {0x01,  4};
constexpr Command kGetStatus    = {0x02,  4, Head::kCapped};
constexpr Command kClearText    = {0x03,  0};
constexpr Command kSetText      = {0x04,  0};
constexpr Command kSetSnapshot  = {0x05,  0, Head::kExact};
constexpr Command kGetSignal    = {0x06,  1, Head::kExact};
constexpr Command kGetRequests  = {0x07, 20};
constexpr Command kResetGsm     = {0x10,  0};
constexpr Command kSendSms      = {0x11,  1};
constexpr Command kBeginMms     = {0x12,  1};
constexpr Command kMmsData      = {0x13,  0, Head::kCapped};
constexpr Command kEndMmsData   = {0x14,  1};
constexpr Command kSendMms      = {0x15,  1};
constexpr Command kResetPstn    = {0x20,  0};
constexpr Command kDial         = {0x21,  0};
constexpr Command kSpeak        = {0x31,  0};
constexpr Command kControlRelay = {0x32,  0};
constexpr Command kReadInputs   = {0x33,  4};
// clang-format on

bool ReadAll(BYTE* buffer, int count) {
  int received = 0;
  return alm_link_ops.read(buffer, count, &received) == 0 && received == count;
}

// Length of the payload after this head, or -1 when the head is refused.
int PayloadLength(const Command& command, const BYTE* head) {
  const int announced = head[1] * 256 + head[2];
  switch (command.head) {
    case Head::kExact:
      return head[0] == kStartMark && announced == command.taken ? announced : -1;
    case Head::kCapped:
      return std::min(announced, command.taken);
    case Head::kAnnounces:
      break;
  }
  return announced <= kReplyPayloadCapacity ? announced : -1;
}

// Sends the request and checks the reply. On success, copies the payload bytes that the command uses to `taken`.
int Exchange(const Command& command, const BYTE* payload = nullptr, int length = 0, BYTE* taken = nullptr) {
  if (!alm_link_ops.port) return kFailure;

  alm_link_ops.purge();
  alm_send_frame(command.code, payload, length);

  BYTE head[kHeadLength] = {};
  if (!ReadAll(head, kHeadLength)) return kFailure;
  const int reply_length = PayloadLength(command, head);
  if (reply_length < 0) return kFailure;

  BYTE body[kBodyCapacity] = {};
  if (!ReadAll(body, reply_length + kBodyOverhead)) return kFailure;
  if (body[0] != command.code) return kFailure;
  if (body[reply_length + 2] != kEndMark) return kFailure;
  if (body[reply_length + 1] != alm_xor_sum(body, static_cast<std::int16_t>(reply_length + 1))) return kFailure;
  if (reply_length < command.taken) return kFailure;

  std::copy_n(body + 1, command.taken, taken);
  return kSuccess;
}

bool Fits(const char* text) { return text && std::strlen(text) < kPayloadCapacity; }

int ExchangeText(const Command& command, const char* text, BYTE* taken = nullptr) {
  if (!Fits(text)) return kFailure;
  return Exchange(command, reinterpret_cast<const BYTE*>(text), static_cast<int>(std::strlen(text)) + 1, taken);
}

int PortRead(BYTE* buffer, int count, int* received) {
  *received = alm_link_ops.port->Read(buffer, count);
  return 0;
}

int PortClose() {
  alm_link_ops.port->Close();
  return 0;
}

int PortSetTimeout(int per_byte, int constant) {
  alm_link_ops.port->SetTimeout(per_byte, constant);
  return 0;
}

int PortPurge() {
  alm_link_ops.port->Purge();
  return 0;
}

int PortWrite(const BYTE* buffer, int count) {
  ISerBase* const port = alm_link_ops.port;
  int written = port->Write(buffer, count);
  if (written < 0) {
    port->Close();
    port->Open(nullptr);
    written = port->Write(buffer, count);
  }
  return written == count ? 0 : 1;
}

int PortOpen(int, int) {
  alm_link_ops.port->Open(nullptr);
  return 0;
}

}  // namespace

BYTE alm_xor_sum(const BYTE* bytes, std::int16_t count) {
  BYTE sum = 0;
  for (int i = 0; i < count; ++i) sum ^= bytes[i];
  return sum;
}

void alm_send_frame(BYTE command, const BYTE* payload, int length) {
  if (!alm_link_ops.port || length < 0 || length > kPayloadCapacity) return;

  BYTE frame[kFrameCapacity] = {kStartMark, static_cast<BYTE>(length >> 8), static_cast<BYTE>(length & 0xFF), command};
  if (payload) std::copy_n(payload, length, frame + 4);
  frame[4 + length] = alm_xor_sum(frame + 3, static_cast<std::int16_t>(length + 1));
  frame[5 + length] = kEndMark;
  alm_link_ops.write(frame, length + kFrameOverhead);
}

int alm_get_device_id(DEVICE_ID* id) {
  if (!id) return kFailure;
  return Exchange(kGetDeviceId, nullptr, 0, id->bytes);
}

int alm_get_status(DEVICE_STATUS* status) {
  if (!status) return kFailure;
  return Exchange(kGetStatus, nullptr, 0, status->bytes);
}

int alm_clr_tts_text() { return Exchange(kClearText); }

int alm_set_tts_text(const char* text) { return ExchangeText(kSetText, text); }

int alm_set_snapshot(const char* text) { return ExchangeText(kSetSnapshot, text); }

int alm_get_sig_qty(char* quality) {
  if (!quality) return kFailure;
  return Exchange(kGetSignal, nullptr, 0, reinterpret_cast<BYTE*>(quality));
}

int alm_get_rmt_req(DEVICE_REQ* req) {
  if (!req) return kFailure;
  return Exchange(kGetRequests, nullptr, 0, req->bytes);
}

int alm_reset_gsm() { return Exchange(kResetGsm); }

int alm_send_sms(const char* first, const char* second, BYTE* result) {
  if (!Fits(first) || !Fits(second) || !result) return kFailure;
  const auto first_length = static_cast<int>(std::strlen(first)) + 1;
  const auto second_length = static_cast<int>(std::strlen(second)) + 1;
  if (first_length + second_length > kPayloadCapacity) return kFailure;

  BYTE payload[kPayloadCapacity];
  std::copy_n(first, first_length, payload);
  std::copy_n(second, second_length, payload + first_length);
  return Exchange(kSendSms, payload, first_length + second_length, result);
}

int alm_reset_pstn() { return Exchange(kResetPstn); }

int alm_ctrl_relay(BYTE relay, BYTE state) {
  const BYTE payload[] = {relay, state};
  return Exchange(kControlRelay, payload, sizeof payload);
}

int alm_read_io(unsigned long* inputs) {
  if (!inputs) return kFailure;
  BYTE word[4];
  if (Exchange(kReadInputs, nullptr, 0, word) != kSuccess) return kFailure;
  *inputs = word[0] + 0x100ul * word[1] + 0x10000ul * word[2] + 0x1000000ul * word[3];
  return kSuccess;
}

int alm_send_mms(const char* text, const BYTE* data, unsigned long length) {
  if (!Fits(text) || (length > 0 && !data)) return kFailure;

  BYTE status = 0;
  if (Exchange(kBeginMms, nullptr, 0, &status) != kSuccess || status != 0) return kFailure;
  for (unsigned long offset = 0; offset < length;) {
    const unsigned long block = std::min(length - offset, kMmsBlock);
    if (Exchange(kMmsData, data + offset, static_cast<int>(block)) != kSuccess) return kFailure;
    offset += block;
  }
  if (Exchange(kEndMmsData, nullptr, 0, &status) != kSuccess || status != 0) return kFailure;
  if (ExchangeText(kSendMms, text, &status) != kSuccess || status != 0) return kFailure;
  return kSuccess;
}

int alm_pstn_dial(const char* number, const char* text) {
  if (!Fits(number) || !Fits(text)) return kFailure;
  if (ExchangeText(kSetText, text) != kSuccess) return kFailure;
  return ExchangeText(kDial, number);
}

int alm_tts_local(const char* text) {
  if (ExchangeText(kSetText, text) != kSuccess) return kFailure;
  return Exchange(kSpeak);
}

namespace fieldline {

void InstallAlarmPort(ISerBase* port) {
  if (alm_link_ops.port) alm_link_ops.close();
  alm_link_ops = {PortRead, PortClose, PortSetTimeout, PortPurge, PortWrite, PortOpen, port};
}

}  // namespace fieldline
