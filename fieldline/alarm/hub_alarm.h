#pragma once

#include <mutex>

#include "fieldline/alarm/i_hub_alarm.h"
#include "fieldline/sensor/sensor_base.h"

// The alarm board: one object for the process, kind SERDAT_ALARM. See IHubAlarm for the operations. As a driver it
// polls nothing (GetData returns 0) and has no record.
class FIELDLINE_API CHubAlarm : public CSensorBase, public IHubAlarm {
 public:
  // The one object, made on first use, without a port. Null when memory is short; a later call tries again. Called at
  // start-up, on one thread.
  static CHubAlarm* GetInstance();

  // Destroys the object. Its port stays open and installed: the next object's InitHandler closes it. Called at
  // shut-down, on one thread, with no operation under way. Deleting the object through its CSensorBase part does the
  // same.
  static void FreeInstance();

  // Member by member, but a copy has a lock of its own. Nobody tells a copy that its port was destroyed.
  CHubAlarm(const CHubAlarm& other);
  CHubAlarm& operator=(const CHubAlarm& other);

  void InitHandler(ISerBase* port) override;
  bool IsReady() override;
  void Lock() override;
  void Unlock() override;
  int Alm_ctrl_init() override;
  int Alm_test_com() override;
  int Alm_get_device_id(DEVICE_ID* id) override;
  int Alm_get_status(DEVICE_STATUS* status) override;
  int Alm_clr_tts_text() override;
  int Alm_set_tts_text(char* text) override;
  int Alm_tts_local(char* text) override;
  int Alm_set_snapshot(char* text) override;
  int Alm_get_sig_qty(char* quality) override;
  int Alm_get_rmt_req(DEVICE_REQ* req) override;
  int Alm_reset_gsm() override;
  int Alm_send_sms(char* first, char* second, unsigned char* result) override;
  int Alm_send_mms(char* text, unsigned char* data, unsigned long length) override;
  int Alm_reset_pstn() override;
  int Alm_pstn_dial(char* number, char* text) override;
  int Alm_ctrl_relay(unsigned char relay, unsigned char state) override;
  int Alm_read_io(unsigned long* inputs) override;

  ISerBase* m_pPort = nullptr;  // not owned
  std::recursive_mutex m_csLock;

 private:
  friend class CHubSerFactory;

  CHubAlarm();
  ~CHubAlarm() override;

  // For whoever destroys `port`: neither the object nor the link holds it from now on. The port is not touched.
  static void ForgetPort(const ISerBase* port);

  static CHubAlarm* m_pInstance;
};
