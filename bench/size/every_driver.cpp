// Polls every kind once: every_driver DIRECTORY, where the line of each kind stands under its name, as
// `fieldline sim envir elec ... --links DIRECTORY` makes them. Pictures go to the working directory. script/size links
// it to see what all drivers take, and runs it to see what memory a program needs that uses them.

#include <cstdio>
#include <cstring>
#include <string>

#include "fieldline/fieldline.h"
#include "fieldline/kinds.h"

namespace {

CSensorCardK card;
CSensorCamera3ge camera;

CSensorBase* DriverOf(ENUM_SERDATKIND kind) {
  if (kind == SERDAT_CARD_K) return &card;
  if (kind == SERDAT_CAMERA_3GE) return &camera;
  return CSensorFactory::GetInstance()->GetSensor(kind);
}

bool Use(const fieldline::Kind& kind, ISerBase* port) {
  if (kind.number == SERDAT_ALARM) {
    CHubAlarm* const board = CHubAlarm::GetInstance();
    DEVICE_STATUS status;
    board->InitHandler(port);
    return board->Alm_ctrl_init() == 1 && board->Alm_get_status(&status) == 0;
  }
  if (kind.number == SERDAT_MONITOR) {
    CHubMonitor* const display = CHubMonitor::GetInstance();
    display->InitHandler(port);
    return display->diwen_init() == 1 && display->diwen_set_display(1) == 1;
  }
  return DriverOf(kind.number)->GetData(port, kind.address) == 1;
}

void PrintMemory() {
  std::FILE* const status = std::fopen("/proc/self/status", "r");
  char line[128];
  while (status != nullptr && std::fgets(line, sizeof line, status) != nullptr) {
    if (std::strncmp(line, "VmHWM:", 6) == 0) std::fputs(line, stdout);
  }
  if (status != nullptr) std::fclose(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  fieldline::SetFlashRoot(".");
  int failed = 0;
  for (const fieldline::Kind& kind : fieldline::kKinds) {
    if (!kind.HasLine()) continue;
    const std::string path = std::string(argv[1]) + '/' + std::string(kind.name);
    fieldline::MapDevice(L"COM1:", path.c_str());
    ISerBase* const port = CHubSerFactory::GetInstance()->GetHubSer(SER_COM);
    port->SetBaud(kind.baud);
    if (port->Open(nullptr) == 0 || !Use(kind, port)) {
      std::printf("%s failed\n", kind.name.data());
      ++failed;
    }
    port->Close();
  }
  CSensorFactory::FreeInstance();
  CHubAlarm::FreeInstance();
  CHubMonitor::FreeInstance();
  CHubSerFactory::FreeInstance();
  PrintMemory();
  return failed == 0 ? 0 : 1;
}
