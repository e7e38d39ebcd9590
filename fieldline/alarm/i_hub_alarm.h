#pragma once

#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// What the board reports about itself, in the order in which it sends it. The fields belong to the board.
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

// The alarm board as an application sees it. Applications are built against the order of these operations.
//
// The operations from Alm_get_device_id on return 0 for success and 1 for failure: no port, no reply, or one that is
// damaged, too short, or refuses. What they fill is untouched on failure. Each blocks for its exchanges, two reads a
// frame, each bounded by the read time-outs of the port, and holds the lock for all of them, so that they may be called
// from any thread.
//
// Texts end with a zero. A frame carries 506 bytes, final zeros included; a longer text, a null one, or a null place
// for a result is refused with 1 before anything is sent.
class IHubAlarm {
 public:
  // Installs the board's port, which stays the caller's, should not be open yet, and has its number, speed and read
  // time-outs set. A port that was installed before, this one included, is closed. Null leaves no port. Takes no lock:
  // no other operation may be under way.
  virtual void InitHandler(ISerBase* port) = 0;

  // True while the port is open. Takes no lock and sends nothing.
  virtual bool IsReady() = 0;

  // Keeps other threads' operations out until Unlock(). Nests within a thread.
  virtual void Lock() = 0;
  virtual void Unlock() = 0;

  // Opens the port with the settings it holds. 1 when it is open then, 0 when not. Takes no lock and sends nothing.
  virtual int Alm_ctrl_init() = 0;

  // Does nothing; 0.
  virtual int Alm_test_com() = 0;

  virtual int Alm_get_device_id(DEVICE_ID* id) = 0;
  virtual int Alm_get_status(DEVICE_STATUS* status) = 0;

  // The text that the board speaks, locally or on a call.
  virtual int Alm_clr_tts_text() = 0;
  virtual int Alm_set_tts_text(char* text) = 0;

  // Sets the text and speaks it locally.
  virtual int Alm_tts_local(char* text) = 0;

  virtual int Alm_set_snapshot(char* text) = 0;

  // One byte, as the board's radio reports it.
  virtual int Alm_get_sig_qty(char* quality) = 0;

  // What was asked of the board from remote.
  virtual int Alm_get_rmt_req(DEVICE_REQ* req) = 0;

  virtual int Alm_reset_gsm() = 0;

  // Sends both texts in one frame, 506 bytes together. 0 when the board answered, whatever it said: its verdict is in
  // *result.
  virtual int Alm_send_sms(char* first, char* second, unsigned char* result) = 0;

  // Sends `length` bytes of data in blocks of 256, then the text. 0 when the board agreed to every step. Nothing is
  // resumed: after a failure the next call starts from the beginning. `data` may be null when `length` is 0.
  virtual int Alm_send_mms(char* text, unsigned char* data, unsigned long length) = 0;

  virtual int Alm_reset_pstn() = 0;

  // Sets the text, then dials the number.
  virtual int Alm_pstn_dial(char* number, char* text) = 0;

  virtual int Alm_ctrl_relay(unsigned char relay, unsigned char state) = 0;

  // A 32-bit word, which the board sends least significant byte first.
  virtual int Alm_read_io(unsigned long* inputs) = 0;

 protected:
  ~IHubAlarm() = default;
};
