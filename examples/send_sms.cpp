// Sends an SMS through the alarm board: send_sms /dev/ttyUSB0 5550100 "Water under the floor"

#include <cstdio>

#include "fieldline/fieldline.h"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: send_sms DEVICE NUMBER TEXT\n");
    return 2;
  }
  fieldline::MapDevice(L"COM3:", argv[1]);
  ISerBase* const port = CHubSerFactory::GetInstance()->GetHubSer(SER_COM);
  port->SetPort(4);  // COM3:
  port->SetBaud(115200);

  CHubAlarm* const board = CHubAlarm::GetInstance();
  board->InitHandler(port);
  int failed = 1;
  if (!board->Alm_ctrl_init()) {
    std::fprintf(stderr, "%s: can't be opened at 115200 bit/s\n", argv[1]);
  } else {
    BYTE verdict = 0;
    failed = board->Alm_send_sms(argv[2], argv[3], &verdict);
    if (failed) {
      std::fprintf(stderr, "%s: the board did not answer\n", argv[1]);
    } else {
      std::printf("the board's result is %u\n", unsigned{verdict});
    }
  }

  board->InitHandler(nullptr);  // closes the port
  CHubAlarm::FreeInstance();
  CHubSerFactory::FreeInstance();
  return failed;
}
