// Takes a picture with a serial camera: take_picture /dev/ttyUSB0 DIRECTORY. The picture is stored below the directory
// in NandFlash/www/wwwpub/images, which must exist.

#include <cstdio>

#include "fieldline/fieldline.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: take_picture DEVICE DIRECTORY\n");
    return 2;
  }
  fieldline::MapDevice(L"COM1:", argv[1]);
  fieldline::SetFlashRoot(argv[2]);
  CSerBase port(SER_COM);
  port.SetTimeout(1, 200);  // ms; a byte takes less than 0.1 ms at this speed
  if (!port.Open(L"COM1:115200,n,8,1")) {
    std::fprintf(stderr, "%s: can't be opened at 115200 bit/s\n", argv[1]);
    return 1;
  }

  CSensorCamera camera;
  const int taken = camera.GetData(&port, 0);
  port.Close();
  if (!taken) {
    std::fprintf(stderr, "%s: no picture came\n", argv[1]);
    return 1;
  }
  // The driver does not say whether it could create the file.
  std::printf("%s/NandFlash/www/wwwpub/images/%s, %u bytes\n", argv[2], camera.m_data.name,
              unsigned{camera.m_data.length});
}
