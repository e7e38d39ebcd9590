#pragma once

#include <cstdint>

#include "fieldline/alarm/i_hub_alarm.h"
#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// The link to the alarm board: one request frame, one reply frame. Not thread-safe: CHubAlarm locks each exchange and
// each sequence.
//
// Requests and replies have the same format. Relay 1 to state 1:
//
//   AA     00 02   32       01 01    32        55
//   start  length  command  payload  checksum  end
//
// The length, high byte first, counts only the payload. The checksum is the XOR of command and payload. Texts are sent
// with their terminating zero.

// The functions that access the port, one set for the process. All of them need a port: none may be called while `port`
// is null.
struct AlmLinkOps {
  int (*read)(BYTE* buffer, int count, int* received);  // always 0; *received is the result of the port's Read
  int (*close)();                                       // always 0
  int (*set_timeout)(int per_byte, int constant);       // always 0
  int (*purge)();                                       // always 0

  // 0 when the port took exactly `count` bytes, otherwise 1. When the port reports a failure, it is closed, opened with
  // its own settings, and the bytes are written once more.
  int (*write)(const BYTE* buffer, int count);

  int (*open)(int line, int baud);  // always 0; opens the port with its own settings, not with these
  ISerBase* port;                   // not owned
};

extern AlmLinkOps alm_link_ops;

// XOR of `count` bytes, 0 when there are none.
BYTE alm_xor_sum(const BYTE* bytes, std::int16_t count);

// Sends a frame with `length` payload bytes, at most 506. Sends nothing when `length` is larger or there is no port.
// `payload` may be null when `length` is 0. A failed write is not reported; it shows when no reply comes.
void alm_send_frame(BYTE command, const BYTE* payload, int length);

// One exchange each. These functions and the sequences below return 0 for success and 1 for failure; see IHubAlarm.
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

// Sequences of exchanges. The first failed exchange ends the sequence.
int alm_send_mms(const char* text, const BYTE* data, unsigned long length);
int alm_pstn_dial(const char* number, const char* text);
int alm_tts_local(const char* text);

namespace fieldline {

// Closes the installed port, if any, and installs this one. Null leaves no port installed.
void InstallAlarmPort(ISerBase* port);

}  // namespace fieldline
