#pragma once

#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// Bytes in the order in which the board sends them. The board defines what they mean.
struct DEVICE_ID {
  BYTE bytes[4];
};
static_assert(sizeof(DEVICE_ID) == 4);

struct DEVICE_STATUS {
  BYTE bytes[4];
};
static_assert(sizeof(DEVICE_STATUS) == 4);

struct DEVICE_REQ {
  BYTE bytes[20];
};
static_assert(sizeof(DEVICE_REQ) == 20);

// The alarm board, as used by an application. Applications are compiled against this interface: the order of the
// functions must not change.
//
// The functions from Alm_get_device_id on return 0 for success and 1 for failure: no port, no reply, or a reply that is
// damaged, too short or a refusal. On failure, the results are not changed. Each function blocks until its exchanges
// are over. A reply takes two reads, and the port's read time-outs limit each of them. These functions are thread-safe:
// each holds the lock for all its exchanges.
//
// Texts are zero-terminated. A frame carries at most 506 payload bytes, including the terminating zeros. When a text is
// too long or null, or the pointer for a result is null, the function returns 1 and sends nothing.
class IHubAlarm {
 public:
  // Installs the board's port. It is not owned, should not be open yet, and has its number, speed and read time-outs
  // set. A port that was installed before, even the same one, is closed. Null leaves no port installed. Does not take
  // the lock: no other function may be running.
  virtual void InitHandler(ISerBase* port) = 0;

  // True while the port is open. Does not take the lock and sends nothing.
  virtual bool IsReady() = 0;

  // Blocks the operations of other threads until Unlock(). Can be nested within a thread.
  virtual void Lock() = 0;
  virtual void Unlock() = 0;

  // Opens the port with its own settings. Returns 1 when it is open afterwards, otherwise 0. Does not take the lock and
  // sends nothing.
  virtual int Alm_ctrl_init() = 0;

  // Does nothing and returns 0.
  virtual int Alm_test_com() = 0;

  virtual int Alm_get_device_id(DEVICE_ID* id) = 0;
  virtual int Alm_get_status(DEVICE_STATUS* status) = 0;

  // Clear or set the text that the board speaks, locally or during a call.
  virtual int Alm_clr_tts_text() = 0;
  virtual int Alm_set_tts_text(char* text) = 0;

  // Sets the text and speaks it locally.
  virtual int Alm_tts_local(char* text) = 0;

  virtual int Alm_set_snapshot(char* text) = 0;

  // Reads the signal quality: one byte, as the board's radio reports it.
  virtual int Alm_get_sig_qty(char* quality) = 0;

  // Reads what was requested from the board remotely.
  virtual int Alm_get_rmt_req(DEVICE_REQ* req) = 0;

  virtual int Alm_reset_gsm() = 0;

  // Sends both texts in one frame, together at most 506 bytes. Returns 0 when the board answered, even if it refused:
  // the board's result is in *result.
  virtual int Alm_send_sms(char* first, char* second, unsigned char* result) = 0;

  // Sends `length` bytes of data in blocks of 256, then the text. Returns 0 when the board accepted every step. A
  // failed transfer is not resumed: the next call starts from the beginning. `data` may be null when `length` is 0.
  virtual int Alm_send_mms(char* text, unsigned char* data, unsigned long length) = 0;

  virtual int Alm_reset_pstn() = 0;

  // Sets the text, then dials the number.
  virtual int Alm_pstn_dial(char* number, char* text) = 0;

  virtual int Alm_ctrl_relay(unsigned char relay, unsigned char state) = 0;

  // Reads a 32-bit word, which the board sends least significant byte first.
  virtual int Alm_read_io(unsigned long* inputs) = 0;

 protected:
  ~IHubAlarm() = default;
};
