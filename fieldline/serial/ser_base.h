#pragma once

#include <cstddef>
#include <vector>

#include "fieldline/platform/serial_device.h"
#include "fieldline/serial/i_ser_base.h"

// A port on a serial line of the operating system. The destructor does not close the line: call Close() first. See
// ISerBase for the functions.
class FIELDLINE_API CSerBase : public ISerBase {
 public:
  // Opens nothing. The type sets the port number (1 to 8 for the ESL lines, 7 for the test port, 2 for SER_COM, 1 for
  // any other type) and the device name that Open(null) uses: ESL<port>: for types up to 8, COM<port - 1>: above.
  CSerBase(ENUM_SERTYPE type = SER_NONE);  // NOLINT(google-explicit-constructor): {} makes one
  CSerBase(const CSerBase&) = delete;
  CSerBase& operator=(const CSerBase&) = delete;
  ~CSerBase() = default;

  ENUM_SERTYPE GetSerType() override;
  wchar_t* GetSerNote() override;

  // A definition without a colon, or with more than 51 characters, is refused and changes nothing. With any other
  // definition, a device that was open is closed, and m_szDef holds the new definition. When the device opens but
  // refuses its settings, or the definition does not have four fields, Open returns 0 and the port stays open: call
  // Close() to release it.
  int Open(const wchar_t* def) override;

  int Close() override;
  int IsOpened() override;
  int SetDef(const wchar_t* def) override;
  int SetPort(int port) override;
  int SetBaud(int baud) override;
  int SetTimeout(int per_byte, int constant) override;
  int Purge() override;
  int Read(BYTE* data, int count) override;
  int Write(const BYTE* data, int count) override;

  // An observer inserted during a notification is called from the next block on. An observer removed during a
  // notification is not called again.
  int InsertObserver(ISerObserver* observer) override;
  int RemoveObserver(ISerObserver* observer) override;

  int GetData(int kind, int addr) override;

  static constexpr std::size_t kDefCapacity = 52;  // 51 characters and the terminator

  ENUM_SERTYPE m_eType;
  wchar_t m_strNote[32];
  int m_nPort;
  int m_nBaud = 2400;             // bit/s
  int m_nReadTimeoutPerByte = 6;  // ms
  int m_nReadTimeoutConst = 100;  // ms
  wchar_t m_szDef[kDefCapacity] = {};
  fieldline::SerialDevice m_hCom;
  std::vector<ISerObserver*> m_arrObserver;  // in order of registration, not owned

 protected:
  void NotifyObservers(void (ISerObserver::*event)(const BYTE*, int), const BYTE* data, int count);

 private:
  class Notification;

  Notification* m_pNotification = nullptr;
};
