#include "fieldline/display/hub_monitor.h"

#include <new>

CHubMonitor* CHubMonitor::m_pInstance = nullptr;
ISerBase* CHubMonitor::m_pHandler = nullptr;

namespace {

// A frame: A5 5A, the number of bytes that follow, a command, its data. 16-bit numbers are sent high byte first.
constexpr BYTE kHeader[] = {0xA5, 0x5A};
constexpr BYTE kWriteRegisters = 0x80;
constexpr BYTE kWriteVariables = 0x82;

constexpr BYTE kPageRegister = 0x03;
constexpr BYTE kClockRegister = 0x1F;  // the flag that sets the clock, then the clock
constexpr BYTE kSetClock = 0x5A;

constexpr BYTE High(unsigned short value) { return static_cast<BYTE>(value >> 8); }
constexpr BYTE Low(unsigned short value) { return static_cast<BYTE>(value & 0xFF); }

template <int kLength>
unsigned long Send(ISerBase* port, const BYTE (&frame)[kLength]) {
  if (!port || !port->IsOpened()) return 0;
  return port->Write(frame, kLength) == kLength ? 1 : 0;
}

}  // namespace

CHubMonitor* CHubMonitor::GetInstance() {
  if (!m_pInstance) m_pInstance = new (std::nothrow) CHubMonitor;
  return m_pInstance;
}

void CHubMonitor::FreeInstance() { delete m_pInstance; }

CHubMonitor::CHubMonitor() : CSensorBase(SERDAT_MONITOR) {}

CHubMonitor::~CHubMonitor() {
  if (m_pInstance == this) m_pInstance = nullptr;
}

void CHubMonitor::ForgetPort(const ISerBase* port) {
  if (m_pHandler == port) m_pHandler = nullptr;
}

void CHubMonitor::InitHandler(ISerBase* port) {
  if (m_pHandler) m_pHandler->Close();
  m_pHandler = port;
}

unsigned long CHubMonitor::diwen_init() {
  if (!m_pHandler) return 0;
  m_pHandler->Open(nullptr);
  return 1;
}

unsigned long CHubMonitor::diwen_set_data(unsigned short addr, unsigned short value) {
  const BYTE frame[] = {kHeader[0], kHeader[1], 5, kWriteVariables, High(addr), Low(addr), High(value), Low(value)};
  return Send(m_pHandler, frame);
}

unsigned long CHubMonitor::diwen_set_display(unsigned short page) {
  const BYTE frame[] = {kHeader[0], kHeader[1], 4, kWriteRegisters, kPageRegister, High(page), Low(page)};
  return Send(m_pHandler, frame);
}

unsigned long CHubMonitor::diwen_set_rtc(DIWEN_RTC_DATA rtc) {
  const BYTE frame[] = {kHeader[0], kHeader[1], 10,          kWriteRegisters, kClockRegister, kSetClock, rtc.year,
                        rtc.month,  rtc.day,    rtc.weekday, rtc.hour,        rtc.minute,     rtc.second};
  return Send(m_pHandler, frame);
}
