// Polls a temperature and humidity probe at address 1: poll_probe /dev/ttyUSB0

#include <cstdint>
#include <cstdio>

#include "fieldline/fieldline.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: poll_probe DEVICE\n");
    return 2;
  }
  fieldline::MapDevice(L"ESL1:", argv[1]);
  CSerBase port(SER_ESL1);
  if (!port.Open(L"ESL1:2400,n,8,1")) {
    std::fprintf(stderr, "%s: can't be opened at 2400 bit/s\n", argv[1]);
    return 1;
  }

  CSensorEnvir probe;
  const int polled = probe.GetData(&port, 1);
  port.Close();
  if (!polled) {
    std::fprintf(stderr, "%s: no valid answer from address 1\n", argv[1]);
    return 1;
  }
  // This probe sends humidity in register 0 and temperature in register 1, in tenths, as 16-bit two's complement.
  std::printf("humidity    %5.1f %%\n", probe.m_data.register_0 / 10.0);
  std::printf("temperature %5.1f C\n", static_cast<std::int16_t>(probe.m_data.register_1) / 10.0);
}
