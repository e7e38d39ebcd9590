#pragma once

#include "fieldline/sensor/sensor_base.h"

// The display's clock, each byte two decimal digits (BCD): 17 May 2024 is 0x24 0x05 0x17. Sent unchanged.
struct DIWEN_RTC_DATA {
  BYTE year;     // of the century, 00 to 99
  BYTE month;    // 01 to 12
  BYTE day;      // 01 to 31
  BYTE weekday;  // in the display's own numbering
  BYTE hour;     // 00 to 23
  BYTE minute;   // 00 to 59
  BYTE second;   // 00 to 59
};
static_assert(sizeof(DIWEN_RTC_DATA) == 7);

// DWIN DGUS serial display, kind SERDAT_MONITOR; one object per process. As a driver it polls nothing (GetData returns
// 0) and has no record.
//
// The display never answers, so a missing display is not noticed. The functions that send return 1 when the port took
// the whole frame. They return 0 without a port, when the port is closed, and when the write was short or failed. Not
// thread-safe: one thread uses the display at a time.
class FIELDLINE_API CHubMonitor : public CSensorBase {
 public:
  // The only object, created on first use. Null when out of memory; a later call tries again.
  static CHubMonitor* GetInstance();

  // Destroys the object. The port stays installed, also for the next object. Deleting the object through its
  // CSensorBase part does the same.
  static void FreeInstance();

  // Installs the display's port. It is not owned, should not be open yet, and has its number and speed set. A port that
  // was installed before, even the same one, is closed. Null leaves no port installed.
  static void InitHandler(ISerBase* port);

  // Opens the port with its own settings. Returns 1, even when the port did not open; 0 without a port.
  unsigned long diwen_init();

  // Writes a 16-bit value to an address of the variable memory, which the pages show.
  unsigned long diwen_set_data(unsigned short addr, unsigned short value);

  // Shows a page.
  unsigned long diwen_set_display(unsigned short page);

  unsigned long diwen_set_rtc(DIWEN_RTC_DATA rtc);

  static ISerBase* m_pHandler;  // not owned

 private:
  friend class CHubSerFactory;

  CHubMonitor();
  ~CHubMonitor() override;

  // Called before `port` is destroyed: removes it from the display. Does not use the port.
  static void ForgetPort(const ISerBase* port);

  static CHubMonitor* m_pInstance;
};
