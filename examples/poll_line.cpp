// Polls two power meters of different models, at addresses 1 and 2 of one line. The port and the drivers come from the
// two factories; an observer shows all bytes. Usage: poll_line /dev/ttyUSB0

#include <cstdio>
#include <cstring>

#include "fieldline/fieldline.h"

namespace {

class Monitor final : public ISerObserver {
 public:
  void OnSerRead(const BYTE* data, int count) override { Show("<-", data, count); }
  void OnSerWrite(const BYTE* data, int count) override { Show("->", data, count); }

 private:
  static void Show(const char* direction, const BYTE* data, int count) {
    std::fprintf(stderr, "%s", direction);
    for (int i = 0; i < count; ++i) std::fprintf(stderr, " %02X", data[i]);
    std::fprintf(stderr, "\n");
  }
};

// One driver serves all devices of its kind: its record must be read before the next device is polled.
bool Poll(ISerBase* port, ENUM_SERDATKIND kind, int address) {
  CSensorBase* const driver = CSensorFactory::GetInstance()->GetSensor(kind);
  if (!driver->GetData(port, address)) {
    std::printf("%d: no valid answer\n", address);
    return false;
  }
  ELEC_DATA meter;
  std::memcpy(&meter, driver->m_pData, sizeof meter);
  std::printf("%d: counter %u, phases %u %u %u\n", address, meter.counter, meter.q5_phase1, meter.q5_phase2,
              meter.q5_phase3);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: poll_line DEVICE\n");
    return 2;
  }
  fieldline::MapDevice(L"ESL3:", argv[1]);
  ISerBase* const port = CHubSerFactory::GetInstance()->GetHubSer(SER_ESL3);
  port->SetBaud(9600);
  port->SetTimeout(2, 100);  // ms; short, because some drivers ask for more bytes than their device sends
  if (!port->Open(nullptr)) {
    std::fprintf(stderr, "%s: can't be opened at 9600 bit/s\n", argv[1]);
    return 1;
  }

  Monitor monitor;
  port->InsertObserver(&monitor);
  const bool first = Poll(port, SERDAT_ELEC, 1);
  const bool second = Poll(port, SERDAT_ELEC_Y, 2);
  port->RemoveObserver(&monitor);
  port->Close();
  CSensorFactory::FreeInstance();
  CHubSerFactory::FreeInstance();
  return first && second ? 0 : 1;
}
