#pragma once

#include <mutex>

#include "fieldline/alarm/i_hub_alarm.h"
#include "fieldline/sensor/sensor_base.h"

// The alarm board, kind SERDAT_ALARM; one object per process. See IHubAlarm for the functions. As a driver it polls
// nothing (GetData returns 0) and has no record.
class FIELDLINE_API CHubAlarm : public CSensorBase, public IHubAlarm {
 public:
  // The only object, created on first use without a port. Null when out of memory; a later call tries again. Call it at
  // start-up, on one thread.
  static CHubAlarm* GetInstance();

  // Destroys the object. Its port stays open and installed; InitHandler of the next object closes it. Call it at
  // shut-down, on one thread, while no operation is running. Deleting the object through its CSensorBase part does the
  // same.
  static void FreeInstance();

  // Copies every member except the lock: a copy has its own. When a port is destroyed, only the controller itself drops
  // it; a copy keeps its pointer.
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

  // Called before `port` is destroyed: removes it from the object and from the link. Does not use the port.
  static void ForgetPort(const ISerBase* port);

  static CHubAlarm* m_pInstance;
};
