#pragma once

#include <cstdint>

#include "fieldline/alarm/i_hub_alarm.h"
#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// The link to the alarm board: one request frame, one reply frame. It has no lock: CHubAlarm keeps exchanges and
// sequences apart.
//
// Frames have one form in both directions. Relay 1 to state 1:
//
//   AA     00 02   32       01 01    32        55
//   start  length  command  payload  checksum  end
//
// The length, high byte first, counts the payload alone. The checksum is the XOR of command and payload. Texts travel
// with their final zero.

// The way to the port; one for the process. Every operation needs a port: while `port` is null none may be called.
struct AlmLinkOps {
  int (*read)(BYTE* buffer, int count, int* received);  // 0; what the port's Read returned is in *received
  int (*close)();                                       // 0
  int (*set_timeout)(int per_byte, int constant);       // 0
  int (*purge)();                                       // 0

  // 0 when the port took exactly `count` bytes, else 1. A port that fails is closed, opened with the settings it holds,
  // and given the bytes once more.
  int (*write)(const BYTE* buffer, int count);

  int (*open)(int line, int baud);  // 0; opens the port with the settings it holds, not with these
  ISerBase* port;                   // not owned
};

extern AlmLinkOps alm_link_ops;

// XOR of `count` bytes, 0 for none.
BYTE alm_xor_sum(const BYTE* bytes, std::int16_t count);

// Sends a frame with `length` payload bytes, at most 506; a longer one is not sent, and none without a port. `payload`
// may be null when `length` is 0. That a write failed shows in the missing reply.
void alm_send_frame(BYTE command, const BYTE* payload, int length);

// One exchange each. They and the sequences below return 0 for success, 1 for failure, see IHubAlarm.
int alm_get_device_id(DEVICE_ID* id);
int alm_get_status(DEVICE_STATUS* status);
int alm_clr_tts_text();
int alm_set_tts_text(const char* text);
int alm_set_snapshot(const char* text);
int alm_get_sig_qty(char* quality);
int alm_get_rmt_req(DEVICE_REQ* req);
int alm_reset_gsm();
int alm_send_sms(const char* first, const char* second, BYTE* result);
int alm_reset_pstn();
int alm_ctrl_relay(BYTE relay, BYTE state);
int alm_read_io(unsigned long* inputs);

// Sequences of exchanges; the first that fails ends them.
int alm_send_mms(const char* text, const BYTE* data, unsigned long length);
int alm_pstn_dial(const char* number, const char* text);
int alm_tts_local(const char* text);

namespace fieldline {

// Closes the port that is installed, if any, and installs this one; null leaves none.
void InstallAlarmPort(ISerBase* port);

}  // namespace fieldline
