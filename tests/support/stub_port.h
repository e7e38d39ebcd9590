#pragma once

#include "fieldline/serial/i_ser_base.h"

namespace fieldline::test {

// A port that is open, takes what is written and gives nothing. What a test needs beyond that it overrides.
class StubPort : public ISerBase {
 public:
  ENUM_SERTYPE GetSerType() override { return SER_ESL1; }
  wchar_t* GetSerNote() override { return nullptr; }
  int Open(const wchar_t*) override { return 1; }
  int Close() override { return 1; }
  int IsOpened() override { return 1; }
  int SetDef(const wchar_t*) override { return 0; }
  int SetPort(int) override { return 1; }
  int SetBaud(int) override { return 1; }
  int SetTimeout(int, int) override { return 1; }
  int Purge() override { return 1; }
  int Read(BYTE*, int) override { return 0; }
  int Write(const BYTE*, int count) override { return count; }
  int InsertObserver(ISerObserver*) override { return -1; }
  int RemoveObserver(ISerObserver*) override { return -1; }
  int GetData(int, int) override { return 0; }

 protected:
  ~StubPort() = default;
};

}  // namespace fieldline::test
