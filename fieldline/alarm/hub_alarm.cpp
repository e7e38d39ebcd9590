#include "fieldline/alarm/hub_alarm.h"

#include <new>

#include "fieldline/alarm/alarm_link.h"

namespace {

// Holds the lock during one operation.
class Turn {
 public:
  explicit Turn(IHubAlarm* alarm) : alarm_(alarm) { alarm_->Lock(); }
  ~Turn() { alarm_->Unlock(); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  IHubAlarm* const alarm_;
};

}  // namespace

CHubAlarm* CHubAlarm::m_pInstance = nullptr;

CHubAlarm* CHubAlarm::GetInstance() {
  if (!m_pInstance) m_pInstance = new (std::nothrow) CHubAlarm;
  return m_pInstance;
}

void CHubAlarm::FreeInstance() { delete m_pInstance; }

CHubAlarm::CHubAlarm() : CSensorBase(SERDAT_ALARM) {}

CHubAlarm::CHubAlarm(const CHubAlarm& other) : CSensorBase(other), IHubAlarm(other), m_pPort(other.m_pPort) {}

CHubAlarm& CHubAlarm::operator=(const CHubAlarm& other) {
  CSensorBase::operator=(other);
  m_pPort = other.m_pPort;
  return *this;
}

CHubAlarm::~CHubAlarm() {
  if (m_pInstance == this) m_pInstance = nullptr;
}

void CHubAlarm::ForgetPort(const ISerBase* port) {
  if (m_pInstance && m_pInstance->m_pPort == port) m_pInstance->m_pPort = nullptr;
  if (alm_link_ops.port == port) alm_link_ops.port = nullptr;
}

void CHubAlarm::InitHandler(ISerBase* port) {
  fieldline::InstallAlarmPort(port);
  m_pPort = port;
}

bool CHubAlarm::IsReady() { return m_pPort && m_pPort->IsOpened(); }

void CHubAlarm::Lock() { m_csLock.lock(); }

void CHubAlarm::Unlock() { m_csLock.unlock(); }

int CHubAlarm::Alm_ctrl_init() {
  if (!m_pPort || !alm_link_ops.port) return 0;
  alm_link_ops.open(0, 115200);
  return m_pPort->IsOpened();
}

int CHubAlarm::Alm_test_com() { return 0; }

int CHubAlarm::Alm_get_device_id(DEVICE_ID* id) {
  const Turn turn(this);
  return alm_get_device_id(id);
}

int CHubAlarm::Alm_get_status(DEVICE_STATUS* status) {
  const Turn turn(this);
  return alm_get_status(status);
}

int CHubAlarm::Alm_clr_tts_text() {
  const Turn turn(this);
  return alm_clr_tts_text();
}

int CHubAlarm::Alm_set_tts_text(char* text) {
  const Turn turn(this);
  return alm_set_tts_text(text);
}

int CHubAlarm::Alm_tts_local(char* text) {
  const Turn turn(this);
  return alm_tts_local(text);
}

int CHubAlarm::Alm_set_snapshot(char* text) {
  const Turn turn(this);
  return alm_set_snapshot(text);
}

int CHubAlarm::Alm_get_sig_qty(char* quality) {
  const Turn turn(this);
  return alm_get_sig_qty(quality);
}

int CHubAlarm::Alm_get_rmt_req(DEVICE_REQ* req) {
  const Turn turn(this);
  return alm_get_rmt_req(req);
}

int CHubAlarm::Alm_reset_gsm() {
  const Turn turn(this);
  return alm_reset_gsm();
}

int CHubAlarm::Alm_send_sms(char* first, char* second, unsigned char* result) {
  const Turn turn(this);
  return alm_send_sms(first, second, result);
}

int CHubAlarm::Alm_send_mms(char* text, unsigned char* data, unsigned long length) {
  const Turn turn(this);
  return alm_send_mms(text, data, length);
}

int CHubAlarm::Alm_reset_pstn() {
  const Turn turn(this);
  return alm_reset_pstn();
}

int CHubAlarm::Alm_pstn_dial(char* number, char* text) {
  const Turn turn(this);
  return alm_pstn_dial(number, text);
}

int CHubAlarm::Alm_ctrl_relay(unsigned char relay, unsigned char state) {
  const Turn turn(this);
  return alm_ctrl_relay(relay, state);
}

int CHubAlarm::Alm_read_io(unsigned long* inputs) {
  const Turn turn(this);
  return alm_read_io(inputs);
}
